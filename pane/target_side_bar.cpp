#include "pane/target_side_bar.h"

#include "pane/look.h"
#include "pane/panel_icons.h"
#include "pane/target_delegate.h"
#include "pane/target_item.h"

#include <QAction>
#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace drevix {
namespace {

constexpr qreal kGlobalEms = 2.4;
constexpr qreal kIconEms = 1.2;
constexpr qreal kNoteSize = 0.9;

// The global settings: always visible, above the list, which may scroll.
class GlobalRow : public QAbstractButton {
  public:
    explicit GlobalRow(QWidget *parent) : QAbstractButton(parent) {
        setCheckable(true);
        setAutoExclusive(true); // one of many rows, though the others are not buttons; no box to be unchecked
        setAttribute(Qt::WA_Hover);
    }
    [[nodiscard]] QSize sizeHint() const override {
        const qreal em = EmOf(font());
        const int texts = std::max(fontMetrics().horizontalAdvance(text()),
                                   QFontMetrics(ScaledFont(font(), kNoteSize))
                                       .horizontalAdvance(TargetSideBar::tr("Every other application")));
        return {static_cast<int>(std::ceil(kIconEms * em + 6 * UnitOf(em))) + texts,
                static_cast<int>(std::lround(kGlobalEms * em))};
    }
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void nextCheckState() override {} // the list says whether it is the current one
    void paintEvent(QPaintEvent * /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const qreal em = EmOf(font());
        const qreal unit = UnitOf(em);
        const QColor highlight = palette().color(QPalette::Highlight);
        const QRectF ground = QRectF(rect()).adjusted(unit + 0.5, 0.5, -unit - 0.5, -0.5);
        if (isChecked() || underMouse()) {
            painter.setPen(isChecked() ? QPen(Qt::NoPen) : QPen(highlight));
            painter.setBrush(isChecked() ? QBrush(highlight) : QBrush(Qt::NoBrush));
            painter.drawRoundedRect(ground, kRadius, kRadius);
        }
        const int side = static_cast<int>(std::lround(kIconEms * em));
        const QRect iconPlace(static_cast<int>(2 * unit), (height() - side) / 2, side, side);
        icon().paint(&painter, iconPlace, Qt::AlignCenter, isChecked() ? QIcon::Selected : QIcon::Normal);
        PaintTexts(painter, rect().adjusted(iconPlace.right() + static_cast<int>(2 * unit), 0,
                                            static_cast<int>(-2 * unit), 0));
        if (hasFocus()) {
            PaintFocusRing(painter, ground.adjusted(1.5, 1.5, -1.5, -1.5), palette());
        }
    }

  private:
    void PaintTexts(QPainter &painter, QRect room) const {
        const bool isUnsaved = property("isUnsaved").toBool();
        const bool isOff = property("isOff").toBool();
        const QColor text = palette().color(isChecked() ? QPalette::HighlightedText : QPalette::Text);
        if (isUnsaved) {
            const qreal size = 2 * UnitOf(EmOf(font()));
            painter.setPen(Qt::NoPen);
            painter.setBrush(isChecked() ? text : palette().color(QPalette::Highlight));
            painter.drawEllipse(QRectF(room.right() - size, room.center().y() - size / 2, size, size));
            room.setRight(static_cast<int>(room.right() - 1.5 * size));
        }
        const QRect upper(room.left(), room.top() + height() / 2 - fontMetrics().height(), room.width(),
                          fontMetrics().height());
        painter.setPen(text);
        painter.setFont(font());
        painter.drawText(upper, Qt::AlignLeft | Qt::AlignVCenter,
                         fontMetrics().elidedText(this->text(), Qt::ElideRight, room.width()));
        painter.setFont(ScaledFont(font(), kNoteSize));
        painter.setPen(isChecked() ? text : DimColor(palette()));
        const QString note = isOff ? TargetSideBar::tr("Off") : TargetSideBar::tr("Every other application");
        painter.drawText(upper.translated(0, upper.height()), Qt::AlignLeft | Qt::AlignVCenter,
                         painter.fontMetrics().elidedText(note, Qt::ElideRight, room.width()));
    }
};

QToolButton *MakeButton(QWidget *parent, const char *name) {
    auto *const button = new QToolButton(parent);
    button->setObjectName(QLatin1String(name));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::StrongFocus);
    return button;
}

} // namespace

TargetSideBar::TargetSideBar(QWidget *parent)
    : QWidget(parent), fGlobal(new GlobalRow(this)), fView(new QListView(this)), fNone(new QLabel(this)),
      fAdd(MakeButton(this, "uiTargetButtonAdd")), fRemove(MakeButton(this, "uiTargetButtonDelete")),
      fMore(MakeButton(this, "uiTargetButtonMore")) {
    fGlobal->setObjectName(QStringLiteral("uiTargetGlobal"));
    fGlobal->installEventFilter(this);
    fView->setObjectName(QStringLiteral("uiTargetList"));
    fView->setAccessibleName(tr("Applications"));
    fView->setModel(&fRows);
    auto *const delegate = new TargetDelegate(TargetDelegate::Place::SideBar, fView);
    fView->setItemDelegate(delegate);
    fView->setUniformItemSizes(true);
    fView->setSelectionMode(QAbstractItemView::NoSelection); // what is selected is what the list has chosen
    fView->setEditTriggers(QAbstractItemView::NoEditTriggers);
    fView->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    fView->setFrameShape(QFrame::NoFrame);
    fView->viewport()->setAutoFillBackground(false);
    fView->setMouseTracking(true);
    fView->installEventFilter(this);
    fNone->setObjectName(QStringLiteral("uiTargetNone"));
    fNone->setTextFormat(Qt::PlainText); // what was typed is no markup
    fNone->setWordWrap(true);
    fNone->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Minimum);
    fNone->hide();

    auto *const buttons = new QHBoxLayout;
    buttons->addWidget(fAdd);
    buttons->addWidget(fRemove);
    buttons->addStretch();
    buttons->addWidget(fMore);
    auto *const layout = new QVBoxLayout(this);
    layout->setSpacing(0);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(new QHBoxLayout); // of the search
    layout->addWidget(fGlobal);
    layout->addWidget(fNone);
    layout->addWidget(fView, 1);
    layout->addLayout(buttons);

    connect(fView, &QListView::clicked, this, &TargetSideBar::ClickRow);
    connect(delegate, &TargetDelegate::addClicked, this, &TargetSideBar::ChooseRow);
    connect(fGlobal, &QAbstractButton::clicked, this, [this] { Choose(0); });
    connect(&fRows, &TargetRows::rebuilt, this, &TargetSideBar::ShowRebuilt);
}

// Unlike the other parts, a line edit needs a font as soon as it is created, and at the start fonts are still
// loading.
void TargetSideBar::BuildSearch() {
    fSearch = new QLineEdit(this);
    fSearch->setObjectName(QStringLiteral("uiTargetSearch"));
    fSearch->setPlaceholderText(tr("Search applications"));
    fSearch->setAccessibleName(tr("Search applications"));
    fSearch->addAction(PanelIcon("edit-find", "system-search", Drawing::Lens), QLineEdit::LeadingPosition);
    fSearch->installEventFilter(this);
    connect(fSearch, &QLineEdit::textChanged, this, &TargetSideBar::TakeSearch);
    layout()->itemAt(0)->layout()->addWidget(fSearch);
    setTabOrder(fGlobal, fSearch); // where the row is
    setTabOrder(fSearch, fGlobal);
    SetSizes();
}

void TargetSideBar::SetSizes() {
    const int unit = static_cast<int>(UnitOf(EmOf(font())));
    fSearch->setMinimumHeight(static_cast<int>(EmOf(font()) * 1.65));
    fSearch->setMinimumWidth(fSearch->minimumSizeHint().width() +
                             fSearch->fontMetrics().horizontalAdvance(fSearch->placeholderText()));
    layout()->itemAt(0)->layout()->setContentsMargins(2 * unit, 2 * unit, 2 * unit, unit);
    layout()->itemAt(layout()->count() - 1)->layout()->setContentsMargins(unit, unit, unit, unit);
    fNone->setContentsMargins(2 * unit, unit, unit, unit);
}

void TargetSideBar::UseList(QComboBox *list, ApplicationIcons *icons) {
    BuildSearch();
    fList = list;
    fRows.UseList(list->model(), icons);
    connect(list, &QComboBox::currentIndexChanged, this, &TargetSideBar::ShowCurrent);
    connect(list->model(), &QAbstractItemModel::dataChanged, this, [this](const QModelIndex &first) {
        if (first.row() == 0) {
            ShowCurrent();
        }
    });
    connect(icons, &ApplicationIcons::iconsFound, this, [this] {
        fView->viewport()->update();
        ShowCurrent();
    });
    ShowCurrent();
}

void TargetSideBar::SetActions(QAction *add, QAction *remove, QMenu *more) {
    fAdd->setDefaultAction(add);
    fAdd->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    fRemove->setDefaultAction(remove);
    fRemove->setToolButtonStyle(Qt::ToolButtonIconOnly);
    fRemove->setAccessibleName(remove->toolTip());
    fMore->setMenu(more);
    fMore->setPopupMode(QToolButton::InstantPopup);
    fMore->setIcon(more->icon());
    fMore->setText(QStringLiteral("\u22EE")); // seen where no theme has the icon
    fMore->setToolTip(tr("More"));
    fMore->setAccessibleName(tr("More"));
    fMore->setStyleSheet(QStringLiteral("QToolButton::menu-indicator { image: none; }"));
    fView->addAction(remove); // by its key, where the list has the keyboard
}

void TargetSideBar::FocusSearch() {
    fSearch->setFocus(Qt::ShortcutFocusReason);
    fSearch->selectAll();
}

void TargetSideBar::FocusList() {
    const int row = fRows.RowOfSource(fList->currentIndex());
    if (row < 0 && !fGlobal->isHidden()) {
        fGlobal->setFocus(Qt::ShortcutFocusReason);
    } else {
        fView->setFocus(Qt::ShortcutFocusReason);
    }
}

void TargetSideBar::TakeSearch(const QString &text) {
    fSearch->setClearButtonEnabled(true); // not before: its picture makes Qt load each plug-in for pictures
    fRows.Search(text);
}

// Selects the current record's row, and makes it the one with the focus when the list gets the keyboard.
void TargetSideBar::ShowCurrent() {
    const QModelIndex global = fList->model()->index(0, 0);
    const int marks = global.data(kTargetMarksRole).toInt();
    fGlobal->setText(global.data().toString());
    fGlobal->setIcon(global.data(Qt::DecorationRole).value<QIcon>());
    fGlobal->setProperty("isUnsaved", (marks & kTargetIsUnsaved) != 0);
    fGlobal->setProperty("isOff", (marks & kTargetIsOff) != 0);
    fGlobal->setAccessibleName(global.data().toString());
    fGlobal->setAccessibleDescription(TargetDescription(marks));
    fGlobal->setChecked(fList->currentIndex() <= 1);
    fGlobal->update();
    const QModelIndex row = fRows.index(fRows.RowOfSource(fList->currentIndex()), 0);
    QItemSelectionModel *selection = fView->selectionModel();
    if (!row.isValid()) {
        selection->clearSelection();
    } else if (!selection->isSelected(row)) {
        selection->select(row, QItemSelectionModel::ClearAndSelect);
        selection->setCurrentIndex(row, QItemSelectionModel::NoUpdate);
        fView->scrollTo(row);
    }
}

void TargetSideBar::ShowRebuilt() {
    const bool isEmpty = fRows.rowCount() == 0 && !fRows.HasGlobal();
    fNone->setText(tr("No application is called “%1”.").arg(fSearch->text().simplified()));
    fNone->setVisible(isEmpty);
    fGlobal->setVisible(fRows.HasGlobal());
    ShowCurrent();
}

// As the list's user would: makes the item current, then announces it.
void TargetSideBar::Choose(int item) {
    fList->setCurrentIndex(item);
    Q_EMIT chosen(item);
    ShowCurrent();
}

void TargetSideBar::ChooseRow(const QModelIndex &row) {
    if (const int item = fRows.SourceRow(row.row()); item >= 0) {
        Choose(item);
    } else if (const InstalledApplication *found = fRows.ApplicationOf(row.row()); found != nullptr) {
        const NewApplication application = found->application;
        fSearch->clear();
        Q_EMIT addAsked(application);
    }
}

// Clicking an application without settings only selects it.
void TargetSideBar::ClickRow(const QModelIndex &row) {
    if (fRows.SourceRow(row.row()) >= 0) {
        ChooseRow(row);
    }
}

void TargetSideBar::GoToFirst() {
    for (int i = 0; i < fRows.rowCount(); ++i) {
        if (!fRows.IsHeading(i)) {
            fView->setCurrentIndex(fRows.index(i, 0));
            fView->setFocus(Qt::TabFocusReason);
            return;
        }
    }
}

// Down moves into the results, Enter takes the first, Esc ends the search.
bool TargetSideBar::TakeSearchKey(int key) {
    if (key == Qt::Key_Escape && !fSearch->text().isEmpty()) {
        fSearch->clear();
        return true;
    }
    if (key == Qt::Key_Down && !fGlobal->isHidden()) {
        fGlobal->setFocus(Qt::TabFocusReason);
        return true;
    }
    if (key == Qt::Key_Down || key == Qt::Key_Return || key == Qt::Key_Enter) {
        GoToFirst();
        return true;
    }
    return false;
}

// Arrow keys only move the focus, because choosing a record stores the edited one.
bool TargetSideBar::TakeListKey(int key) {
    const QModelIndex at = fView->currentIndex();
    if (IsChoosingKey(key) && at.isValid()) {
        ChooseRow(at);
        return true;
    }
    const bool isTop = at.row() <= 1;
    if (key == Qt::Key_Up && isTop && !fGlobal->isHidden()) {
        fGlobal->setFocus(Qt::TabFocusReason);
        return true;
    }
    return false;
}

bool TargetSideBar::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() != QEvent::KeyPress) {
        return QWidget::eventFilter(watched, event);
    }
    const int key = static_cast<QKeyEvent *>(event)->key();
    if (watched == fSearch) {
        return TakeSearchKey(key);
    }
    if (watched == fView) {
        return TakeListKey(key);
    }
    if (watched == fGlobal && (key == Qt::Key_Return || key == Qt::Key_Enter)) {
        fGlobal->click();
        return true;
    }
    if (watched == fGlobal && key == Qt::Key_Down) {
        GoToFirst();
        return true;
    }
    if (watched == fGlobal && key == Qt::Key_Up) {
        fSearch->setFocus(Qt::BacktabFocusReason);
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void TargetSideBar::paintEvent(QPaintEvent * /*event*/) {
    QPainter(this).fillRect(rect(), palette().color(QPalette::Window));
}

void TargetSideBar::changeEvent(QEvent *event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange && fSearch != nullptr) {
        SetSizes();
    }
}

} // namespace drevix
