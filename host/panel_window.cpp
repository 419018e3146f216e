#include "host/panel_window.h"

#include "pane/look.h"

#include <QAccessibleWidget>
#include <QApplication>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDir>
#include <QEvent>
#include <QScreen>
#include <QScrollArea>
#include <QSettings>
#include <QTimer>
#include <QVBoxLayout>

#include <chrono>

namespace drevix {
namespace {

// The plug-in is beside the folder of programs, both in a build tree and installed.
QString PluginPath() {
    return QDir::cleanPath(QCoreApplication::applicationDirPath() +
                           QStringLiteral("/../lib/drevix-settings/plugins/libdrevixpane.so"));
}

QString PlaceKey() {
    return QStringLiteral("window/geometry");
}

constexpr std::chrono::milliseconds kQuestionWait{300}; // between looks whether a question is answered

// Otherwise assistive technology, which looks for windows, would find a part without a name.
QAccessibleInterface *MakeWindowAccessible(const QString &className, QObject *object) {
    return className == QLatin1String(PanelWindow::staticMetaObject.className())
               ? new QAccessibleWidget(static_cast<QWidget *>(object), QAccessible::Window)
               : nullptr;
}

// Holds the view, and scrolls it if it needs more than the whole screen.
class ViewScroller : public QScrollArea {
  public:
    ViewScroller(QWidget *view, QWidget *parent) : QScrollArea(parent) {
        setFrameShape(QFrame::NoFrame);
        setFocusPolicy(Qt::NoFocus); // what is in it has the keyboard
        setWidgetResizable(true);
        setWidget(view);
        view->installEventFilter(this);
    }
    [[nodiscard]] QSize minimumSizeHint() const override {
        const QSize room = screen()->availableSize() - QSize(0, kFrameAndBars);
        return widget()->minimumSizeHint().boundedTo(room);
    }
    [[nodiscard]] QSize sizeHint() const override {
        return widget()->sizeHint().boundedTo(screen()->availableSize() - QSize(0, kFrameAndBars));
    }

  protected:
    bool eventFilter(QObject *watched, QEvent *event) override {
        if (watched == widget() && event->type() == QEvent::LayoutRequest) {
            updateGeometry();
        }
        return QScrollArea::eventFilter(watched, event);
    }
};

} // namespace

PanelWindow::PanelWindow() {
    QAccessible::installFactory(MakeWindowAccessible);
    setWindowTitle(tr("Drevix Veltrana"));
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    QCoreApplication::instance()->installEventFilter(this);
}

PanelWindow::~PanelWindow() {
    // The view's code is in the plug-in, so delete it before unloading the plug-in.
    for (QWidget *view : findChildren<QWidget *>(Qt::FindDirectChildrenOnly)) {
        delete view;
    }
    fLoader.unload();
}

bool PanelWindow::LoadPanel(PanelUse use, QString *problem) {
    fUse = use;
    fLoader.setFileName(PluginPath());
    fPanel = qobject_cast<PreferencePane *>(fLoader.instance());
    if (fPanel == nullptr) {
        *problem = fLoader.errorString();
        return false;
    }
    if (use == PanelUse::Picture) {
        fPanel->setDrawnOnly();
    }
    layout()->addWidget(new ViewScroller(fPanel->mainView(), this));
    fPanel->mainViewDidLoad();
    return true;
}

void PanelWindow::RestorePlace() {
    if (!restoreGeometry(QSettings().value(PlaceKey()).toByteArray())) {
        resize(sizeHint()); // on its own it would be two thirds of the screen at most
    }
}

void PanelWindow::KeepPlace() const {
    QSettings().setValue(PlaceKey(), saveGeometry());
}

void PanelWindow::ShowForPicture() {
    setAttribute(Qt::WA_DontShowOnScreen);
    show();
}

void PanelWindow::ComeToFront() {
    setWindowState((windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
    show();
    raise();
    activateWindow();
}

void PanelWindow::OpenFile(const QString &path) {
    if (path.isEmpty()) {
        return;
    }
    const bool isBusy = QApplication::activeModalWidget() != nullptr;
    // Never at once: the sender is waiting for an answer.
    QTimer::singleShot(isBusy ? kQuestionWait : std::chrono::milliseconds(0), this, [this, path] {
        if (QApplication::activeModalWidget() != nullptr) {
            OpenFile(path);
        } else if (fPanel != nullptr) {
            fPanel->openFile(path);
        }
    });
}

void PanelWindow::showEvent(QShowEvent *event) {
    QWidget::showEvent(event);
    if (fPanel != nullptr && fUse == PanelUse::Work && !event->spontaneous()) {
        fPanel->didSelect();
    }
}

void PanelWindow::hideEvent(QHideEvent *event) {
    QWidget::hideEvent(event);
    if (fPanel != nullptr && fUse == PanelUse::Work && !event->spontaneous()) {
        fPanel->willUnselect();
    }
}

void PanelWindow::closeEvent(QCloseEvent *event) {
    KeepPlace();
    const bool isAsked = fMayAsk && fPanel != nullptr && fUse == PanelUse::Work;
    event->setAccepted(!isAsked || fPanel->mayClose());
}

// A request to end by SIGTERM or the session does not wait for an answer: leaves the panel, which saves what
// it can.
bool PanelWindow::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::Quit) {
        fMayAsk = false;
    }
    return QWidget::eventFilter(watched, event);
}

void PanelWindow::SaveForSession() {
    if (fPanel != nullptr && fUse == PanelUse::Work && isVisible()) {
        fPanel->willUnselect();
        fPanel->didSelect();
    }
}

} // namespace drevix
