// Earlier settings: the dialog that lists and restores them.
#include "pane/drevix_pane.h"

#include "document/history.h"
#include "document/record_changes.h"
#include "pane/history_panel.h"
#include "pane/pane_text.h"
#include "platform/base/plain_text.h"
#include "platform/base/status.h"
#include "settings/prefs_list.h"

#include <QAction>
#include <QDateTime>
#include <QLocale>

#include <algorithm>
#include <tuple>

namespace drevix {
namespace {

QString TimeText(std::chrono::system_clock::time_point time) {
    const auto since = std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch());
    const QDateTime local = QDateTime::fromMSecsSinceEpoch(since.count());
    const QLocale locale;
    QString form = locale.timeFormat(QLocale::ShortFormat); // of most locales without seconds
    if (!form.contains(QLatin1Char('s'))) {
        form.replace(QLatin1String("mm"), QLatin1String("mm:ss"));
    }
    return locale.toString(local.date(), QLocale::ShortFormat) + QLatin1Char(' ') +
           locale.toString(local.time(), form);
}

// "GIMP: Button II, ringSpeed"
QString ChangeText(const RecordChange &change) {
    const QString name = change.fileName.empty() ? QCoreApplication::translate("Controls", "Global Settings")
                                                 : TextOf(PlainText(change.name));
    switch (change.kind) {
    case ChangeKind::Added:
        return DrevixPane::tr("%1 added").arg(name);
    case ChangeKind::Removed:
        return DrevixPane::tr("%1 deleted").arg(name);
    case ChangeKind::Changed:
        break;
    }
    QStringList parts;
    bool hasValues = false;
    for (const std::string_view key : change.keys) {
        const auto *slot = std::ranges::find(kControlSlots, key, &ControlSlot::key);
        hasValues = hasValues || slot == kControlSlots.end();
        if (slot != kControlSlots.end()) {
            parts += ControlTitle(slot->slot);
        }
    }
    if (hasValues || parts.isEmpty()) {
        parts += DrevixPane::tr("other values");
    }
    return DrevixPane::tr("%1: %2").arg(name, parts.join(QLatin1String(", ")));
}

// Compares each with its successor: the next newer one, or the current file.
std::vector<HistoryItem> ItemsOf(const std::vector<EarlierSettings> &history, const std::string &path) {
    std::vector<HistoryItem> items;
    items.reserve(history.size());
    QBaseOwner newer = ReadEarlierSettings({path, {}});
    for (const EarlierSettings &earlier : history) {
        QBaseOwner base = ReadEarlierSettings(earlier);
        QStringList changes;
        if (base != nullptr && newer != nullptr) {
            for (const RecordChange &change : ChangesBetween(base.get(), newer.get())) {
                changes += ChangeText(change);
            }
        }
        items.push_back({TimeText(earlier.replaced),
                         base != nullptr ? changes.join(QLatin1String("; ")) : DrevixPane::tr("damaged"),
                         base != nullptr});
        newer = std::move(base);
    }
    return items;
}

QStringList NamesOf(QBaseHandle base) {
    QStringList names;
    for (RecordNumber i = 0; base != nullptr && i < CountListedPrefs(base); ++i) {
        const AppPrefs *prefs = GetAppPrefs(base, i);
        names += prefs != nullptr ? ShownName(*prefs) : QString();
    }
    return names;
}

QBaseOwner SortedBase(const EarlierSettings &earlier) {
    QBaseOwner base = ReadEarlierSettings(earlier);
    if (base != nullptr) {
        SortDrevixBase(base.get());
    }
    return base;
}

} // namespace

QAction *DrevixPane::BuildHistoryAction() {
    auto *const action = new QAction(tr("Earlier Settings…"), fMainView);
    action->setObjectName(QStringLiteral("fHistoryAction"));
    action->setShortcut(Qt::CTRL | Qt::Key_H);
    connect(action, &QAction::triggered, this, &DrevixPane::actHistory);
    fMainView->addAction(action);
    return action;
}

void DrevixPane::actHistory() {
    std::vector<EarlierSettings> history;
    if (const OSErr status = ListHistory(fDocument.Path(), &history); status != noErr) {
        Report(status, tr("The earlier settings could not be listed"));
        return;
    }
    if (history.empty()) {
        Tell(tr("There are no earlier settings yet; each save keeps what it replaces."));
        return;
    }
    const auto namesOf = [&](int row) {
        return NamesOf(SortedBase(history[static_cast<std::size_t>(row)]).get());
    };
    HistoryPanel panel(ItemsOf(history, fDocument.Path()), namesOf, fMainView->window());
    if (panel.exec() == QDialog::Accepted && panel.Row() >= 0) {
        TakeEarlier(history[static_cast<std::size_t>(panel.Row())], panel.Record());
    }
}

// The replaced settings enter the history with the save.
void DrevixPane::TakeEarlier(const EarlierSettings &earlier, RecordNumber record) {
    KeepEdits();
    const RecordTrace edited = TraceEdited();
    const std::vector<AppPrefs> before = AllPrefsHere();
    const QBaseOwner base = SortedBase(earlier);
    const AppPrefs *one = base != nullptr && record >= 0 ? GetAppPrefs(base.get(), record) : nullptr;
    const bool isTaken = base != nullptr && (record < 0       ? fDocument.TakeAll(base.get())
                                             : one != nullptr ? fDocument.TakeOne(*one)
                                                              : false);
    fDrevixBase = fDocument.Base();
    if (!isTaken) {
        Tell(tr("The earlier settings could not be read; nothing was changed."));
        return;
    }
    NoteReplaced(before);
    ShowTraced(one != nullptr ? RecordTrace{*one} : edited);
    std::ignore = SaveEverything({}); // reported there
}

} // namespace drevix
