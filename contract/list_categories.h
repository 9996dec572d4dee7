#pragma once

#include <cstdint>
#include <string>

#include "platform/prefs/specifier.h"

namespace velto {

// The maker's list-controller categories. They look in the array they are given (not in a
// controller's held list) for the row whose identifier matches exactly.
// The index, or -1 when no row has it (or the array is null).
std::int64_t nv__identifierIndex(const plat::SpecifierArrayPtr& specifiers,
                                 const std::string& identifier);
// The row, or null.
plat::SpecifierPtr nv__specifierByIdentifier(const plat::SpecifierArrayPtr& specifiers,
                                             const std::string& identifier);

}  // namespace velto
