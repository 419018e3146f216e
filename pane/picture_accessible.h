// The device picture for assistive technology, which has no look at the pixels.
#pragma once

namespace drevix {

// Makes pictures accessible from now on: a group of controls, each with its name, its action as its value,
// and its place; pressing one chooses it. May be called any number of times.
void InstallPictureAccessible();

} // namespace drevix
