// Making the view: filling its menus from the tables, and connecting its controls to their handlers.
#include "pane/drevix_pane.h"

#include "companion/korvane_crc.h"
#include "pane/editor_tables.h"
#include "pane/item_field.h"
#include "pane/keystroke_field.h"
#include "pane/look.h"
#include "pane/pane_text.h"
#include "pane/panel_icons.h"

#include <QEvent>
#include <QFormLayout>
#include <QStyleOptionComboBox>

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

namespace drevix {
namespace {

// Sizes in lines of the font, and sizes of type.
constexpr qreal kPagesEms = 15.5;
constexpr qreal kActionEms = 42;
constexpr qreal kTitleScale = 1.3;
constexpr qreal kControlSize = 1.15;
constexpr qreal kNoteScale = 0.9;

// Classes of widgets that must be high enough to click.
constexpr auto kTargetClasses =
    std::to_array<const char *>({"QAbstractButton", "QComboBox", "QLineEdit", "QSlider"});

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

void FillControls(PopUpMenu *menu, std::span<const SlotIndex> slots_) {
    for (const SlotIndex slot : slots_) {
        menu->addItem(ControlTitle(slot), slot);
    }
    menu->ShowSecondColumn();
}

// Gives all titles of fields the width of the widest.
void AlignTitles(const QList<QWidget *> &titles) {
    int widest = 0;
    for (const QWidget *title : titles) {
        widest = std::max(widest, title->sizeHint().width());
    }
    for (QWidget *title : titles) {
        title->setMinimumWidth(widest);
    }
}

// The width at which a menu shows every item uncut. Its own size policy for that makes it wider than its
// place.
int WidthOfItems(const QComboBox &menu) {
    int widest = 0;
    for (int i = 0; i < menu.count(); ++i) {
        widest = std::max(widest, menu.fontMetrics().horizontalAdvance(menu.itemText(i)));
    }
    QStyleOptionComboBox option;
    option.initFrom(&menu);
    return menu.style()->sizeFromContents(QStyle::CT_ComboBox, &option, {widest, 1}, &menu).width();
}

static_assert(kActionIcons.size() == kActionMenuPositions);

} // namespace

std::array<PopUpMenu *, 3> DrevixPane::ControlMenus() const {
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
    BuildTargets();
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
    ShowActionIcons();
    uiSettingsButtonFind->setIcon(PanelIcon("edit-find", "system-search", Drawing::Lens));
    for (const GroupMenu &group : GroupMenus()) {
        FillGroupMenu(MenuOf(group), group);
    }
    const QString noEntry = tr("Choose a menu entry");
    uiSettingsMenuToolMenu->addItem(noEntry, KorvaneStringCRC(noEntry.toStdString()));
    FillRepeatMenu(uiSettingsMenuKeyRepeat, kKeyRepeatItems);
    FillRepeatMenu(uiSettingsMenuAutoRepeat, kAutoRepeatItems);
    FillMenu(uiSettingsMenuExtraKeys, kExtraKeys);
}

void DrevixPane::ShowActionIcons() {
    const QList<QIcon> icons = ActionMenuIcons(uiSettingsMenuAction->iconSize());
    for (int i = 0; i < kActionMenuPositions; ++i) {
        if (!ActionMenuTitle(i).empty()) {
            uiSettingsMenuAction->setItemIcon(i, icons[i]);
        }
    }
}

// Not in the view's description, like the fields: the first page is laid out at once, which needs fonts.
void DrevixPane::BuildPages() {
    const auto add = [this](QWidget *page, const QString &title, const QString &toolTip) {
        uiPaneTabs->setTabToolTip(uiPaneTabs->addTab(page, title), toolTip);
    };
    add(uiPanePageNavRing, QCoreApplication::translate("DrevixPaneView", "R&ing"),
        QCoreApplication::translate("DrevixPaneView", "Pushing and turning the ring"));
    add(uiPanePageToolTuner, QCoreApplication::translate("DrevixPaneView", "&Tuner"),
        QCoreApplication::translate("DrevixPaneView", "Turning the dial"));
    add(uiPanePageTriggerPoints, QCoreApplication::translate("DrevixPaneView", "&Buttons"),
        QCoreApplication::translate("DrevixPaneView", "The five buttons"));
    uiSettingsTextEmpty->show();
}

// A line edit needs a font as soon as it is created.
void DrevixPane::BuildFields() {
    uiSettingsFieldKeystroke = new KeystrokeField(uiSettingsKeys);
    uiSettingsFieldKeystroke->setObjectName(QStringLiteral("uiSettingsFieldKeystroke"));
    uiSettingsFieldKeystroke->setAccessibleName(QCoreApplication::translate("DrevixPaneView", "Keys"));
    uiSettingsFieldKeystroke->setToolTip(
        QCoreApplication::translate("DrevixPaneView", "Click, then press the keys."));
    keysLayout->insertWidget(0, uiSettingsFieldKeystroke);
    uiSettingsFieldKeystrokeLabel->setBuddy(uiSettingsFieldKeystroke);
    QWidget::setTabOrder(uiSettingsButtonFind, uiSettingsFieldKeystroke);

    uiSettingsFieldOpenItem = new ItemField(uiSettingsTabOpenItem);
    uiSettingsFieldOpenItem->setObjectName(QStringLiteral("uiSettingsFieldOpenItem"));
    uiSettingsFieldOpenItem->setAccessibleName(QCoreApplication::translate("DrevixPaneView", "Item to open"));
    openItemLayout->setWidget(0, QFormLayout::FieldRole, uiSettingsFieldOpenItem);
    uiSettingsFieldOpenItemLabel->setBuddy(uiSettingsFieldOpenItem);
    QWidget::setTabOrder(uiSettingsMenuPredefined, uiSettingsFieldOpenItem);
}

// Sizes that do not depend on the texts. The fields for all kinds of action are stacked.
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
    for (QLabel *value : {uiSettingsTextNavSens, uiSettingsTextNavSpeed, uiSettingsTextToolSens}) {
        QFont bold = value->font();
        bold.setBold(true);
        value->setMinimumWidth(QFontMetrics(bold).horizontalAdvance(tr("%1 %").arg(255)));
    }
    BuildAreas();
}

// The sizes of the areas, in lines of the font.
void DrevixPane::BuildAreas() {
    const qreal em = EmOf(fMainView->font());
    const int unit = static_cast<int>(UnitOf(em));
    // The usual width, or what a language's words need.
    int pages = static_cast<int>(std::lround(kPagesEms * em));
    for (PopUpMenu *menu : ControlMenus()) {
        menu->setMinimumWidth(WidthOfItems(*menu));
    }
    for (int page = 0; page < uiPaneTabs->count(); ++page) {
        QLayout *rows = uiPaneTabs->widget(page)->layout();
        rows->activate();
        pages = std::max(pages, rows->totalMinimumSize().width());
    }
    uiPaneTabs->setFixedWidth(pages);
    uiSettingsGroupAction->setMaximumWidth(static_cast<int>(kActionEms * em));
    uiSettingsGroupAction->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    editorLayout->setContentsMargins(3 * unit, 2 * unit, 3 * unit, 2 * unit);
    editorLayout->setSpacing(4 * unit);
    editorLayout->setStretchFactor(uiSettingsGroupAction, 1);
    headerLayout->setContentsMargins(3 * unit, unit, 3 * unit, unit);
    headerLayout->setSpacing(2 * unit);
    saveBarLayout->setContentsMargins(4 * unit, unit, 3 * unit, unit);
    saveBarLayout->setSpacing(2 * unit);
    statusLayout->setSpacing(2 * unit);
    uiPaneHeader->SetLines(Qt::BottomEdge);
    uiPaneEditor->SetLines(Qt::TopEdge);
    uiPaneSaveBar->SetLines(Qt::TopEdge);
    const auto scale = [](QWidget *widget, qreal factor, bool isSemibold) {
        QFont font = ScaledFont(widget->font(), factor);
        font.setWeight(isSemibold ? QFont::DemiBold : QFont::Normal);
        widget->setFont(font);
    };
    scale(uiHeaderTextName, kTitleScale, true);
    scale(uiHeaderTextNote, kNoteScale, false);
    scale(uiSettingsTextControl, kControlSize, true);
    scale(uiSettingsTextButtons, kNoteScale, false);
    scale(uiSettingsTextAxis, kNoteScale, false);
    scale(uiSettingsTextKeystroke, kNoteScale, false);
    for (QLabel *note :
         std::to_array<QLabel *>({uiHeaderTextNote, uiSettingsTextUse, uiSettingsTextButtons,
                                  uiSettingsTextAxis, uiSettingsTextKeystroke, uiInfoTextNone,
                                  uiInfoTextCount, uiInfoTextFirmwareVers, uiInfoTextSerialNumber})) {
        KeepForeground(note, DimColor);
    }
    uiEditorLine->setFrameShadow(QFrame::Plain);
    KeepForeground(uiEditorLine, HairlineColor);
    uiSettingsButtonFactory->setMinimumWidth(static_cast<int>(4 * em));
    for (QWidget *target : fMainView->findChildren<QWidget *>()) {
        const bool isTarget = std::ranges::any_of(
            kTargetClasses, [target](const char *name) { return target->inherits(name); });
        if (isTarget && target->objectName().startsWith(QLatin1String("ui"))) {
            target->setMinimumHeight(kLeastTarget);
        }
    }
    uiSettingsMenuExtraKeys->setMinimumWidth(WidthOfItems(*uiSettingsMenuExtraKeys));
}

// Only the user's own actions call handlers: menus report choices, boxes report clicks, and redrawing blocks
// the sliders' signals.
void DrevixPane::ConnectControls() {
    connect(uiSettingsMenuTarget, &QComboBox::activated, this, &DrevixPane::actSettingsMenuTarget);
    connect(uiSettingsRadioActive, &QRadioButton::clicked, this, &DrevixPane::actSettingsRadioDisable);
    connect(uiSettingsRadioDisabled, &QRadioButton::clicked, this, &DrevixPane::actSettingsRadioDisable);
    connect(uiPaneButtonRevert, &QPushButton::clicked, this, &DrevixPane::actPaneButtonRevert);

    connect(uiPaneTabs, &QTabWidget::currentChanged, this, &DrevixPane::actSettingsMenuControls);
    for (const PopUpMenu *menu : ControlMenus()) {
        connect(menu, &QComboBox::activated, this, &DrevixPane::actSettingsMenuControls);
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

void DrevixPane::ConnectActionControls() {
    connect(uiSettingsButtonFactory, &QPushButton::clicked, this, &DrevixPane::actBackToFactory);
    connect(uiSettingsButtonFind, &QPushButton::clicked, this, &DrevixPane::actFindAction);
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
