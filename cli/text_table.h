// Text for a terminal: tables as wide as that.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace drevix {

inline constexpr std::size_t kTerminalColumns = 80; // where it is not known

// Columns that UTF-8 text takes. One a character: all the text that is shown comes from Mac OS Roman, which
// has neither wide characters nor combining ones.
[[nodiscard]] std::size_t TextColumns(std::string_view text);
// The text in at most that many columns, one or more; what is cut off shows as an ellipsis.
[[nodiscard]] std::string CutText(std::string_view text, std::size_t columns);

// The rows as lines, under a line of headings if there are any, each column as wide as its widest cell. Where
// that passes `columns` the widest columns are cut until it fits. Missing cells are empty; no line ends in
// blanks.
using TableRow = std::vector<std::string>;
[[nodiscard]] std::string TableText(const TableRow &headings, std::span<const TableRow> rows,
                                    std::size_t columns = kTerminalColumns);

} // namespace drevix
