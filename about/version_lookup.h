#pragma once

#include <optional>
#include <string>

#include "contract/catalogue.h"
#include "platform/foundation/value.h"

// The installed product's version, for the About page's footer: the package manager knows it
// first; the extension's SpringBoard side, which keeps the product information, answers when
// the package manager does not. The names are the ones the maker's other components use, and
// they stay as they are.

namespace velto {

inline constexpr const char* kProductPackage = appids::kProductPackage;

// The version `dpkg-query` reports for the package, exactly as it prints it; nullopt when the
// command cannot start or exits non-zero (an unknown package). Runs the command every time.
std::optional<std::string> packageVersion(const std::string& packageIdentifier);

// The package's version, or the "Version" of the product information; nullopt when neither
// has one.
std::optional<std::string> __getProductVersion();

// The product information, asked of SpringBoard until it has once been given and kept for the
// rest of the process. Nil while there is none.
plat::Value __getProductInfoDict();

// One "com.norvale.velto.product" request; the reply's archived dictionary, or nil.
plat::Value productInfoFromSpringBoard();

}  // namespace velto
