// A bar across the panel, such as the save bar. Its tint and the stripe at its left tell what it is about.
#pragma once

#include "pane/look.h"

#include <QFrame>

namespace drevix {

class TintedBar : public QFrame {
    Q_OBJECT

  public:
    explicit TintedBar(QWidget *parent = nullptr) : QFrame(parent) {}
    void SetTint(Tint tint);
    // The edges with a thin line to the neighbours.
    void SetLines(Qt::Edges edges);

  protected:
    void paintEvent(QPaintEvent *event) override;

  private:
    Tint fTint = Tint::None;
    Qt::Edges fLines;
};

} // namespace drevix
