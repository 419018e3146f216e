// Roles of the window's areas for assistive technology, to which a frame is only a frame.
#pragma once

namespace drevix {

// Gives areas made from now on their roles: save bar, strip, groups, the action search. May be called any
// number of times.
void InstallAreaRoles();

} // namespace drevix
