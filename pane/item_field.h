// The field that shows the item a control opens; a file or folder can be dropped on it.
#pragma once

#include <QDropEvent>
#include <QLineEdit>

namespace drevix {

// The path of the one local file or folder being dragged; empty for anything else. Accepts the event as a
// copy or a link; ignores it if its program offers only to move the file.
[[nodiscard]] QString TakeDraggedItem(QDropEvent *event);

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
