// The device picture for assistive technology, which cannot see pixels.
#pragma once

namespace drevix {

// Makes pictures created from now on accessible: a list of controls, each with its name, its action as value,
// its factory action as description, and the rectangle around control and callout; pressing one chooses it.
// May be called any number of times.
void InstallPictureAccessible();

} // namespace drevix
