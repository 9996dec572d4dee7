#include "kit/row_editing.h"

namespace velto::rows {

void removeDownToTwo(plat::SpecifierArray& list, std::size_t start) {
    for (std::size_t i = start; i > 1; --i)
        list.removeObjectAtIndex(i);
}

void removeShownDownToTwo(plat::ListController& page, std::size_t start, bool animated) {
    for (std::size_t i = start; i > 1; --i)
        page.removeSpecifierAtIndex(i, animated);
}

void insertAtOwnIndexes(plat::ListController& page, const plat::SpecifierArray& fresh,
                        std::size_t from, std::size_t end, bool animated) {
    for (std::size_t i = from; i < end; ++i)
        page.insertSpecifier(fresh.objectAtIndex(i), i, animated);
}

void applyFavourites(plat::ListController& page, const plat::SpecifierArray& fresh, bool on,
                     bool animateRemoval) {
    auto footerGroup = fresh.objectAtIndex(2);
    if (on) {
        if (animateRemoval)
            page.removeSpecifierAtIndex(2, true);
        else
            page.removeSpecifierAtIndex(2);
        insertAtOwnIndexes(page, fresh, 2, 8, true);
    } else {
        footerGroup->removePropertyForKey("footerText");
        page.removeSpecifierAtIndex(2);
        page.insertSpecifier(fresh.objectAtIndex(3), 3, false);
    }
}

void applyEnableSwitch(plat::ListController& page, bool on, const std::string& resource) {
    const auto shown = page.heldSpecifiers();
    if (!shown) return;
    if (on) {
        const auto fresh = page.loadSpecifiersFromPlistName(resource, page.shared_from_this());
        insertAtOwnIndexes(page, *fresh, 2, fresh->count(), true);
    } else {
        removeShownDownToTwo(page, shown->count() - 1, true);
    }
}

}  // namespace velto::rows
