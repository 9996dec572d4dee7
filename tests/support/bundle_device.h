#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/prefs/list_controller.h"
#include "platform/prefs/runtime.h"
#include "tests/support/test_device.h"

namespace testsupport {

// A test device with the bundle loaded: its classes registered and its resources installed
// where the Settings application finds them. Helpers install applications the way the
// device lays them out and stand in for the extension's answers.
class BundleDevice : public TestDevice {
  public:
    static constexpr const char* kBundle = "/System/Library/PreferenceBundles/VeltoSettings.bundle";
    static constexpr const char* kMainSettings =
        "/var/mobile/Library/Preferences/com.norvale.velto.plist";

    BundleDevice();

    // An application in /Applications (system) or in a bundle container (user, with a data
    // container).
    void installSystemApp(const std::string& bundleIdentifier, const std::string& name) const;
    void installUserApp(const std::string& bundleIdentifier, const std::string& name) const;
    void installBiteSMS() const;

    // The main settings file with the given booleans.
    void writeSettings(const std::vector<std::pair<std::string, bool>>& flags) const;
    plat::Value mainSettings() const { return readPlist(kMainSettings); }

    // Replaces one resource of the installed bundle.
    void writeResource(const std::string& name, const plat::Value& plist) const;

    // The extension answers icon requests with a picture of the given pixel size.
    void answerIcons(int pixels = 87);

    // alloc + initForContentSize: of a registered page class.
    template <class T>
    std::shared_ptr<T> open(const std::string& className) const {
        auto page = std::dynamic_pointer_cast<T>(plat::Runtime::shared().instantiate(className));
        if (page && !page->initForContentSize({320, 568})) return nullptr;
        return page;
    }

    // Identifiers (or names) of a list, in order.
    static std::vector<std::string> ids(const plat::SpecifierArrayPtr& list);
    // Journal list operations since a mark: "+2", "-7", "~" (reload without index)...
    std::vector<std::string> listOperations(std::size_t mark) const;
};

}  // namespace testsupport
