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

    // A settings dictionary of booleans, and the main settings file holding it.
    static plat::Value bools(const std::vector<std::pair<std::string, bool>>& flags);
    void writeSettings(const std::vector<std::pair<std::string, bool>>& flags) const {
        writePlist(kMainSettings, bools(flags));
    }
    plat::Value mainSettings() const { return readPlist(kMainSettings); }

    // One resource of the installed bundle, as installed and replaced.
    plat::Value resource(const std::string& name) const {
        return readPlist(std::string(kBundle) + "/" + name + ".plist");
    }
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

    // alloc + initForContentSize: and the rows built, as the Settings application shows it.
    template <class T>
    std::shared_ptr<T> openBuilt(const std::string& className) const {
        auto page = open<T>(className);
        if (page) page->specifiers();
        return page;
    }

    // A list of n group rows named (and identified) "0", "1"...
    static plat::SpecifierArrayPtr groups(std::size_t n);
    // Identifiers (or names) of a list, in order.
    static std::vector<std::string> ids(const plat::SpecifierArrayPtr& list);

    // The user's side of a shown page. A row by identifier (a test failure when there is none),
    // the cell the table shows for it, its switch flipped through the setter the resource
    // names, its button tapped through its action.
    static plat::SpecifierPtr row(const plat::SpecifierArrayPtr& list, const std::string& id);
    static plat::TableCellPtr cell(plat::ListController& page, const std::string& id);
    static void flip(plat::ListController& page, const std::string& id, bool on);
    static void tap(plat::ListController& page, const std::string& id);

    // The journal's length, to read what happened after it.
    std::size_t mark() const { return journal().size(); }
    // Journal list operations since a mark: "+2", "-7", "~" (reload without index)...
    std::vector<std::string> listOperations(std::size_t mark) const;
    // Animated operations on each index from `from` to `to`, either way: "+2a", "+3a"...
    static std::vector<std::string> animated(char op, int from, int to);
    // The first journal lines since a mark, and what a switch does first: store the key in the
    // main domain, tell the extension, synchronize.
    std::vector<std::string> firstLines(std::size_t mark, std::size_t n) const;
    static std::vector<std::string> storedAndAnnounced(const std::string& key);
};

}  // namespace testsupport
