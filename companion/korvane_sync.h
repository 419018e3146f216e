// Keeps buttons I, II and III in sync with the companion dial's hotkey files. The companion's files win when
// the panel comes to the front, the panel's records when the user applies or leaves. Our programs take turns
// with a per-user lock ("platform/files/user_lock.h"); the companion does not lock, so the last writer wins.
#pragma once

#include "companion/korvane_files.h"
#include "platform/base/status.h"
#include "qbase/qbase.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

// The hotkeys of a file that the buttons were last read from or written to; nullopt: unknown.
using SeenHotKeys = std::optional<std::vector<KorvaneHotKey>>;

// The result for one hotkey file.
enum class KorvaneFileState : std::uint8_t {
    InStep,     // it matches the buttons, or has no hotkeys for us
    ReadInPart, // damaged: neither it nor the buttons were changed
    NotRead,    // out of memory: the buttons were not changed
    // When writing: it matches the buttons, whose entries replaced what another program had changed since the
    // file was last seen here.
    Replaced,
    // When writing: the file does not match the buttons. Its contents win when it is read again.
    InUse,      // another program kept writing it
    TooLong,    // it could not be read again
    NotWritten, // see `status`
};
struct KorvaneFileResult {
    KorvaneFileState state = KorvaneFileState::InStep;
    OSErr status = noErr;
    // If Replaced: the path of a copy of the file as it was, kept for a month; empty if it could not be kept.
    std::string kept = {};
    SeenHotKeys seen = {};
};
// One per row of kKorvaneApps, in order. FindKorvaneFileForApp gives the paths.
using KorvaneResults = std::array<KorvaneFileResult, kKorvaneApps.size()>;

// Writes the buttons' menu entries into every existing hotkey file, even an unchanged one, asks the
// companion's two programs to reload their settings, and announces the files on its notification port. Each
// hotkey keeps its position and title. If another program changes a file meanwhile it is read again; one that
// keeps changing is left for next time, as are all files if another of our programs holds them for more than
// half a second. Returns the announcement's status ("notification_socket.h"). The base is not changed.
// *results, if given, gets the result for each file. Pass in the results of the last call for these records:
// they tell what others have changed since. A file that is NotRead there, as SyncFromKorvane left it, is not
// written, because the buttons do not hold its entries yet.
std::int32_t SyncToKorvane(QBaseHandle base, KorvaneResults *results = nullptr);

// Reads the buttons' menu entries of every companion application's record from its hotkey file. A record
// whose file is missing or damaged stays as it is. Changes records in place and marks the base changed.
// *results, if given, gets the result for each file. The same entries go into the records of `other`, if
// given.
void SyncFromKorvane(QBaseHandle base, KorvaneResults *results = nullptr, QBaseHandle other = nullptr);
// The same for one application: the record with this file name, or this creator if the name is null, from the
// file in that folder. An empty folder means that of the row that creator and name select, if any.
void SyncAppFromKorvane(QBaseHandle base, OSType creator, ConstStringPtr fileName, std::string_view folder);

// For records taken from another base, into which the files were read with the results `read`. Where the
// buttons here match the file, *results get what was seen then; if memory runs out, that counts as unknown.
void AdoptSeenFiles(QBaseHandle base, KorvaneResults read, KorvaneResults *results);

} // namespace drevix
