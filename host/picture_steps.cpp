#include "host/picture_steps.h"

#include "host/host_text.h"

#include <QApplication>
#include <QComboBox>
#include <QKeySequence>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <array>
#include <qpa/qwindowsysteminterface.h>
#include <utility>

namespace drevix {
namespace {

using namespace std::chrono_literals;

constexpr auto kBetweenSteps = 60ms;
constexpr auto kLongestStep = 10s;

struct Step {
    QString word;
    QString object; // a widget's name, or keys
    QString value;
};

Step ReadStep(const QString &text) {
    return {text.section(QLatin1Char(' '), 0, 0), text.section(QLatin1Char(' '), 1, 1),
            text.section(QLatin1Char(' '), 1)};
}

// Only if it can be used now.
QWidget *FindWidget(const QString &name) {
    const QWidgetList all = QApplication::allWidgets();
    const auto found = std::ranges::find_if(all, [&name](const QWidget *widget) {
        return widget->objectName() == name && widget->isVisible() && widget->isEnabled();
    });
    return found != all.end() ? *found : nullptr;
}

// The list of applications is a menu; the side bar replaces it.
QWidget *FindMenu(const QString &name) {
    const QWidgetList all = QApplication::allWidgets();
    const auto found = std::ranges::find(all, name, &QWidget::objectName);
    return found != all.end() ? *found : nullptr;
}

QWidget *FindKeyTarget(const QString & /*name*/) {
    QWidget *const popup = QApplication::activePopupWidget();
    return popup != nullptr ? popup : QApplication::focusWidget();
}

// Posts events like a display does. They are queued, so that what they open does not block the steps.
void SendKey(const QKeyCombination &keys, const QString &text) {
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QWindowSystemInterface::handleKeyEvent(QGuiApplication::focusWindow(), type, keys.key(),
                                               keys.keyboardModifiers(), text);
    }
}

void Await(QWidget * /*target*/, const Step & /*step*/) {}

void Choose(QWidget *target, const Step &step) {
    if (auto *const menu = qobject_cast<QComboBox *>(target); menu != nullptr) {
        menu->setCurrentIndex(step.value.section(QLatin1Char(' '), 1).toInt());
        Q_EMIT menu->activated(menu->currentIndex());
    }
}

void Click(QWidget *target, const Step & /*step*/) {
    const QPoint place = target->rect().center();
    QWindow *const window = target->window()->windowHandle();
    const qreal scale =
        target->devicePixelRatioF(); // a display tells pixels of its own, from one corner of one screen
    const QPointF inWindow = scale * QPointF(target->mapTo(target->window(), place));
    const QPointF onScreen = scale * QPointF(target->mapToGlobal(place));
    QWindowSystemInterface::handleMouseEvent(window, inWindow, onScreen, Qt::LeftButton, Qt::LeftButton,
                                             QEvent::MouseButtonPress);
    QWindowSystemInterface::handleMouseEvent(window, inWindow, onScreen, Qt::NoButton, Qt::LeftButton,
                                             QEvent::MouseButtonRelease);
}

void Focus(QWidget *target, const Step & /*step*/) {
    target->setFocus(Qt::TabFocusReason);
    target->window()->setAttribute(Qt::WA_KeyboardFocusChange); // styles mark it only after a key was pressed
}

void Press(QWidget * /*target*/, const Step &step) {
    const QKeySequence keys(step.value);
    for (int i = 0; i < keys.count(); ++i) {
        SendKey(keys[static_cast<uint>(i)], {});
    }
}

void Type(QWidget * /*target*/, const Step &step) {
    for (const QChar letter : step.value) {
        SendKey(QKeyCombination(static_cast<Qt::Key>(letter.toUpper().unicode())), letter);
    }
}

struct StepKind {
    const char *word;
    QWidget *(*find)(const QString &name); // null as long as it has to wait
    void (*act)(QWidget *target, const Step &step);
};
constexpr auto kStepKinds = std::to_array<StepKind>({
    {"await", FindWidget, Await},
    {"choose", FindMenu, Choose},
    {"click", FindWidget, Click},
    {"focus", FindWidget, Focus},
    {"press", FindKeyTarget, Press},
    {"type", FindKeyTarget, Type},
});

const StepKind *KindOf(const Step &step) {
    const auto *const kind = std::ranges::find_if(
        kStepKinds, [&step](const StepKind &row) { return step.word == QLatin1String(row.word); });
    return kind != kStepKinds.end() ? kind : nullptr;
}

} // namespace

bool PictureSteps::IsStep(const QString &text) {
    return KindOf(ReadStep(text)) != nullptr;
}

PictureSteps::PictureSteps(QStringList steps) : fSteps(std::move(steps)) {
    connect(&fTimer, &QTimer::timeout, this, &PictureSteps::DoNext);
}

void PictureSteps::Start(std::function<void(const QString &problem)> done) {
    fDone = std::move(done);
    fDeadline = std::chrono::steady_clock::now() + kLongestStep;
    fTimer.start(kBetweenSteps);
}

// Waits one turn after the last step, so that its effects are drawn.
void PictureSteps::DoNext() {
    if (fSteps.isEmpty()) {
        fTimer.stop();
        fDone({});
        return;
    }
    const Step step = ReadStep(fSteps.front());
    const StepKind *const kind = KindOf(step);
    if (QWidget *const target = kind->find(step.object); target != nullptr) {
        fSteps.removeFirst();
        fDeadline = std::chrono::steady_clock::now() + kLongestStep;
        kind->act(target, step);
    } else if (std::chrono::steady_clock::now() > fDeadline) {
        fTimer.stop();
        fDone(Host::tr("The step \"%1\" could not be done.").arg(fSteps.front()));
    }
}

} // namespace drevix
