// Buttons that look like links: blue and underlined, red while they are pressed.
#pragma once

#include "settings/pascal_strings.h"

#include <QColor>
#include <QPushButton>

namespace drevix {

// A link's colour on a background: the look's own where that can be read there, else its nearest shade that
// can.
[[nodiscard]] QColor HyperlinkColor(LinkLook look, const QColor &background);
// The same on a palette's background; the palette's own where the user wants all contrast there is.
[[nodiscard]] QColor HyperlinkColor(LinkLook look, const QPalette &palette, QPalette::ColorRole background);

// A button with a link's look. A disabled one is drawn as disabled text. A title that has not the room is cut.
class LinkButton : public QPushButton {
    Q_OBJECT

  public:
    explicit LinkButton(QWidget *parent = nullptr) : LinkButton(QString(), parent) {}
    explicit LinkButton(const QString &title, QWidget *parent = nullptr);
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace drevix
