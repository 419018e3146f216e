// The values that `set` changes.
#pragma once

#include <string_view>
#include <vector>

namespace drevix {

// The keys, named as in a property list, in its order.
[[nodiscard]] std::vector<std::string_view> SettingKeys();
// What `defaults` restores.
[[nodiscard]] std::vector<std::string_view> DefaultsGroups();

} // namespace drevix
