#include "pane/folding_splitter.h"

#include "pane/look.h"

#include <QEvent>
#include <QResizeEvent>
#include <QSettings>

#include <algorithm>
#include <cmath>

namespace drevix {
namespace {

constexpr qreal kLeastEms = 11;
constexpr qreal kPresetEms = 12.5;
constexpr qreal kMostEms = 20;
constexpr qreal kRoomyEms = 68; // of both: the callouts are seen in full
constexpr qreal kRoomyHeightEms = 44;

QString WidthKey() {
    return QStringLiteral("sideBar/width");
}
QString HiddenKey() {
    return QStringLiteral("sideBar/hidden");
}

} // namespace

FoldingSplitter::FoldingSplitter(QWidget *parent)
    : QSplitter(parent), fIsHidden(QSettings().value(HiddenKey()).toBool()),
      fEms(std::clamp(QSettings().value(WidthKey(), kPresetEms).toDouble(), kLeastEms, kMostEms)) {
    setHandleWidth(1); // which can be taken hold of a little beside it too
    setChildrenCollapsible(false);
    connect(this, &QSplitter::splitterMoved, this, &FoldingSplitter::KeepWidth);
}

void FoldingSplitter::Start() {
    widget(1)->show();
    setStretchFactor(0, 0);
    setStretchFactor(1, 1);
    SetLimits();
    Fold(width());
}

void FoldingSplitter::SetLimits() {
    if (count() == 2) {
        const qreal em = EmOf(font());
        widget(0)->setMaximumWidth(static_cast<int>(std::lround(kMostEms * em)));
        TakeWidth();
    }
}

bool FoldingSplitter::IsSideShown() const {
    return count() > 0 && !widget(0)->isHidden();
}

void FoldingSplitter::ToggleSide() {
    fIsHidden = IsSideShown();
    QSettings().setValue(HiddenKey(), fIsHidden);
    Fold(width());
}

QSize FoldingSplitter::minimumSizeHint() const {
    return count() == 2 ? widget(1)->minimumSizeHint() : QSplitter::minimumSizeHint();
}

QSize FoldingSplitter::sizeHint() const {
    QSize size = QSplitter::sizeHint();
    if (count() == 2 && !fIsHidden) {
        const int roomy = static_cast<int>(std::lround(kRoomyEms * EmOf(font())));
        const int high = static_cast<int>(std::lround(kRoomyHeightEms * EmOf(font())));
        size = size.expandedTo({std::max(roomy, fNeeded), high});
    }
    return size;
}

// The titles of its buttons may be set after the limits, and their length depends on the language.
void FoldingSplitter::Fold(int width) {
    const int least = static_cast<int>(std::lround(kLeastEms * EmOf(font())));
    widget(0)->setMinimumWidth(std::max(least, widget(0)->minimumSizeHint().width()));
    const int both = widget(0)->minimumWidth() + handleWidth() + widget(1)->minimumSizeHint().width();
    // The header needs another width when folded. The side bar returns when there is as much room as was
    // missing.
    fNeeded = IsSideShown() ? both : std::max(both, fNeeded);
    const bool isShown = !fIsHidden && width >= fNeeded;
    if (isShown == IsSideShown()) {
        return;
    }
    widget(0)->setVisible(isShown);
    TakeWidth();
    Q_EMIT sideShown(isShown);
}

void FoldingSplitter::TakeWidth() {
    const int side = static_cast<int>(std::lround(fEms * EmOf(font())));
    setSizes({side, std::max(0, width() - side - handleWidth())});
}

void FoldingSplitter::KeepWidth() {
    fEms = sizes().constFirst() / EmOf(font());
    QSettings().setValue(WidthKey(), fEms);
}

void FoldingSplitter::resizeEvent(QResizeEvent *event) {
    if (count() == 2) {
        Fold(event->size().width());
    }
    QSplitter::resizeEvent(event);
}

// The parts' needed width changes with their texts, and when they are first laid out.
bool FoldingSplitter::event(QEvent *event) {
    if (event->type() == QEvent::LayoutRequest && count() == 2) {
        Fold(width());
    }
    return QSplitter::event(event);
}

void FoldingSplitter::changeEvent(QEvent *event) {
    QSplitter::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        fNeeded = 0;
        SetLimits();
    }
}

} // namespace drevix
