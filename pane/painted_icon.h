// An icon painted for each size; subclasses implement paint().
#pragma once

#include <QIconEngine>
#include <QPainter>
#include <QPixmap>

namespace drevix {

class PaintedIcon : public QIconEngine {
  public:
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }
};

} // namespace drevix
