// Does to the session's desktop what it reads, for tests: "down CODE", "up CODE", "scroll DIRECTION STEPS", "ask REQUEST",
// numbers as in the headers, and says "no" to what cannot be done there. Tells a problem or "open", each front window, other
// layouts, and "lost" in the end.
#include "platform/windows/desktop.h"

#include <cstdio>
#include <iostream>
#include <poll.h>
#include <sstream>
#include <string>
#include <utility>

namespace {

bool Do(drevix::Desktop *desktop, const std::string &line) {
    std::istringstream words(line);
    std::string verb;
    int first = 0;
    int second = 0;
    words >> verb >> first >> second;
    if (verb == "scroll") {
        return desktop->Scroll(static_cast<drevix::ScrollDirection>(first), second);
    }
    if (verb == "ask") {
        return desktop->Ask(static_cast<drevix::WindowRequest>(first));
    }
    return desktop->Key(static_cast<std::uint16_t>(first), verb == "down");
}

} // namespace

int main() {
    std::string problem;
    const auto desktop = drevix::OpenDesktop(&problem);
    if (desktop == nullptr) {
        std::cout << problem << std::endl;
        return 1;
    }
    std::cout << (problem.empty() ? "open" : problem) << std::endl;
    drevix::FrontWindow front;
    unsigned layouts = desktop->LayoutChanges();
    for (std::string line; desktop->Take() && desktop->Flush();) {
        if (desktop->Front() != front) {
            front = desktop->Front();
            std::cout << "front " << front.entryId << std::endl;
        }
        if (std::exchange(layouts, desktop->LayoutChanges()) != desktop->LayoutChanges()) {
            std::cout << "layout changed" << std::endl;
        }
        pollfd looks[] = {{desktop->Descriptor(), POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
        poll(looks, 2, -1);
        if (looks[1].revents != 0) {
            if (!std::getline(std::cin, line)) {
                return 0;
            }
            std::cout << (Do(desktop.get(), line) ? "yes" : "no") << std::endl;
        }
    }
    std::cout << "lost" << std::endl;
}
