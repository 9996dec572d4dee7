#include "tests/platform/prefs/toy_controller.h"

#include "platform/prefs/runtime.h"
#include "platform/prefs/user_defaults.h"

namespace toy {

using plat::Value;

plat::SpecifierArrayPtr ToyController::specifiers() {
    if (!heldSpecifiers()) {
        auto list = loadSpecifiersFromPlistName("Toy", shared_from_this());
        // Row 1 is the page's switch; its stored value decides whether the rest shows.
        const bool on = readPreferenceValue(list->objectAtIndex(1)).boolValue();
        for (std::size_t i = list->count() - 1; !on && i > 1; --i)
            list->removeObjectAtIndex(i);
        setHeldSpecifiers(list);
    }
    return heldSpecifiers();
}

void ToyController::toyEnabledOrDisabled(const Value& value, const plat::SpecifierPtr& specifier) {
    setPreferenceValue(value, specifier);
    plat::UserDefaults::standardUserDefaults().synchronize();
}

void registerToyClasses() {
    auto& runtime = plat::Runtime::shared();
    runtime.registerClass(
        "ToyController", "PSListController", [] { return std::make_shared<ToyController>(); },
        kBundle);
    runtime.addMethod(
        "ToyController", "toyEnabledOrDisabled:specifier:",
        plat::bindMethod<ToyController>([](ToyController& self, const plat::Arguments& a) {
            self.toyEnabledOrDisabled(plat::argumentAt(a, 0),
                                      plat::argumentAt(a, 1).as<plat::Specifier>());
            return Value();
        }));
    runtime.registerClass("ToySwitchCell", "PSTableCell",
                          [] { return std::make_shared<ToySwitchCell>(); });
}

}  // namespace toy
