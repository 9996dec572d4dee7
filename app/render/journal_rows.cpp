#include "app/render/journal_rows.h"

namespace velto::app {

namespace {

std::optional<std::int64_t> sameRow(const plat::SpecifierArray& list, const plat::Object* row) {
    for (std::size_t i = 0; i < list.count(); ++i)
        if (list.objectAtIndex(i).get() == row) return static_cast<std::int64_t>(i);
    return std::nullopt;
}

// Only an identifier that names one row names it.
std::optional<std::int64_t> rowNamed(const plat::SpecifierArray& list, const std::string& id) {
    std::optional<std::int64_t> found;
    for (std::size_t i = 0; i < list.count(); ++i) {
        if (list.objectAtIndex(i)->identifier() != id) continue;
        if (found) return std::nullopt;
        found = static_cast<std::int64_t>(i);
    }
    return found;
}

std::optional<std::int64_t> shownIndex(
    const plat::journal::Insert& entry,
    const std::vector<std::shared_ptr<plat::ListController>>& stack) {
    const auto row = entry.row.lock();
    for (const auto& page : stack) {
        const auto list = page->heldSpecifiers();
        if (!list) continue;
        if (row)
            if (auto index = sameRow(*list, row.get())) return index;
    }
    if (entry.rowIdentifier.empty()) return std::nullopt;
    for (auto page = stack.rbegin(); page != stack.rend(); ++page) {
        const auto list = (*page)->heldSpecifiers();
        if (list && (*page)->className() == entry.page)
            if (auto index = rowNamed(*list, entry.rowIdentifier)) return index;
    }
    return std::nullopt;
}

}  // namespace

void placeInsertions(std::vector<plat::JournalEntry>& journal,
                     const std::vector<std::shared_ptr<plat::ListController>>& stack) {
    for (plat::JournalEntry& entry : journal)
        if (auto* insert = std::get_if<plat::journal::Insert>(&entry))
            insert->index = shownIndex(*insert, stack);
}

}  // namespace velto::app
