// The side bar of applications, the header with the edited application, and their commands.
#include "pane/drevix_pane.h"

#include "pane/editor_tables.h"
#include "pane/look.h"
#include "pane/pane_text.h"
#include "pane/panel_icons.h"
#include "pane/pop_up_menu.h"
#include "pane/target_delegate.h"
#include "pane/target_item.h"
#include "settings/pascal_strings.h"
#include "settings/prefs_list.h"

#include <QAction>
#include <QMenu>
#include <QShortcut>
#include <QStandardItemModel>

#include <algorithm>

namespace drevix {
namespace {

constexpr qreal kHeaderIconEms = 2.1;
constexpr qreal kHeaderEms = 3.2;
constexpr qreal kFoldedHeaderEms = 2.5;

// The icon of a command, by its name in the theme and the name of its stand-in.
struct CommandIcon {
    int tag;
    const char *name;
    const char *standIn;
    Drawing drawing = Drawing::None;
};
constexpr auto kCommandIcons = std::to_array<CommandIcon>({
    {kTagNew, "list-add", "document-new", Drawing::Plus},
    {kTagDelete, "edit-delete", "list-remove", Drawing::Bin},
    {kTagExport, "document-export", "document-save-as"},
    {kTagImport, "document-import", "document-open"},
    {kTagInformation, "help-about", "dialog-information"},
});

QIcon IconOfCommand(int tag) {
    const auto *const row = std::ranges::find(kCommandIcons, tag, &CommandIcon::tag);
    return row == kCommandIcons.end() ? QIcon() : PanelIcon(row->name, row->standIn, row->drawing);
}

// The first of an area's widgets that can take the keyboard focus; null if none can.
QWidget *FirstOf(std::initializer_list<QWidget *> widgets) {
    const auto *const found = std::ranges::find_if(
        widgets, [](const QWidget *widget) { return widget->isVisible() && widget->isEnabled(); });
    return found == widgets.end() ? nullptr : *found;
}

} // namespace

// The items that do not depend on records: the global record's, a separator, the commands.
void DrevixPane::BuildTargets() {
    QStandardItemModel *model = ModelOf(uiSettingsMenuTarget);
    model->appendRow(new TargetItem({QCoreApplication::translate("Controls", "Global Settings"), QString(),
                                     kTargetIsRecord | kTargetIsGlobal},
                                    &fIcons));
    uiSettingsMenuTarget->insertSeparator(1);
    for (const TargetCommand &command : kTargetCommands) {
        if (command.title == nullptr) {
            uiSettingsMenuTarget->insertSeparator(uiSettingsMenuTarget->count());
        } else {
            uiSettingsMenuTarget->addItem(MenuText(command.title));
            model->item(model->rowCount() - 1)->setData(command.tag, kTargetTagRole);
        }
    }
    uiSettingsMenuTarget->SetDelegate(new TargetDelegate(TargetDelegate::Place::PopUp, uiSettingsMenuTarget));
}

// One action per command, wherever it is offered; enabled like its item in the list.
void DrevixPane::BuildTargetActions() {
    const QStandardItemModel *model = ModelOf(uiSettingsMenuTarget);
    for (const TargetCommand &command : kTargetCommands) {
        if (command.tag != 0) {
            auto *const action = new QAction(IconOfCommand(command.tag), MenuText(command.title), fMainView);
            action->setObjectName(QStringLiteral("uiTargetAction%1").arg(command.tag));
            connect(action, &QAction::triggered, this,
                    [this, tag = command.tag] { PerformListCommand(tag); });
            fTargetActions.insert(command.tag, action);
        }
    }
    const auto follow = [this, model] {
        for (auto action = fTargetActions.begin(); action != fTargetActions.end(); ++action) {
            const int item = model->rowCount() - TargetItemFromEnd(action.key());
            (*action)->setEnabled(model->item(item)->isEnabled());
        }
    };
    connect(model, &QAbstractItemModel::dataChanged, this, [model, follow](const QModelIndex &first) {
        if (first.row() >= model->rowCount() - kTargetFixedItems) {
            follow();
        }
    });
    QAction *add = fTargetActions[kTagNew];
    add->setIconText(tr("Add…"));
    add->setShortcut(QKeySequence::New);
    add->setToolTip(tr("Add settings for another application (%1)")
                        .arg(add->shortcut().toString(QKeySequence::NativeText)));
    fMainView->addAction(add);
    QAction *remove = fTargetActions[kTagDelete];
    remove->setShortcut(QKeySequence::Delete);
    remove->setShortcutContext(Qt::WidgetShortcut);
    remove->setToolTip(tr("Delete these settings"));
}

void DrevixPane::BuildSideBar() {
    BuildTargetActions();
    auto *const more = new QMenu(fMainView);
    more->setObjectName(QStringLiteral("uiTargetMenuMore"));
    more->setIcon(PanelIcon("view-more-symbolic", "application-menu"));
    more->addActions({fTargetActions[kTagExport], fTargetActions[kTagImport], BuildHistoryAction()});
    more->addSeparator();
    more->addAction(fTargetActions[kTagInstall]);
    more->addSeparator();
    more->addAction(fTargetActions[kTagInformation]);
    uiTargetSideBar->UseList(uiSettingsMenuTarget, &fIcons);
    uiTargetSideBar->SetActions(fTargetActions[kTagNew], fTargetActions[kTagDelete], more);
    connect(uiTargetSideBar, &TargetSideBar::chosen, this, &DrevixPane::actSettingsMenuTarget);
    connect(uiTargetSideBar, &TargetSideBar::addAsked, this, &DrevixPane::AddApplication);
    connect(uiPaneSplitter, &FoldingSplitter::sideShown, this, &DrevixPane::ShowSide);
    connect(&fIcons, &ApplicationIcons::iconsFound, this, [this] {
        fHeaderIconOf.reset();
        ShowHeader();
    });
    connect(&fIcons, &ApplicationIcons::applicationsRead, this, &DrevixPane::ShowNames);
    const auto add = [this](const QKeySequence &keys, auto act) {
        connect(new QShortcut(keys, fMainView), &QShortcut::activated, this, act);
    };
    add(QKeySequence(Qt::Key_F9), [this] { uiPaneSplitter->ToggleSide(); });
    add(QKeySequence::Find, [this] {
        if (uiPaneSplitter->IsSideShown()) {
            uiTargetSideBar->FocusSearch();
        } else {
            uiSettingsMenuTarget->setFocus(Qt::ShortcutFocusReason);
            uiSettingsMenuTarget->showPopup();
        }
    });
    add(QKeySequence(Qt::Key_F6), [this] { GoToNextArea(1); });
    add(QKeySequence(Qt::SHIFT | Qt::Key_F6), [this] { GoToNextArea(-1); });
    uiPaneSplitter->Start();
    ShowSide(uiPaneSplitter->IsSideShown());
    fMainView->installEventFilter(this);
}

// When folded, the pop-up menu replaces name and icon.
void DrevixPane::ShowSide(bool isShown) {
    const qreal em = EmOf(fMainView->font());
    for (QWidget *widget :
         {static_cast<QWidget *>(uiHeaderIcon), uiHeaderTitle, static_cast<QWidget *>(uiSettingsTextUse)}) {
        widget->setVisible(isShown);
    }
    uiSettingsMenuTarget->setVisible(!isShown);
    uiPaneHeader->setMinimumHeight(static_cast<int>((isShown ? kHeaderEms : kFoldedHeaderEms) * em));
    PlaceBadges();
}

// Shows whose settings are edited, and how many differ from the factory's.
void DrevixPane::ShowHeader() {
    const QString name = NameOf(fDrevixPrefs);
    const bool isGlobal = fDrevixPrefsIndex == 0;
    const auto changed = std::ranges::count_if(kControlSlots, [this](const ControlSlot &control) {
        return !DoTheSame(fDrevixPrefs.device[0].action[control.slot],
                          fDefaultAppPrefs.device[0].action[control.slot]);
    });
    QStringList notes = {isGlobal                    ? tr("For every application without settings of its own")
                         : fDrevixPrefs.factory != 0 ? tr("Factory settings")
                                                     : tr("Your settings")};
    if (changed > 0) {
        notes += changed == 1 ? tr("1 control changed") : tr("%1 controls changed").arg(changed);
    }
    uiHeaderTextName->setText(name);
    uiHeaderTextNote->setText(notes.join(QStringLiteral(" · ")));
    const QString key = isGlobal ? QString() : FileNameKey(fDrevixPrefs.appFileName);
    if (fHeaderIconOf != key) {
        fHeaderIconOf = key;
        const int side = static_cast<int>(kHeaderIconEms * EmOf(fMainView->font()));
        uiHeaderIcon->setPixmap(
            fIcons.IconOf(key, name).pixmap({side, side}, fMainView->devicePixelRatioF()));
    }
}

// Moves from area to area, whatever has the focus in it; skips areas that have nothing to focus.
void DrevixPane::GoToNextArea(int way) {
    struct Area {
        QWidget *whole;
        QWidget *first;
    };
    const std::array<Area, 6> areas = {{
        {uiTargetSideBar, uiPaneSplitter->IsSideShown() ? uiTargetSideBar : nullptr},
        {uiPaneHeader, FirstOf({uiSettingsMenuTarget, uiSettingsRadioActive})},
        {uiPaneStrip, FirstOf({uiPaneStrip})},
        {uiSettingsTabsImages, uiSettingsTabsImages},
        {uiPaneEditor, FirstOf({uiSettingsMenuAction, uiPaneTabs})},
        {uiPaneSaveBar, FirstOf({uiPaneButtonSave, uiPaneButtonApply, uiPaneButtonUndo})},
    }};
    const QWidget *focus = QApplication::focusWidget();
    const auto *const at = std::ranges::find_if(areas, [focus](const Area &area) {
        return focus != nullptr && (area.whole == focus || area.whole->isAncestorOf(focus));
    });
    const int count = static_cast<int>(areas.size());
    const int from = at == areas.end() ? (way > 0 ? -1 : count) : static_cast<int>(at - areas.begin());
    for (int step = 1; step <= count; ++step) {
        const int next = ((from + way * step) % count + count) % count;
        QWidget *first = areas[static_cast<std::size_t>(next)].first;
        if (first == uiTargetSideBar) {
            uiTargetSideBar->FocusList();
            return;
        }
        if (first == uiPaneStrip) {
            first = uiPaneStrip->FirstButton();
        }
        if (first != nullptr) {
            first->setFocus(Qt::ShortcutFocusReason);
            return;
        }
    }
}

// After the first paint: until then tiles stand in for icons.
bool DrevixPane::eventFilter(QObject *watched, QEvent *event) {
    if (watched == fMainView && event->type() == QEvent::Paint && !fIsPainted) {
        fIsPainted = true;
        QTimer::singleShot(0, &fIcons, &ApplicationIcons::Start);
    }
    if (watched == fMainView && event->type() == QEvent::Resize) {
        QTimer::singleShot(0, this, [this] { // laid out by then
            FitSaveBar();
            PlaceBadges();
        });
    }
    return QObject::eventFilter(watched, event);
}

// The record's name for people. If Mac OS Roman could not hold all of it, the name comes from the desktop
// entry.
QString DrevixPane::NameOf(const AppPrefs &prefs) const {
    QString stored = ShownName(prefs);
    if (prefs.application == kGlobalSignature) {
        return stored;
    }
    const InstalledApplication *found = fIcons.Find(FileNameKey(prefs.appFileName));
    if (found == nullptr || found->name == stored) {
        return stored;
    }
    Str31 asStored{};
    getPascalString(found->name.toStdString(), asStored.data(), static_cast<int>(asStored.size()) - 1);
    return TextOf(asStored) == stored ? found->name : stored;
}

void DrevixPane::ShowNames() {
    ShowTargetTitles();
    ShowHeader();
}

} // namespace drevix
