// The picture of the device: each of its controls can be pointed at, clicked, reached by keyboard, and lit.
#pragma once

#include "pane/control_map.h"
#include "settings/app_prefs.h"

#include <QString>
#include <QSvgRenderer>
#include <QWidget>

#include <array>
#include <optional>

namespace drevix {

// The slots of the picture's controls, in the order of its states.
inline constexpr auto kPictureSlots =
    std::to_array<SlotIndex>({5, 4, 9, 0, 1, 2, 3, 8, 7, 6, 18, 20, 19, 16, 17});
static_assert(kPictureSlots.size() == kControlSlots.size());

class DevicePicture : public QWidget {
    Q_OBJECT

  public:
    explicit DevicePicture(QWidget *parent = nullptr);

    // The lit control as an index of kPictureSlots; -1 when none is.
    [[nodiscard]] int currentIndex() const { return fCurrent; }
    void setCurrentIndex(int index);
    // The control that the keyboard points at, -1 while the picture has not the keyboard.
    [[nodiscard]] int focusedIndex() const { return fFocused; }
    // What a control is called and does, shown when it is pointed at and told to assistive technology.
    void setControlText(int index, const QString &name, const QString &action);
    [[nodiscard]] QString controlName(int index) const;
    [[nodiscard]] QString controlAction(int index) const;

    // The control at a point of the widget, -1 when there is none; the rectangle around a control; a point in
    // its middle.
    [[nodiscard]] int controlAt(const QPoint &point) const;
    [[nodiscard]] QRect controlRect(int index) const;
    [[nodiscard]] QPoint controlPoint(int index) const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

  Q_SIGNALS:
    // The user chose a control, by a click or with the arrow keys and Return.
    void activated(int index);
    // A file or folder was dropped on a control.
    void itemDropped(int index, const QString &path);

  protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool event(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

  private:
    struct Control {
        QString name;
        QString action;
    };
    void LoadDrawing();
    [[nodiscard]] const ControlMap &Map() const;
    void SetHovered(int index);
    void SetFocused(int index);
    [[nodiscard]] int NextControl(int from, const QPoint &way) const;
    [[nodiscard]] QRectF DrawnRect() const;
    [[nodiscard]] const Control &ControlOf(int index) const {
        return fControls[static_cast<std::size_t>(index)];
    }

    mutable QSvgRenderer fDrawing; // drawing an element of it changes nothing that shows
    mutable std::optional<ControlMap> fMap;
    std::array<Control, kPictureSlots.size()> fControls;
    int fCurrent = -1;
    int fHovered = -1;
    int fFocused = -1;
};

} // namespace drevix
