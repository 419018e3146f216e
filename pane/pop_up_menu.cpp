#include "pane/pop_up_menu.h"

#include "pane/second_column.h"

#include <QAbstractItemView>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOptionComboBox>

#include <algorithm>
#include <utility>

namespace drevix {
namespace {

constexpr int kIconGap = 4;       // as QComboBox leaves beside an icon
constexpr int kContentMargin = 2; // and above and below a text

bool IsLetter(const QKeyEvent &event) {
    const QString text = event.text();
    return !text.isEmpty() && text.front().isPrint() && !text.front().isSpace() &&
           (event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) == Qt::NoModifier;
}

} // namespace

QSize PopUpMenu::sizeHint() const {
    const QFontMetrics metrics = fontMetrics();
    const QSize contents(minimumContentsLength() * metrics.horizontalAdvance(QLatin1Char('X')) +
                             iconSize().width() + kIconGap,
                         std::max(metrics.height(), iconSize().height()) + kContentMargin);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    return style()->sizeFromContents(QStyle::CT_ComboBox, &option, contents, this);
}

void PopUpMenu::SetDelegate(QAbstractItemDelegate *delegate) {
    fDelegate = delegate;
    fDelegate->setParent(this);
}

void PopUpMenu::ShowSecondColumn() {
    fHasSecondColumn = true;
    SetDelegate(new SecondColumnDelegate(this));
}

void PopUpMenu::SetSecondColumn(int item, const SecondColumn &column) {
    if (itemData(item, kSecondColumnRole).toString() != column.text) {
        setItemData(item, column.text, kSecondColumnRole);
        setItemData(item, column.text, Qt::AccessibleDescriptionRole);
    }
    if (itemData(item, kSecondBoldRole).toBool() != column.isBold) {
        setItemData(item, column.isBold, kSecondBoldRole);
    }
}

// Wide enough for its items.
void PopUpMenu::showPopup() {
    if (fDelegate != nullptr) {
        setItemDelegate(std::exchange(fDelegate, nullptr));
    }
    view()->setAccessibleName(accessibleName()); // it is a window of its own
    if (fHasSecondColumn) {
        view()->setMinimumWidth(view()->sizeHintForColumn(0) +
                                view()->verticalScrollBar()->sizeHint().width());
    }
    QComboBox::showPopup();
}

void PopUpMenu::keyPressEvent(QKeyEvent *event) {
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
    case Qt::Key_End:
        showPopup();
        break;
    default:
        if (IsLetter(*event)) {
            showPopup();
            QCoreApplication::sendEvent(view(), event); // the open list goes to the entry with this letter
        } else {
            QComboBox::keyPressEvent(event);
        }
    }
}

void PopUpMenu::wheelEvent(QWheelEvent *event) {
    event->ignore();
}

QStandardItemModel *ModelOf(const QComboBox *menu) {
    return qobject_cast<QStandardItemModel *>(menu->model());
}

} // namespace drevix
