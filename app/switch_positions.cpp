#include "app/switch_positions.h"

#include <algorithm>
#include <cstdint>

namespace velto::app {

void SwitchPositions::hold(const std::shared_ptr<plat::ListController>& page,
                           const plat::SpecifierPtr& row, bool on) {
    std::erase_if(held_, [&](const Held& h) { return h.row.lock() == row; });
    if (page && row) held_.push_back({page, row, on});
}

void SwitchPositions::forgetRedrawn(const std::vector<plat::JournalEntry>& entries) {
    for (const auto& entry : entries) {
        const auto* reload = std::get_if<plat::journal::Reload>(&entry);
        if (!reload) continue;
        std::erase_if(held_, [&](const Held& h) {
            const auto page = h.page.lock();
            if (!page || page->className() != reload->page) return false;
            if (!reload->index) return true;
            const auto index = page->indexOfSpecifier(h.row.lock());
            return index && static_cast<std::int64_t>(*index) == *reload->index;
        });
    }
    std::erase_if(held_, [](const Held& h) { return h.page.expired() || h.row.expired(); });
}

void SwitchPositions::apply(const plat::ListController& page, PageView& view) const {
    for (const Held& h : held_) {
        if (h.page.lock().get() != &page) continue;
        const auto index = page.indexOfSpecifier(h.row.lock());
        if (index && *index < view.rows.size() && view.rows[*index].value)
            view.rows[*index].value = h.on;
    }
}

std::optional<bool> SwitchPositions::heldPosition(const plat::SpecifierPtr& row) const {
    for (const Held& h : held_)
        if (h.row.lock() == row) return h.on;
    return std::nullopt;
}

}  // namespace velto::app
