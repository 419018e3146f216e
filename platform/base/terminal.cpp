#include "platform/base/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace drevix {

std::size_t TerminalColumns(std::size_t otherwise) {
    struct winsize size {};
    return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : otherwise;
}

} // namespace drevix
