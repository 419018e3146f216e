// Making the view: filling its menus from the tables, and connecting its controls to their handlers.
#include "pane/drevix_pane.h"

#include "companion/korvane_crc.h"
#include "pane/editor_tables.h"
#include "pane/pane_text.h"

#include <QEvent>
#include <QFormLayout>
#include <QHeaderView>

#include <cmath>
#include <span>
#include <utility>

namespace drevix {
namespace {

// Fills a menu from rows, of which those without a title are separators.
template <class Rows>
void FillMenu(QComboBox *menu, const Rows &rows) {
    for (const auto &row : rows) {
        if (row.title == nullptr) {
            menu->insertSeparator(menu->count());
        } else {
            menu->addItem(MenuText(row.title));
        }
    }
}

void FillRepeatMenu(QComboBox *menu, std::span<const RepeatItem> items) {
    for (const RepeatItem &item : items) {
        menu->addItem(MenuText(item.title), item.tag);
    }
}

void FillGroupMenu(QComboBox *menu, const GroupMenu &group) {
    for (const std::int16_t code : group.codes) {
        if (code == kMenuSeparator) {
            menu->insertSeparator(menu->count());
        } else {
            menu->addItem(TranslatedText(FindAction(static_cast<ActionCommand>(code))->title));
        }
    }
}

void FillControls(QTreeWidget *list, std::span<const SlotIndex> slots_) {
    for (const SlotIndex slot : slots_) {
        auto *const item = new QTreeWidgetItem(list, {ControlTitle(slot), QString()});
        item->setData(0, Qt::UserRole, slot);
        item->setSizeHint(0, {0, list->fontMetrics().height() * 4 / 3});
    }
    list->setCurrentItem(list->topLevelItem(0));
}

// Makes titles of fields as wide as the widest of them.
void AlignTitles(const QList<QWidget *> &titles) {
    int widest = 0;
    for (const QWidget *title : titles) {
        widest = std::max(widest, title->sizeHint().width());
    }
    for (QWidget *title : titles) {
        title->setMinimumWidth(widest);
    }
}

} // namespace

std::array<QTreeWidget *, 3> DrevixPane::ControlLists() const {
    return {uiSettingsMenuNavRing, uiSettingsMenuToolTuner, uiSettingsMenuTriggerPoints};
}

QComboBox *DrevixPane::MenuOf(const GroupMenu &group) const {
    return fMainView->findChild<QComboBox *>(TextOf(group.outlet));
}

std::array<DrevixPane::ModifierBox, 10> DrevixPane::ModifierBoxes() const {
    return {{
        {uiSettingsBoxKeyControl, kControlModifier},
        {uiSettingsBoxKeyOption, kOptionModifier},
        {uiSettingsBoxKeyCommand, kCommandModifier},
        {uiSettingsBoxKeyShift, kShiftModifier},
        {uiSettingsBoxKeyCaps, kCapsLockModifier},
        {uiSettingsBoxScrollControl, kControlModifier},
        {uiSettingsBoxScrollOption, kOptionModifier},
        {uiSettingsBoxScrollCommand, kCommandModifier},
        {uiSettingsBoxScrollShift, kShiftModifier},
        {uiSettingsBoxScrollCaps, kCapsLockModifier},
    }};
}

void DrevixPane::BuildMenus() {
    uiSettingsMenuTarget->addItem(QCoreApplication::translate("Controls", "Global Settings"));
    uiSettingsMenuTarget->insertSeparator(1);
    FillMenu(uiSettingsMenuTarget, kTargetCommands);
    FillControls(uiSettingsMenuNavRing, kRingPageSlots);
    FillControls(uiSettingsMenuToolTuner, kTunerPageSlots);
    FillControls(uiSettingsMenuTriggerPoints, kButtonPageSlots);
    for (int i = 0; i < kActionMenuPositions; ++i) {
        if (const std::string_view title = ActionMenuTitle(i); title.empty()) {
            uiSettingsMenuAction->insertSeparator(i);
        } else {
            uiSettingsMenuAction->addItem(TranslatedText(title));
        }
    }
    for (const GroupMenu &group : GroupMenus()) {
        FillGroupMenu(MenuOf(group), group);
    }
    const QString noEntry = tr("Choose a menu entry");
    uiSettingsMenuToolMenu->addItem(noEntry, KorvaneStringCRC(noEntry.toStdString()));
    FillRepeatMenu(uiSettingsMenuKeyRepeat, kKeyRepeatItems);
    FillRepeatMenu(uiSettingsMenuAutoRepeat, kAutoRepeatItems);
    FillMenu(uiSettingsMenuExtraKeys, kExtraKeys);
}

// Sizes that no change of a text moves. The fields of all kinds of action stand below one another.
void DrevixPane::BuildLooks() {
    QList<QWidget *> titles;
    for (const QFormLayout *form : uiSettingsTabsAction->findChildren<QFormLayout *>()) {
        for (int row = 0; row < form->rowCount(); ++row) {
            if (const QLayoutItem *title = form->itemAt(row, QFormLayout::LabelRole); title != nullptr) {
                titles += title->widget();
            }
        }
    }
    AlignTitles(titles);
    AlignTitles({uiSettingsSliderNavSensLabel, uiSettingsSliderNavSpeedLabel, uiSettingsSliderToolSensLabel});
    int widest = 0;
    for (QTreeWidget *list : ControlLists()) {
        for (int i = 0; i < list->topLevelItemCount(); ++i) {
            widest = std::max(widest, list->fontMetrics().horizontalAdvance(list->topLevelItem(i)->text(0)));
        }
    }
    for (QTreeWidget *list : ControlLists()) {
        list->header()->resizeSection(0, widest + 2 * list->fontMetrics().height());
    }
    for (QLabel *value : {uiSettingsTextNavSens, uiSettingsTextNavSpeed, uiSettingsTextToolSens}) {
        QFont bold = value->font();
        bold.setBold(true);
        value->setMinimumWidth(QFontMetrics(bold).horizontalAdvance(tr("%1 %").arg(255)));
    }
}

// Handlers are called by what the user does alone: menus tell of choices, boxes of clicks; redrawing blocks
// the signals of the sliders.
void DrevixPane::ConnectControls() {
    connect(uiSettingsMenuTarget, &QComboBox::activated, this, &DrevixPane::actSettingsMenuTarget);
    connect(uiSettingsRadioActive, &QRadioButton::clicked, this, &DrevixPane::actSettingsRadioDisable);
    connect(uiSettingsRadioDisabled, &QRadioButton::clicked, this, &DrevixPane::actSettingsRadioDisable);
    connect(uiPaneButtonRevert, &QPushButton::clicked, this, &DrevixPane::actPaneButtonRevert);

    connect(uiPaneTabs, &QTabWidget::currentChanged, this, &DrevixPane::actSettingsMenuControls);
    for (const QTreeWidget *list : ControlLists()) {
        connect(list, &QTreeWidget::currentItemChanged, this, &DrevixPane::actSettingsMenuControls);
    }
    connect(uiSettingsTabsImages, &DevicePicture::activated, this,
            [this](int index) { SelectControl(kPictureSlots[static_cast<std::size_t>(index)]); });

    connect(uiSettingsBoxClickSound, &QCheckBox::clicked, this, &DrevixPane::actSettingsBoxClick);
    connect(uiSettingsBoxAllAxis, &QCheckBox::clicked, this, &DrevixPane::actSettingsBoxAllAxis);
    connect(uiSettingsSliderNavSens, &QSlider::valueChanged, this, &DrevixPane::actSettingsSliderNavSens);
    connect(uiSettingsSliderNavSpeed, &QSlider::valueChanged, this, &DrevixPane::actSettingsSliderNavSpeed);
    connect(uiSettingsSliderToolSens, &QSlider::valueChanged, this, &DrevixPane::actSettingsSliderToolSens);
    ConnectActionControls();

    const std::array<std::pair<QPushButton *, ControlGroup>, 3> defaults = {{
        {uiSettingsButtonNavDefaults, ControlGroup::Ring},
        {uiSettingsButtonToolDefaults, ControlGroup::Tuner},
        {uiSettingsButtonTriggerDefaults, ControlGroup::Buttons},
    }};
    for (const auto &[button, group] : defaults) {
        connect(button, &QPushButton::clicked, this,
                [this, which = group] { actSettingsButtonDefaults(which); });
    }
}

// The key of the action box leads to its menu, and not to what had the keyboard last in the box.
bool DrevixPane::eventFilter(QObject *watched, QEvent *event) {
    if (watched == uiSettingsGroupAction && event->type() == QEvent::Shortcut) {
        uiSettingsMenuAction->setFocus(Qt::ShortcutFocusReason);
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void DrevixPane::ConnectActionControls() {
    uiSettingsGroupAction->installEventFilter(this);
    connect(uiSettingsMenuAction, &QComboBox::activated, this, &DrevixPane::actSettingsMenuAction);
    for (const GroupMenu &group : GroupMenus()) {
        connect(MenuOf(group), &QComboBox::activated, this,
                [this, &group](int position) { actSettingsMenuGroup(group, position); });
    }
    connect(uiSettingsMenuToolMenu, &QComboBox::activated, this, &DrevixPane::actSettingsMenuToolMenu);
    connect(uiSettingsMenuKeyRepeat, &QComboBox::activated, this, &DrevixPane::actSettingsMenuKeyRepeat);
    connect(uiSettingsMenuAutoRepeat, &QComboBox::activated, this, &DrevixPane::actSettingsMenuAutoRepeat);
    connect(uiSettingsMenuExtraKeys, &QComboBox::activated, this, &DrevixPane::actSettingsMenuExtraKeys);
    for (const auto &[box, mask] : ModifierBoxes()) {
        connect(box, &QCheckBox::clicked, this, [this, bit = mask](bool isOn) { GetKeyModifier(bit, isOn); });
    }
}

} // namespace drevix
