#include "cli/text_table.h"

#include "platform/base/plain_text.h"

#include <algorithm>
#include <numeric>

namespace drevix {
namespace {

constexpr std::string_view kEllipsis = "\u2026";
constexpr std::string_view kColumnGap = "  ";
constexpr std::size_t kNarrowestColumn = 8; // narrower names are useless

bool StartsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; // not a UTF-8 continuation byte
}

using Widths = std::vector<std::size_t>;

void Widen(Widths &widths, const TableRow &row) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) {
        widths[i] = std::max(widths[i], TextColumns(row[i]));
    }
}

void FitIn(std::size_t columns, Widths &widths) {
    const std::size_t gaps = widths.empty() ? 0 : kColumnGap.size() * (widths.size() - 1);
    while (std::accumulate(widths.begin(), widths.end(), gaps) > columns) {
        const auto widest = std::ranges::max_element(widths);
        if (*widest <= kNarrowestColumn) {
            return;
        }
        --*widest;
    }
}

void AppendRow(std::string &text, const TableRow &row, const Widths &widths) {
    const std::size_t start = text.size();
    for (std::size_t i = 0; i < row.size(); ++i) {
        const std::string cell = CutText(PlainText(row[i]), widths[i]);
        text.append(i == 0 ? "" : kColumnGap).append(cell).append(widths[i] - TextColumns(cell), ' ');
    }
    const std::size_t last = text.find_last_not_of(' ');
    text.resize(last == text.npos ? start : std::max(start, last + 1));
    text.push_back('\n');
}

} // namespace

std::size_t TextColumns(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::count_if(text, StartsCharacter));
}

std::string CutText(std::string_view text, std::size_t columns) {
    if (TextColumns(text) <= columns) {
        return std::string(text);
    }
    std::size_t end = 0;
    for (std::size_t kept = 0; end < text.size(); ++end) {
        if (StartsCharacter(text[end]) && ++kept == columns) {
            break; // the ellipsis goes here
        }
    }
    return std::string(text.substr(0, end)).append(kEllipsis);
}

std::string TableText(const TableRow &headings, std::span<const TableRow> rows, std::size_t columns) {
    Widths widths;
    Widen(widths, headings);
    std::ranges::for_each(rows, [&](const TableRow &row) { Widen(widths, row); });
    FitIn(columns, widths);
    std::string text;
    if (!headings.empty()) {
        AppendRow(text, headings, widths);
    }
    std::ranges::for_each(rows, [&](const TableRow &row) { AppendRow(text, row, widths); });
    return text;
}

} // namespace drevix
