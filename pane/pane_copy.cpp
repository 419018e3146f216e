// The menu of a control: copying, pasting and resetting its action, or all of them, and duplicating the
// record.
#include "pane/drevix_pane.h"

#include "pane/application_chooser.h"
#include "pane/pane_text.h"
#include "qbase/qbase_exchange.h"
#include "settings/action_paste.h"
#include "settings/device_prefs.h"
#include "settings/prefs_list.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <QMimeData>

#include <memory>
#include <optional>

namespace drevix {
namespace {

// On the clipboard: an exchange block with one record; and, if only one control's action was copied, that
// control's key.
QString RecordType() {
    return QStringLiteral("application/x-com.halcyra.drevix.record");
}
QString ControlType() {
    return QStringLiteral("application/x-com.halcyra.drevix.control");
}
// Its header, the record with its own header, and the spare byte.
constexpr qsizetype kBlockSize = sizeof(QBaseExchangeHeader) + sizeof(QBaseRecord) + sizeof(AppPrefs) + 1;

using ExchangeOwner = std::unique_ptr<Block, decltype([](Block *block) { QBaseDisposeExchange(block); })>;

QByteArray ExchangeBytes(const AppPrefs &prefs) {
    const QBaseOwner base = NewDrevixBase();
    if (base == nullptr || StoreAppPrefs(base.get(), prefs, kNoRecord) == kNoRecord) {
        return {};
    }
    const ExchangeOwner block(QBaseGetExchange(base.get(), [](const void * /*data*/, std::int32_t /*length*/,
                                                              std::int16_t /*flags*/) { return 1; }));
    std::uint32_t size = 0;
    const void *const bytes = QBaseLockExchange(block.get(), &size);
    return {static_cast<const char *>(bytes), static_cast<qsizetype>(size)};
}

// The record on the clipboard, which any program may have put there; nothing unless the block is intact and
// holds one settings record.
std::optional<AppPrefs> CopiedRecord() {
    const QMimeData *const data = QGuiApplication::clipboard()->mimeData();
    const QByteArray bytes = data == nullptr ? QByteArray() : data->data(RecordType());
    const auto size = static_cast<std::uint32_t>(bytes.size());
    if (bytes.size() != kBlockSize || QBaseCountExchangePtrRecords(bytes.constData(), size) != 1) {
        return std::nullopt;
    }
    const QBaseOwner base = NewDrevixBase();
    if (base == nullptr || QBasePutExchangePtr(base.get(), bytes.constData(), size, -1, 0) != 1) {
        return std::nullopt;
    }
    const AppPrefs *const prefs = GetAppPrefs(base.get(), 0);
    return prefs == nullptr ? std::nullopt : std::optional(*prefs);
}

// The control whose action was copied; null if the whole record was.
const ControlSlot *CopiedControl() {
    const QMimeData *const data = QGuiApplication::clipboard()->mimeData();
    return data == nullptr ? nullptr : FindControlSlot(data->data(ControlType()).toStdString());
}

void PutOnClipboard(const AppPrefs &prefs, std::string_view control, const QString &text) {
    auto *const data = new QMimeData; // the clipboard's from now on
    data->setText(text);
    data->setData(RecordType(), ExchangeBytes(prefs));
    if (!control.empty()) {
        data->setData(ControlType(), QByteArray::fromStdString(std::string(control)));
    }
    QGuiApplication::clipboard()->setMimeData(data);
}

} // namespace

void DrevixPane::BuildControlMenu() {
    connect(uiSettingsTabsImages, &DevicePicture::menuRequested, this,
            [this](int index, const QPoint &point) {
                SelectControl(kPictureSlots.at(static_cast<std::size_t>(index)));
                ShowControlMenu(point);
            });
}

// The menu is for the edited control, which the editor shows.
void DrevixPane::ShowControlMenu(const QPoint &globalPoint) {
    auto *const menu = new QMenu(fMainView);
    menu->setObjectName(QStringLiteral("uiControlMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const auto add = [&](const QString &title, void (DrevixPane::*act)(), bool isEnabled = true) {
        QAction *const action = menu->addAction(title);
        action->setEnabled(isEnabled);
        connect(action, &QAction::triggered, this, act);
    };
    const bool hasRecord = CopiedRecord().has_value();
    const bool hasControl = hasRecord && CopiedControl() != nullptr;
    const ActionSlot &factory = fDefaultAppPrefs.device[0].action[fDrevixActionIndex];
    const ActionSlot &slot = *EditedSlot();
    add(tr("&Find Action…"), &DrevixPane::actFindAction);
    menu->addSeparator();
    add(tr("&Copy Action"), &DrevixPane::actCopyAction);
    add(tr("&Paste Action"), &DrevixPane::actPasteAction, hasControl);
    add(tr("&No Action"), &DrevixPane::actNoAction, slot.command != kActionNone);
    add(tr("&Back to Factory"), &DrevixPane::actBackToFactory, !DoTheSame(slot, factory));
    menu->addSeparator();
    add(tr("Copy &All Actions"), &DrevixPane::actCopyAssignments);
    add(tr("Pas&te All Actions"), &DrevixPane::actPasteAssignments, hasRecord && !hasControl);
    add(tr("&Duplicate for Another Application…"), &DrevixPane::actDuplicate);
    menu->popup(globalPoint);
}

void DrevixPane::actCopyAction() {
    const ControlSlot *const control = FindControlSlot(fDrevixActionIndex);
    if (control != nullptr) {
        PutOnClipboard(fDrevixPrefs, control->key,
                       tr("%1: %2").arg(ControlTitle(control->slot), ActionText(*EditedSlot())));
    }
}

void DrevixPane::actPasteAction() {
    const std::optional<AppPrefs> source = CopiedRecord();
    const ControlSlot *const control = CopiedControl();
    if (source && control != nullptr) {
        TakeAction(source->device[0].action[control->slot]);
    }
}

void DrevixPane::TakeAction(const ActionSlot &action) {
    const ActionRefusal refusal = PasteAction(fDrevixPrefs, fDrevixActionIndex, action);
    Tell(refusal == ActionRefusal::None
             ? QString()
             : tr("%1 was not taken: %2.").arg(ActionText(action), RefusalText(refusal, action.command)));
    GetUIFromPrefs();
}

void DrevixPane::actNoAction() {
    ChooseAction(fDrevixPrefs, fDrevixActionIndex, kActionNone);
    GetUIFromPrefs();
}

void DrevixPane::actBackToFactory() {
    TakeAction(fDefaultAppPrefs.device[0].action[fDrevixActionIndex]);
}

void DrevixPane::actCopyAssignments() {
    PutOnClipboard(fDrevixPrefs, {}, SheetText(SheetOf(fDrevixPrefs, fDefaultAppPrefs, fOtherFamilies)));
}

void DrevixPane::actPasteAssignments() {
    if (const std::optional<AppPrefs> source = CopiedRecord()) {
        TellLeftOut(PasteAssignments(fDrevixPrefs, *source), fDrevixPrefs);
        GetUIFromPrefs();
    }
}

void DrevixPane::TellLeftOut(const std::vector<RefusedAction> &refused, const AppPrefs &target) {
    QStringList controls;
    for (const RefusedAction &one : refused) {
        controls += ControlTitle(one.slot);
    }
    Tell(controls.isEmpty() ? QString()
                            : tr("%1 can't do the same in %2 and stay as they are.")
                                  .arg(controls.join(QLatin1String(", ")), ShownName(target)));
}

// Copies the record, as edited, to another application. Where that may not have an action, the global
// record's stays.
void DrevixPane::actDuplicate() {
    ApplicationChooser chooser(fMainView->window());
    if (chooser.exec() != QDialog::Accepted || chooser.Chosen().fileName.empty()) {
        return;
    }
    SavePrefsToBase();
    const NewApplication &chosen = chooser.Chosen();
    AppPrefs copy = MakeAppPrefs(fDrevixBase, chosen.signature, chosen.fileName, chosen.shownName);
    const auto global = std::to_array(copy.device[0].action);
    copy.device[0] = fDrevixPrefs.device[0];
    std::ranges::copy(global, copy.device[0].action);
    const std::vector<RefusedAction> refused = PasteAssignments(copy, fDrevixPrefs);
    if (AddOrReplaceAppPrefs(copy) != kNoRecord) {
        TellLeftOut(refused, copy);
    }
}

} // namespace drevix
