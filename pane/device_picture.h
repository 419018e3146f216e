// The stage: the picture of the device, surrounded by the names and actions of its controls. Controls and
// callouts can be pointed at, clicked, reached by keyboard, and lit. A widget without room for callouts shows
// the picture alone.
#pragma once

#include "pane/callout_layout.h"
#include "pane/callout_painter.h"
#include "pane/control_map.h"
#include "settings/app_prefs.h"

#include <QPixmap>
#include <QString>
#include <QSvgRenderer>
#include <QWidget>

#include <array>
#include <bitset>
#include <optional>

namespace drevix {

// The slots of the picture's controls, in the order of its states.
inline constexpr auto kPictureSlots =
    std::to_array<SlotIndex>({5, 4, 9, 0, 1, 2, 3, 8, 7, 6, 18, 20, 19, 16, 17});
inline constexpr int kPictureControls = static_cast<int>(kPictureSlots.size());
static_assert(kPictureSlots.size() == kControlSlots.size());
static_assert(kPictureSlots.size() == kCallouts);

// The index of a slot among them; -1 for a slot of no control.
[[nodiscard]] int PictureIndexOf(SlotIndex slot);

class DevicePicture : public QWidget {
    Q_OBJECT

  public:
    explicit DevicePicture(QWidget *parent = nullptr);

    // The lit control, as an index of kPictureSlots; -1 if none.
    [[nodiscard]] int currentIndex() const { return fCurrent; }
    void setCurrentIndex(int index);
    // The control with the keyboard focus; -1 while the picture does not have it.
    [[nodiscard]] int focusedIndex() const { return fFocused; }
    // Whether a control is being pressed on the device.
    void setPressed(int index, bool isPressed);
    [[nodiscard]] bool isPressed(int index) const { return fPressed.test(static_cast<std::size_t>(index)); }
    // Sets a control's name and action, also for assistive technology.
    void setControlText(int index, const ControlText &text);
    [[nodiscard]] const ControlText &controlText(int index) const {
        return fTexts[static_cast<std::size_t>(index)];
    }

    // The control at a point of the widget, in the picture or by its callout; -1 if none.
    [[nodiscard]] int controlAt(const QPoint &point) const;
    // The rectangle around a control and its callout; around its callout, empty without callouts; a point in the
    // middle of the control.
    [[nodiscard]] QRect controlRect(int index) const;
    [[nodiscard]] QRect calloutRect(int index) const;
    [[nodiscard]] QPoint controlPoint(int index) const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

  Q_SIGNALS:
    // The user chose a control, by a click or with the arrow keys and Return.
    void activated(int index);
    // A file or folder was dropped on a control.
    void itemDropped(int index, const QString &path);
    // The user asked for the menu of a control, by mouse or keyboard.
    void menuRequested(int index, const QPoint &globalPoint);

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
    void contextMenuEvent(QContextMenuEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

  private:
    void LoadDrawing();
    [[nodiscard]] const ControlMap &Map() const;
    void SetHovered(int index);
    void SetFocused(int index);
    [[nodiscard]] int NextControl(int from, const QPoint &way) const;
    [[nodiscard]] const StageLayout &Layout() const;
    [[nodiscard]] QSvgRenderer &SolidLight() const;
    [[nodiscard]] bool HasCallouts() const;
    [[nodiscard]] QRectF DrawnRect() const;
    [[nodiscard]] QPointF PlaceOf(int index) const;
    [[nodiscard]] QRectF AreaOf(int index) const;
    [[nodiscard]] ControlState StateOf(int index) const;
    void ForgetLayout();
    void UpdateControl(int index);
    void PaintDevice(QPainter &painter) const;
    void PaintLights(QPainter &painter) const;
    void PaintCallouts(QPainter &painter) const;

    mutable QSvgRenderer fDrawing; // drawing an element of it changes nothing that shows
    // The same with opaque lights; made when a control is first pressed.
    mutable std::optional<QSvgRenderer> fSolidLight;
    mutable std::optional<ControlMap> fMap;
    mutable std::optional<StageLayout> fLayout; // of this size, font and names
    mutable QPixmap fDevice;                    // without lights, of this size, palette and scale
    std::array<ControlText, kPictureSlots.size()> fTexts;
    std::bitset<kPictureSlots.size()> fPressed;
    int fCurrent = -1;
    int fHovered = -1;
    int fFocused = -1;
};

} // namespace drevix
