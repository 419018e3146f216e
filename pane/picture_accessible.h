// The device picture for assistive technology, which has no look at the pixels.
#pragma once

namespace drevix {

// Makes pictures accessible from now on: a list of controls, each with its name, its action as its value, what the
// factory would have it do as its description, and the rectangle around control and callout; pressing one chooses
// it. May be called any number of times.
void InstallPictureAccessible();

} // namespace drevix
