// The look of a desktop whose colours are as far apart as they can be.
#pragma once

#include <QProxyStyle>

namespace drevix {

// Qt's own style makes its outlines of the window's colour, which on black and on white leaves none: with such a palette
// boxes, fields and buttons are outlined in the text's colour. Other palettes look as they always do.
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

// Installs it where Fusion is the style in force.
void UseContrastStyle();

} // namespace drevix
