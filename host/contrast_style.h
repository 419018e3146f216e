// The style for high-contrast palettes.
#pragma once

#include <QProxyStyle>

namespace drevix {

// Qt's own style derives outlines from the window's colour, which on black or white makes them invisible.
// With such a palette this style outlines boxes, fields and buttons in the text colour. Other palettes look
// as usual.
class ContrastStyle : public QProxyStyle {
    Q_OBJECT

  public:
    ContrastStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override;
    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                            const QWidget *widget) const override;
};

// Installs it if Fusion is the current style.
void UseContrastStyle();

} // namespace drevix
