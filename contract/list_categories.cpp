#include "contract/list_categories.h"

namespace velto {

std::int64_t nv__identifierIndex(const plat::SpecifierArrayPtr& specifiers,
                                 const std::string& identifier) {
    if (!specifiers) return -1;
    const auto& items = specifiers->items();
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (items[i]->identifier() == identifier) return static_cast<std::int64_t>(i);
    }
    return -1;
}

plat::SpecifierPtr nv__specifierByIdentifier(const plat::SpecifierArrayPtr& specifiers,
                                             const std::string& identifier) {
    const std::int64_t index = nv__identifierIndex(specifiers, identifier);
    return index < 0 ? nullptr : specifiers->objectAtIndex(static_cast<std::size_t>(index));
}

}  // namespace velto
