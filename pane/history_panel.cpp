#include "pane/history_panel.h"

#include "pane/look.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QVBoxLayout>

#include <utility>

namespace drevix {

HistoryPanel::HistoryPanel(const std::vector<HistoryItem> &items, RecordsOf recordsOf, QWidget *window)
    : QDialog(window), fRecordsOf(std::move(recordsOf)), fList(new QTreeWidget), fWhat(new QComboBox),
      fRestore(new QPushButton(tr("&Restore"))) {
    setWindowTitle(tr("Earlier Settings"));
    setWindowModality(Qt::WindowModal);
    fList->setHeaderLabels({tr("Replaced"), tr("What changed then")});
    fList->setRootIsDecorated(false);
    fList->setAccessibleName(windowTitle());
    for (const HistoryItem &item : items) {
        auto *const row = new QTreeWidgetItem(fList, {item.replaced, item.changes});
        row->setToolTip(1, item.changes);
        row->setDisabled(!item.isWhole);
    }
    fList->resizeColumnToContents(0);
    fList->setColumnWidth(0, fList->columnWidth(0) + fontMetrics().height());
    auto *const label = new QLabel(tr("&Bring back:"));
    label->setBuddy(fWhat);
    auto *const choice = new QHBoxLayout;
    choice->addWidget(label);
    choice->addWidget(fWhat, 1);
    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    buttons->addButton(fRestore, QDialogButtonBox::AcceptRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(fList, &QTreeWidget::itemSelectionChanged, this, &HistoryPanel::ShowRow);
    auto *const box = new QVBoxLayout(this);
    box->addWidget(fList);
    box->addLayout(choice);
    box->addWidget(buttons);
    ResizeOnScreen(this, {640, 400});
    for (int row = 0; row < fList->topLevelItemCount() && Row() < 0; ++row) {
        if (QTreeWidgetItem *item = fList->topLevelItem(row); !item->isDisabled()) {
            fList->setCurrentItem(item); // where the keyboard is, too
        }
    }
    ShowRow();
}

int HistoryPanel::Row() const {
    const QList<QTreeWidgetItem *> selected = fList->selectedItems();
    return selected.isEmpty() ? -1 : fList->indexOfTopLevelItem(selected.front());
}

int HistoryPanel::Record() const {
    return fWhat->currentIndex() - 1;
}

// Keeps the chosen record if the other settings have it too.
void HistoryPanel::ShowRow() {
    const QString chosen = fWhat->currentIndex() > 0 ? fWhat->currentText() : QString();
    fWhat->clear();
    fWhat->addItem(tr("All settings"));
    fWhat->addItems(Row() < 0 ? QStringList() : fRecordsOf(Row()));
    const int again = chosen.isEmpty() ? 0 : fWhat->findText(chosen);
    fWhat->setCurrentIndex(again < 0 ? 0 : again);
    fRestore->setEnabled(Row() >= 0);
}

} // namespace drevix
