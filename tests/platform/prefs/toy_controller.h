#pragma once

// A page written only for the tests: it builds its held list once and prunes it by a stored
// switch, as every real page does, on a resource of its own, so the framework model is
// exercised end to end. What a real page does with its rows when the switch flips is checked
// on that page.

#include <string>

#include "platform/prefs/list_controller.h"
#include "platform/prefs/table_cell.h"

namespace toy {

inline constexpr const char* kBundle = "/System/Library/PreferenceBundles/Toy.bundle";
inline constexpr const char* kDomainFile = "/var/mobile/Library/Preferences/com.example.toy.plist";

class ToyController : public plat::ListController {
  public:
    std::string className() const override { return "ToyController"; }
    plat::SpecifierArrayPtr specifiers() override;

    void toyEnabledOrDisabled(const plat::Value& value, const plat::SpecifierPtr& specifier);
};

// A switch cell class named by "cellClass" in the resource.
class ToySwitchCell : public plat::TableCell {
  public:
    std::string className() const override { return "ToySwitchCell"; }
};

// Registers both classes and their selectors (idempotent).
void registerToyClasses();

}  // namespace toy
