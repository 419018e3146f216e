// Tables that fit the terminal.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

inline constexpr std::size_t kTerminalColumns = 80; // if unknown

// The columns that UTF-8 text takes: one per character, because all text shown comes from Mac OS Roman, which
// has no wide or combining characters.
[[nodiscard]] std::size_t TextColumns(std::string_view text);
// The text cut to at most that many columns (1 or more), with an ellipsis for what is cut off.
[[nodiscard]] std::string CutText(std::string_view text, std::size_t columns);

// The rows as lines, under a line of headings if there are any, each column as wide as its widest cell. If
// the table exceeds `columns`, the widest columns are cut until it fits. Missing cells are empty; no line
// ends in blanks.
using TableRow = std::vector<std::string>;
[[nodiscard]] std::string TableText(const TableRow &headings, std::span<const TableRow> rows,
                                    std::size_t columns = kTerminalColumns);

} // namespace drevix
