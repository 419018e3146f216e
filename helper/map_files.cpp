#include "helper/map_files.h"

#include "platform/base/status.h"
#include "platform/base/translation.h"
#include "platform/files/paths.h"
#include "platform/files/shared_file.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace drevix {
namespace {

std::vector<std::string> MapsIn(const std::string &folder) {
    std::vector<std::string> paths;
    std::error_code error; // no folder, no maps
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().extension() == ".map") {
            paths.push_back(entry->path());
        }
    }
    std::ranges::sort(paths);
    return paths;
}

} // namespace

std::vector<DeviceMap> ReadMapFiles(const std::string &preferences, const FSRef &resources,
                                    const std::function<void(const std::string &)> &complain) {
    std::vector<std::string> paths = MapsIn(JoinPath(preferences, kUsersMapsFolder));
    std::ranges::copy(MapsIn(JoinPath(resources.path, kMapsFolder)), std::back_inserter(paths));
    std::vector<DeviceMap> maps;
    for (const std::string &path : paths) {
        std::string text;
        if (const OSErr status = ReadSharedFile(path, kMostMapBytes, &text); status != noErr) {
            complain(Translated("cannot read %1: %2", path, Translated(StatusText(status))));
            continue;
        }
        std::vector<MapProblem> problems;
        std::ranges::copy(ParseDeviceMaps(text, &problems), std::back_inserter(maps));
        for (const MapProblem &problem : problems) {
            complain(path + ":" + std::to_string(problem.line) + ": " + problem.text);
        }
    }
    return maps;
}

} // namespace drevix
