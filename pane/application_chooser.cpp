#include "pane/application_chooser.h"

#include "pane/look.h"
#include "pane/pane_text.h"
#include "pane/second_column.h"

#include <QCollator>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace drevix {
namespace {

constexpr int kFileNameRole = Qt::UserRole;

bool IsApplicationFolder(const QString &path) {
    return path.endsWith(QLatin1String(".app"), Qt::CaseInsensitive) && QFileInfo(path).isDir();
}

QIcon IconOf(const DesktopEntry &entry) {
    const QString icon = TextOf(entry.icon);
    const QIcon found = icon.startsWith(QLatin1Char('/')) ? QIcon(icon) : QIcon::fromTheme(icon);
    return found.isNull() ? QIcon::fromTheme(QStringLiteral("application-x-executable")) : found;
}

// A file panel that chooses an application folder instead of opening it.
class ProgramPanel : public QFileDialog {
  public:
    explicit ProgramPanel(QWidget *window)
        : QFileDialog(window, ApplicationChooser::tr("Select an Application")) {
        setOption(QFileDialog::DontUseNativeDialog); // a desktop's own panel goes into every folder
        setWindowModality(Qt::WindowModal);
        setFileMode(QFileDialog::ExistingFile);
        connect(this, &QFileDialog::directoryEntered, this,
                [this](const QString &folder) { TakeFolder(folder); });
    }
    [[nodiscard]] QString Path() const { return fFolder.isEmpty() ? selectedFiles().value(0) : fFolder; }

  protected:
    void accept() override {
        if (!TakeFolder(selectedFiles().value(0))) {
            QFileDialog::accept();
        }
    }

  private:
    bool TakeFolder(const QString &path) {
        if (!IsApplicationFolder(path)) {
            return false;
        }
        fFolder = path;
        done(QDialog::Accepted);
        return true;
    }

    QString fFolder;
};

} // namespace

ApplicationChooser::ApplicationChooser(QWidget *window, const SettingsTest &hasSettings)
    : QDialog(window), fSearch(new QLineEdit), fList(new QListView) {
    setObjectName(QStringLiteral("uiApplicationPanel"));
    setWindowModality(Qt::WindowModal);
    setWindowTitle(tr("Select an Application"));

    fSearch->setPlaceholderText(tr("Search"));
    fSearch->setAccessibleName(tr("Search"));
    fSearch->setClearButtonEnabled(true);
    fSearch->installEventFilter(this);
    fList->setAccessibleName(tr("Applications"));
    fList->setFocusProxy(fSearch); // whose keys go through it; so what they come to is told, too
    fList->setModel(&fMatches);
    fList->setUniformItemSizes(true);
    fList->setSpacing(2);
    fList->setEditTriggers(QAbstractItemView::NoEditTriggers);
    const int iconSize = fontMetrics().height() * 3 / 2;
    fList->setIconSize({iconSize, iconSize});
    fMatches.setSourceModel(&fApplications);
    fMatches.setFilterCaseSensitivity(Qt::CaseInsensitive);
    fList->setItemDelegate(new SecondColumnDelegate(fList));
    FillList(hasSettings);

    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    fOk = buttons->button(QDialogButtonBox::Ok);
    fOk->setText(tr("&Add"));
    fShow = buttons->addButton(tr("&Show Settings"), QDialogButtonBox::ActionRole);
    fShow->setVisible(static_cast<bool>(hasSettings));
    QPushButton *other = buttons->addButton(tr("&Other…"), QDialogButtonBox::ActionRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &ApplicationChooser::ChooseSelected);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(fShow, &QPushButton::clicked, this, [this] {
        fIsToShow = true;
        ChooseSelected();
    });
    connect(fList->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &ApplicationChooser::ShowButtons);
    connect(other, &QPushButton::clicked, this, &ApplicationChooser::actOther);
    connect(fSearch, &QLineEdit::textChanged, this, &ApplicationChooser::ShowMatches);
    connect(fList, &QListView::doubleClicked, this, &ApplicationChooser::ChooseSelected);

    auto *const layout = new QVBoxLayout(this);
    layout->addWidget(fSearch);
    layout->addWidget(fList);
    layout->addWidget(buttons);
    const int line = fontMetrics().height();
    ResizeOnScreen(this, {26 * line, 30 * line});
    ShowMatches({});
}

void ApplicationChooser::FillList(const SettingsTest &hasSettings) {
    std::vector<DesktopEntry> entries = InstalledApplications(MessagesLocale());
    QCollator order;
    order.setCaseSensitivity(Qt::CaseInsensitive);
    std::vector<std::pair<QCollatorSortKey, const DesktopEntry *>> sorted;
    sorted.reserve(entries.size());
    for (const DesktopEntry &entry : entries) {
        sorted.emplace_back(order.sortKey(TextOf(entry.name)), &entry);
    }
    std::ranges::sort(sorted, [](const auto &a, const auto &b) {
        const int way = a.first.compare(b.first);
        return way != 0 ? way < 0 : a.second->id < b.second->id;
    });
    for (const auto &[key, entry] : sorted) {
        auto *const item = new QStandardItem(IconOf(*entry), TextOf(entry->name));
        const std::string fileName = ApplicationOfEntry(*entry).fileName;
        item->setToolTip(PlainToolTip(TextOf(entry->path)));
        item->setData(QByteArray::fromStdString(fileName), kFileNameRole);
        item->setData(QByteArray::fromStdString(entry->name), kFileNameRole + 1);
        if (hasSettings && hasSettings(fileName)) {
            item->setData(tr("has settings"), kSecondColumnRole);
            item->setData(tr("has settings"), Qt::AccessibleDescriptionRole);
        }
        fApplications.appendRow(item);
    }
}

// Shows the applications whose names contain the text, and selects the first.
void ApplicationChooser::ShowMatches(const QString &text) {
    fMatches.setFilterFixedString(text);
    fList->setCurrentIndex(fMatches.index(0, 0));
    ShowButtons();
}

void ApplicationChooser::ShowButtons() {
    const QModelIndex selected = fList->currentIndex();
    fOk->setEnabled(selected.isValid());
    fShow->setEnabled(selected.data(kSecondColumnRole).isValid());
}

void ApplicationChooser::ChooseSelected() {
    const QModelIndex selected = fList->currentIndex();
    if (selected.isValid()) {
        fChosen = {kNoSignature, selected.data(kFileNameRole).toByteArray().toStdString(),
                   selected.data(kFileNameRole + 1).toByteArray().toStdString()};
        accept();
    }
}

void ApplicationChooser::actOther() {
    ProgramPanel panel(this);
    if (panel.exec() == QDialog::Accepted) {
        fChosen = ApplicationOfPath(panel.Path().toStdString(), MessagesLocale());
        accept();
    }
}

// The keys that move through the list also work in the search field.
bool ApplicationChooser::eventFilter(QObject *watched, QEvent *event) {
    if (watched == fSearch && event->type() == QEvent::KeyPress) {
        switch (static_cast<QKeyEvent *>(event)->key()) {
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
            QCoreApplication::sendEvent(fList, event);
            return true;
        default:
            break;
        }
    }
    return QDialog::eventFilter(watched, event);
}

} // namespace drevix
