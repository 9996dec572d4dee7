#pragma once

// A page written only for the tests: it follows the pattern every real page follows (build the
// held list once, prune it by a stored switch, insert or remove the dependent rows when the
// switch flips) on a resource of its own, so the framework model is exercised end to end.

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
    bool initWithStyle(int style, const std::optional<std::string>& reuse,
                       const plat::SpecifierPtr& specifier) override;
};

// Registers both classes and their selectors (idempotent).
void registerToyClasses();

}  // namespace toy
