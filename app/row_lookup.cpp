#include "app/row_lookup.h"

#include <cctype>

namespace velto::app {

namespace {

std::optional<std::size_t> hashIndex(const std::string& text) {
    if (text.size() < 2 || text[0] != '#' || text.size() > 10) return std::nullopt;
    std::size_t index = 0;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (!std::isdigit(static_cast<unsigned char>(text[i]))) return std::nullopt;
        index = index * 10 + static_cast<std::size_t>(text[i] - '0');
    }
    return index;
}

}  // namespace

std::optional<RowRef> findRow(const plat::SpecifierArrayPtr& list, const std::string& text) {
    if (!list) return std::nullopt;
    const auto& rows = list->items();
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (rows[i]->hasExplicitIdentifier() && rows[i]->identifier() == text)
            return RowRef{rows[i], i};
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (rows[i]->name() == text) return RowRef{rows[i], i};
    if (auto index = hashIndex(text); index && *index < rows.size())
        return RowRef{rows[*index], *index};
    return std::nullopt;
}

std::optional<CellPosition> cellPosition(const plat::ListController& page, std::size_t index) {
    for (std::size_t section = 0; section < page.numberOfGroups(); ++section) {
        const std::size_t rows = page.rowsForGroup(section);
        for (std::size_t row = 0; row < rows; ++row)
            if (page.indexForRow(row, section) == index) return CellPosition{row, section};
    }
    return std::nullopt;
}

}  // namespace velto::app
