// Keeps buttons I, II and III and the companion dial's hotkey files in step. The companion's files are right
// when the panel comes to the front, the panel's records when the user applies or leaves. Programs of ours
// take turns with the files, by a lock of the user's ("platform/files/user_lock.h"); the companion locks nothing, and
// the last writer wins.
#pragma once

#include "companion/korvane_files.h"
#include "platform/base/status.h"
#include "qbase/qbase.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace drevix {

// What came of one hotkey file.
enum class KorvaneFileState : std::uint8_t {
    InStep,     // it says what the buttons do, or has no hotkeys for us
    ReadInPart, // it is damaged: neither it nor the buttons were changed
    NotRead,    // there was not the memory: the buttons were not changed
    // Of writing, where it does not say what the buttons do. What it says counts when it is read again.
    InUse,      // another program kept writing it
    TooLong,    // it could not be read again
    NotWritten, // `status` says why
};
struct KorvaneFileResult {
    KorvaneFileState state = KorvaneFileState::InStep;
    OSErr status = noErr;
};
// One for each of kKorvaneApps, in its order. FindKorvaneFileForApp has the paths.
using KorvaneResults = std::array<KorvaneFileResult, kKorvaneApps.size()>;

// Writes the buttons' menu entries into every hotkey file that is there, whether or not it changes, asks the
// companion's two programs to load their settings anew, and announces the files on its notification port.
// Every hotkey keeps its place and its title. A file that another program changes meanwhile is read again;
// one that keeps changing is left for the next time, and so are all when another program of ours is busy with
// them for longer than half a second. Gives the announcement's status, "notification_socket.h". The base is not
// changed. What came of the files is stored in *results, if given.
std::int32_t SyncToKorvane(QBaseHandle base, KorvaneResults *results = nullptr);

// Takes the buttons' menu entries of every companion application's record from its hotkey file. A record
// whose file is missing or damaged keeps what it has. Records are changed in place; the base then counts as
// changed. What came of the files is stored in *results, if given.
void SyncFromKorvane(QBaseHandle base, KorvaneResults *results = nullptr);
// The same for one application: the record with this file name, or creator where the name is null, from the
// file in that folder. Without a folder (empty) it is the one of the row that creator and name select, if
// any.
void SyncAppFromKorvane(QBaseHandle base, OSType creator, ConstStringPtr fileName, std::string_view folder);

} // namespace drevix
