// What the areas of the window are for assistive technology, for which a frame is only a frame.
#pragma once

namespace drevix {

// From now on the areas that are made have their roles: save bar, strip, groups, the pop-up that finds actions. May
// be called any number of times.
void InstallAreaRoles();

} // namespace drevix
