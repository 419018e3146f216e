#include "platform/windows/process_program.h"

#include <array>
#include <climits>
#include <fstream>
#include <string_view>
#include <unistd.h>

namespace drevix {

std::string ProgramOfProcess(std::uint32_t process) {
    const std::string folder = "/proc/" + std::to_string(process);
    std::array<char, PATH_MAX> path{};
    if (const ssize_t size = readlink((folder + "/exe").c_str(), path.data(), path.size()); size > 0) {
        // What the kernel puts behind the path when an update has replaced the file.
        constexpr std::string_view kReplaced = " (deleted)";
        std::string_view program(path.data(), static_cast<std::size_t>(size));
        program.remove_suffix(program.ends_with(kReplaced) ? kReplaced.size() : 0);
        return std::string(program);
    }
    std::string word;
    std::ifstream commandLine(folder + "/cmdline");
    std::getline(commandLine, word, '\0');
    return word;
}

} // namespace drevix
