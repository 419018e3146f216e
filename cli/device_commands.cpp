// The commands for the device and its maps: press, hold, release, turn, watch, front, maps.

#include "cli/commands.h"
#include "cli/raw_watch.h"
#include "cli/text_table.h"
#include "device/control_state.h"
#include "device/device_map.h"
#include "helperlink/acted_texts.h"
#include "platform/base/field_words.h"
#include "platform/base/plain_text.h"
#include "platform/base/translation.h"
#include "platform/bus/device_client.h"
#include "platform/files/shared_file.h"
#include "platform/plist/json.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>

namespace drevix {
namespace {

constexpr const char *kHelperName = "DrevixHelper";

Outcome Connect(DeviceClient *client) {
    return client->Connect(kHelperName)
               ? Done()
               : Failed(Translated(
                     "the device helper is not running; start the settings panel or DrevixHelper"));
}

Outcome Act(const Request &request, const char *how, std::uint32_t times) {
    const std::string &control = request.arguments[0];
    if (FindControlSlot(control) == nullptr) {
        return WrongUsage(
            Translated("unknown control %1; 'drevixctl help assign' lists them", QuotedText(control)));
    }
    DeviceClient client;
    if (Outcome outcome = Connect(&client); !outcome.IsDone()) {
        return outcome;
    }
    std::string what;
    std::string problem;
    if (!client.Act(control, how, times, &what, &problem)) {
        return Failed(Translated("the device helper does not act: %1", Translated(problem)));
    }
    if (!what.empty()) {
        request.Out() << PlainText(TranslatedActed(what)) << "\n";
    }
    return Done();
}

} // namespace

Outcome PressControl(const Request &request) {
    return Act(request, "press", 1);
}

Outcome HoldControl(const Request &request) {
    return Act(request, "hold", 1);
}

Outcome ReleaseControl(const Request &request) {
    return Act(request, "release", 1);
}

Outcome TurnControl(const Request &request) {
    std::string_view number = request.arguments.size() > 1 ? std::string_view(request.arguments[1]) : "1";
    number.remove_prefix(number.starts_with('+') ? 1 : 0);
    const std::optional<std::int64_t> steps = FieldNumber(number, 1, kMostSteps);
    return steps ? Act(request, "turn", static_cast<std::uint32_t>(*steps))
                 : WrongUsage(Translated("STEPS must be 1 to %1", kMostSteps));
}

Outcome WatchControls(const Request &request) {
    if (request.line.raw) {
        return WatchRawEvents(request.Out());
    }
    DeviceClient client;
    if (Outcome outcome = Connect(&client); !outcome.IsDone()) {
        return outcome;
    }
    std::string problem;
    const bool isDone = client.Watch(
        [&](const std::string &control, const std::string &what, std::uint32_t times) {
            request.Out() << PlainText(ActedLine(control, what, times)) << std::endl;
        },
        &problem);
    return isDone ? Done()
                  : Failed(Translated("the device helper cannot be watched: %1", Translated(problem)));
}

// The script of a desktop that reports its windows only to its own scripts.
struct Reporter {
    std::string_view desktop; // as in XDG_CURRENT_DESKTOP
    const char *hint;
};
constexpr auto kReporters = std::to_array<Reporter>({
    {"GNOME",
     ToTranslate(
         "no window in front is known; GNOME on Wayland tells it once its extension is switched on: "
         "log in anew after the installation, then 'gnome-extensions enable drevix-front@com.halcyra'")},
    {"KDE",
     ToTranslate("no window in front is known; KDE on Wayland tells it once its script is switched on: "
                 "System Settings, Window Management, KWin Scripts, \"Drevix: window in front\"")},
});

// Says how to switch the desktop's reporter on, if no window is known.
void NoteReporter(const Request &request, const NamedTexts &front) {
    const auto text = [](const char *variable) {
        const char *const value = std::getenv(variable);
        return std::string_view(value != nullptr ? value : "");
    };
    const bool isKnown = std::ranges::any_of(front, [](const auto &told) {
        return told.first == "entry" || told.first == "class" || told.first == "name";
    });
    for (const Reporter &reporter : kReporters) {
        if (!isKnown && !text("WAYLAND_DISPLAY").empty() &&
            text("XDG_CURRENT_DESKTOP").find(reporter.desktop) != std::string_view::npos) {
            request.surroundings.err << PlainText("drevixctl: " +
                                                  Translated("note: %1", Translated(reporter.hint)))
                                     << '\n';
        }
    }
}

Outcome ShowFront(const Request &request) {
    DeviceClient client;
    if (Outcome outcome = Connect(&client); !outcome.IsDone()) {
        return outcome;
    }
    NamedTexts front;
    std::string problem;
    if (!client.Front(&front, &problem)) {
        return Failed(Translated("the device helper does not say what is in front: %1", Translated(problem)));
    }
    if (request.line.json) {
        PropertyListDictionary entry;
        for (const auto &[name, text] : front) {
            entry.Add(name, text);
        }
        request.Out() << JsonText(entry) << "\n";
        return Done();
    }
    for (const auto &[name, text] : front) {
        request.Out() << PlainText(name) << ": " << PlainText(Translated(text)) << "\n";
    }
    NoteReporter(request, front);
    return Done();
}

Outcome CheckMaps(const Request &request) {
    const std::string &path = request.arguments[0];
    std::string text;
    if (const OSErr status = ReadSharedFile(path, kMostMapBytes, &text); status != noErr) {
        return status == -1 ? Failed(Translated("%1 is no file of at most 64 KiB", path))
                            : FailedFile("cannot read %1", path, status, ToTranslate("nothing was checked"));
    }
    std::vector<MapProblem> problems;
    const std::vector<DeviceMap> maps = ParseDeviceMaps(text, &problems);
    for (const MapProblem &problem : problems) {
        request.Out() << path << ":" << problem.line << ": " << PlainText(problem.text) << "\n";
    }
    if (!problems.empty()) {
        return Failed(TranslatedCount("%2 has %1 line that is not valid",
                                      "%2 has %1 lines that are not valid", problems.size(), {path}));
    }
    request.Out() << TranslatedCount("%2: %1 map, no problem", "%2: %1 maps, no problem", maps.size(), {path})
                  << "\n";
    return Done();
}

} // namespace drevix
