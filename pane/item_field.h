// The field that shows the item a control opens; a file or folder can be dropped on it.
#pragma once

#include <QDropEvent>
#include <QLineEdit>

namespace drevix {

// The path of the one file or folder of this computer that is dragged; empty for anything else. The event is
// then accepted as a copy or a link, or ignored where its program offers to move the file only.
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
