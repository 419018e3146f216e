// Buttons that look like links: blue and underlined, red while pressed.
#pragma once

#include "settings/pascal_strings.h"

#include <QColor>
#include <QPushButton>

namespace drevix {

// A link's colour on a background: the look's own if it is readable there, else the nearest shade that is.
[[nodiscard]] QColor HyperlinkColor(LinkLook look, const QColor &background);
// The same on a palette's background; the palette's own link colour in high contrast.
[[nodiscard]] QColor HyperlinkColor(LinkLook look, const QPalette &palette, QPalette::ColorRole background);

// A button with a link's look. A disabled one is drawn as disabled text; a title that does not fit is cut.
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
