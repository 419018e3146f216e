// The field that shows the item a control opens; a file or folder can be dropped on it.
#pragma once

#include <QLineEdit>
#include <QMimeData>

namespace drevix {

// The path of the one file or folder of this computer that is dragged; empty for anything else.
[[nodiscard]] QString DraggedItem(const QMimeData *data);

class ItemField : public QLineEdit {
    Q_OBJECT

  public:
    explicit ItemField(QWidget *parent = nullptr);

  Q_SIGNALS:
    void itemDropped(const QString &path);

  protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
};

} // namespace drevix
