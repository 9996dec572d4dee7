#include "tests/platform/prefs/toy_controller.h"

#include "platform/prefs/runtime.h"
#include "platform/prefs/user_defaults.h"
#include "platform/ui/alert_controller.h"

namespace toy {

using plat::Value;

plat::SpecifierArrayPtr ToyController::specifiers() {
    if (!heldSpecifiers()) {
        auto list = loadSpecifiersFromPlistName("Toy", shared_from_this());
        // Row 1 is the page's switch; its stored value decides whether the rest shows.
        const bool on = readPreferenceValue(list->objectAtIndex(1)).boolValue();
        if (!on) {
            for (std::size_t i = list->count() - 1; i > 1; --i)
                list->removeObjectAtIndex(i);
        }
        setHeldSpecifiers(list);
    }
    return heldSpecifiers();
}

void ToyController::toyEnabledOrDisabled(const Value& value, const plat::SpecifierPtr& specifier) {
    setPreferenceValue(value, specifier);
    plat::UserDefaults::standardUserDefaults().synchronize();
    if (!heldSpecifiers()) return;
    if (value.boolValue()) {
        auto fresh = loadSpecifiersFromPlistName("Toy", shared_from_this());
        for (std::size_t i = 2; i < fresh->count(); ++i)
            insertSpecifier(fresh->objectAtIndex(i), i, true);
    } else {
        for (std::size_t i = heldSpecifiers()->count() - 1; i > 1; --i)
            removeSpecifierAtIndex(i, true);
    }
}

void ToyController::resetAll(const plat::SpecifierPtr&) {
    auto sheet = plat::AlertController::alertControllerWithTitle(
        std::nullopt, std::nullopt, plat::UIAlertControllerStyleActionSheet);
    std::weak_ptr<ToyController> weakSelf =
        std::static_pointer_cast<ToyController>(shared_from_this());
    sheet->addAction(plat::AlertAction::actionWithTitle(
        "Reset", plat::UIAlertActionStyleDestructive, [weakSelf](plat::AlertAction&) {
            if (auto self = weakSelf.lock()) ++self->resetsConfirmed;
        }));
    sheet->addAction(
        plat::AlertAction::actionWithTitle("Cancel", plat::UIAlertActionStyleCancel, {}));
    presentViewController(sheet, true, {});
}

void ToyController::pickPicture(const plat::SpecifierPtr&) {
    auto picker = std::make_shared<plat::ImagePickerController>();
    picker->setAllowsEditing(true);
    picker->setDelegate(std::dynamic_pointer_cast<plat::ImagePickerDelegate>(shared_from_this()));
    presentViewController(picker, true, {});
}

void ToyController::imagePickerControllerDidFinishPickingMediaWithInfo(
    plat::ImagePickerController& picker, Value info) {
    picked = info.objectForKey(plat::UIImagePickerControllerEditedImage).as<plat::Image>();
    picker.dismissViewControllerAnimated(true, {});
    reloadSpecifiers();
}

void ToyController::imagePickerControllerDidCancel(plat::ImagePickerController& picker) {
    picker.dismissViewControllerAnimated(true, {});
}

bool ToySwitchCell::initWithStyle(int style, const std::optional<std::string>& reuse,
                                  const plat::SpecifierPtr& specifier) {
    if (!TableCell::initWithStyle(style, reuse, specifier)) return false;
    if (control()) control()->setOnTintColor(plat::Color::colorWithRGBA(1, 0.5, 0, 1));
    return true;
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
    runtime.addMethod(
        "ToyController", "resetAll:",
        plat::bindMethod<ToyController>([](ToyController& self, const plat::Arguments& a) {
            self.resetAll(plat::argumentAt(a, 0).as<plat::Specifier>());
            return Value();
        }));
    runtime.addMethod(
        "ToyController", "pickPicture:",
        plat::bindMethod<ToyController>([](ToyController& self, const plat::Arguments& a) {
            self.pickPicture(plat::argumentAt(a, 0).as<plat::Specifier>());
            return Value();
        }));
    runtime.registerClass("ToySwitchCell", "PSTableCell",
                          [] { return std::make_shared<ToySwitchCell>(); });
}

}  // namespace toy
