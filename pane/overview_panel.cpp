#include "pane/overview_panel.h"

#include "pane/file_panels.h"
#include "pane/look.h"
#include "pane/target_boxes.h"
#include "pane/workspace.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QDir>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QMimeData>
#include <QPainter>
#include <QPushButton>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUrl>

#include <tuple>
#include <utility>

namespace drevix {
namespace {

constexpr int kPageWidth = 820; // device-independent pixels; the sheet is legible then
constexpr int kCopyScale = 2;

// One sheet on the screen, painted when it is scrolled into view.
class SheetPage : public QWidget {
  public:
    explicit SheetPage(const SheetContents &sheet) : fSheet(sheet) {
        const QSizeF size = SheetSize();
        setFixedSize(kPageWidth, static_cast<int>(kPageWidth * size.height() / size.width()));
        setAccessibleName(sheet.title);
        setAccessibleDescription(SheetText(sheet));
    }

  protected:
    void paintEvent(QPaintEvent * /*event*/) override {
        QPainter painter(this);
        painter.scale(width() / SheetSize().width(), width() / SheetSize().width());
        PaintSheet(painter, fSheet);
    }

  private:
    SheetContents fSheet;
};

QImage ImageOf(const SheetContents &sheet) {
    QImage image((SheetSize() * kCopyScale).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(kCopyScale);
    QPainter painter(&image);
    PaintSheet(painter, sheet);
    return image;
}

} // namespace

OverviewPanel::OverviewPanel(const QString &application, MakeSheets makeSheets, QWidget *window)
    : QDialog(window), fMakeSheets(std::move(makeSheets)), fAll(new RadioButton(tr("&All applications"))),
      fScroll(new QScrollArea), fPages(new QWidget), fPageBox(new QVBoxLayout(fPages)), fProblem(new QLabel) {
    setObjectName(QStringLiteral("uiOverviewPanel"));
    setWindowTitle(tr("Overview"));
    setWindowModality(Qt::WindowModal);
    auto *const one = new RadioButton(QString(application).replace(QLatin1Char('&'), QLatin1String("&&")));
    one->setChecked(true);
    auto *const choice = new QHBoxLayout;
    choice->addWidget(one);
    choice->addWidget(fAll);
    choice->addStretch();
    fScroll->setWidget(fPages);
    fScroll->setWidgetResizable(true);
    fScroll->setAccessibleName(tr("Sheets"));
    fScroll->setMinimumSize(320, 200);
    fProblem->setWordWrap(true);
    fProblem->hide();
    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    const auto addButton = [&](const QString &title, void (OverviewPanel::*act)()) {
        connect(buttons->addButton(title, QDialogButtonBox::ActionRole), &QPushButton::clicked, this, act);
    };
    addButton(tr("&Copy"), &OverviewPanel::Copy);
    addButton(tr("&Save as PDF…"), &OverviewPanel::Save);
    addButton(tr("&Print…"), &OverviewPanel::Print);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(fAll, &QRadioButton::toggled, this, &OverviewPanel::Show);
    auto *const box = new QVBoxLayout(this);
    box->addLayout(choice);
    box->addWidget(fScroll);
    box->addWidget(fProblem);
    box->addWidget(buttons);
    ResizeOnScreen(this, {kPageWidth + 80, 680});
    Show();
}

void OverviewPanel::Show() {
    fSheets = fMakeSheets(fAll->isChecked());
    while (QLayoutItem *item = fPageBox->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    QStringList titles;
    for (const SheetContents &sheet : fSheets) {
        fPageBox->addWidget(new SheetPage(sheet), 0, Qt::AlignHCenter);
        titles += sheet.title;
    }
    // For assistive technology: the whole text of a single sheet, but only the titles of several.
    fScroll->setAccessibleDescription(fSheets.size() == 1 ? SheetText(fSheets.front())
                                                          : titles.join(QStringLiteral(", ")));
}

// An existing file stays as it is until the new one is complete.
bool OverviewPanel::WriteTo(const QString &path, Readers readers) {
    QSaveFile file(path);
    const bool isOpen = file.open(QIODevice::WriteOnly) &&
                        (readers == Readers::ByUmask ||
                         file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner));
    const bool isWritten = isOpen && WriteSheets(file, fSheets) && file.commit();
    fProblem->setText(isWritten ? QString() : tr("Couldn't write “%1”: %2").arg(path, file.errorString()));
    fProblem->setVisible(!isWritten);
    return isWritten;
}

void OverviewPanel::Save() {
    FilePanel panel(tr("Save as PDF"), QDir::homePath(), this);
    panel.setAcceptMode(QFileDialog::AcceptSave);
    panel.setNameFilter(tr("PDF documents (*.pdf)"));
    panel.setDefaultSuffix(QStringLiteral("pdf"));
    panel.selectFile(fAll->isChecked() ? QStringLiteral("Veltrana") : fSheets.front().title);
    if (panel.exec() == QDialog::Accepted) {
        std::ignore = WriteTo(panel.Path(), Readers::ByUmask); // told in the panel
    }
}

// Opens the sheets in the user's PDF program, which prints better, with the printer's own options.
void OverviewPanel::Print() {
    const QDir folder(QStandardPaths::writableLocation(QStandardPaths::CacheLocation)); // nobody else's
    std::ignore = folder.mkpath(QStringLiteral("."));                                   // writing tells
    const QString path = folder.filePath(QStringLiteral("overview.pdf"));
    if (WriteTo(path, Readers::UserOnly) && !OpenAddress(QUrl::fromLocalFile(path))) {
        fProblem->setText(
            tr("There is no program that shows PDF documents. The sheet is in “%1”.").arg(path));
        fProblem->show();
    }
}

void OverviewPanel::Copy() {
    QString text;
    for (const SheetContents &sheet : fSheets) {
        text += SheetText(sheet) + QLatin1Char('\n');
    }
    auto *const copied = new QMimeData;
    copied->setText(text);
    if (fSheets.size() == 1) {
        copied->setImageData(ImageOf(fSheets.front()));
    }
    QGuiApplication::clipboard()->setMimeData(copied);
}

} // namespace drevix
