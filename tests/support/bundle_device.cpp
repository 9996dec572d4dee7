#include "tests/support/bundle_device.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "bundle/bundle_classes.h"
#include "platform/foundation/keyed_archive.h"
#include "platform/ui/image.h"

namespace testsupport {

namespace {

int containerCounter = 0;

std::string uuid(int n) {
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%08X-0000-4000-8000-%012d", 0xC0DE0000 + n, n);
    return buffer;
}

plat::Value infoPlist(const std::string& bundleIdentifier, const std::string& name) {
    return plat::Value::dictionary(
        {{"CFBundleIdentifier", bundleIdentifier}, {"CFBundleDisplayName", name}});
}

}  // namespace

BundleDevice::BundleDevice() {
    velto::registerBundleClasses();
    install(sourceDir() / "resources", kBundle);
    setProfile("iPhone", 3, true);
    setSystemVersion("12.4");
}

void BundleDevice::installSystemApp(const std::string& bundleIdentifier,
                                    const std::string& name) const {
    writePlist("/Applications/" + name + ".app/Info.plist", infoPlist(bundleIdentifier, name));
}

void BundleDevice::installUserApp(const std::string& bundleIdentifier,
                                  const std::string& name) const {
    const int n = ++containerCounter;
    writePlist("/var/containers/Bundle/Application/" + uuid(n) + "/" + name + ".app/Info.plist",
               infoPlist(bundleIdentifier, name));
    writePlist("/var/mobile/Containers/Data/Application/" + uuid(n + 5000) +
                   "/.com.apple.mobile_container_manager.metadata.plist",
               plat::Value::dictionary({{"MCMMetadataIdentifier", bundleIdentifier}}));
}

void BundleDevice::installBiteSMS() const {
    installSystemApp("com.bitesms", "biteSMS");
}

plat::Value BundleDevice::bools(const std::vector<std::pair<std::string, bool>>& flags) {
    plat::Dictionary settings;
    for (const auto& [key, on] : flags)
        settings[key] = plat::Value::boolean(on);
    return plat::Value::dictionary(std::move(settings));
}

void BundleDevice::writeResource(const std::string& name, const plat::Value& plist) const {
    writePlist(std::string(kBundle) + "/" + name + ".plist", plist, true);
}

void BundleDevice::answerIcons(int pixels) {
    process().messageCenters().setResponder([pixels](const std::string&, const std::string& message,
                                                     const plat::Value& userInfo) -> plat::Value {
        if (message != "com.norvale.velto.appicon") return plat::Value();
        // As the extension does: no icon for a request of another kind than 6.
        const plat::Value kind = userInfo.objectForKey("VeltoServiceMessageID");
        if (!kind.isInteger() || kind.integerValue() != 6) return plat::Value::dictionary();
        auto icon = plat::Image::blank(pixels, pixels, 3);
        auto archived = plat::archivedDataWithRootObject(plat::Value(icon));
        if (!archived) return plat::Value();
        return plat::Value::dictionary({{"VeltoServiceMessageData", plat::Value::data(*archived)}});
    });
}

plat::SpecifierArrayPtr BundleDevice::groups(std::size_t n) {
    auto list = std::make_shared<plat::SpecifierArray>();
    for (std::size_t i = 0; i < n; ++i)
        list->addObject(plat::Specifier::groupSpecifierWithName(std::to_string(i)));
    return list;
}

std::vector<std::string> BundleDevice::ids(const plat::SpecifierArrayPtr& list) {
    std::vector<std::string> out;
    if (!list) return out;
    for (const auto& row : *list)
        out.push_back(row->identifier().value_or("(nil)"));
    return out;
}

plat::SpecifierPtr BundleDevice::row(const plat::SpecifierArrayPtr& list, const std::string& id) {
    for (const auto& candidate : *list)
        if (candidate->identifier() == id) return candidate;
    ADD_FAILURE() << "no row " << id;
    return nullptr;
}

plat::TableCellPtr BundleDevice::cell(plat::ListController& page, const std::string& id) {
    page.specifiers();
    for (std::size_t s = 0; s < page.numberOfGroups(); ++s)
        for (std::size_t r = 0; r < page.rowsForGroup(s); ++r)
            if (page.specifierAtIndex(page.indexForRow(r, s))->identifier() == id)
                return page.tableViewCellForRowAtIndexPath(r, s);
    ADD_FAILURE() << "no cell " << id;
    return nullptr;
}

void BundleDevice::flip(plat::ListController& page, const std::string& id, bool on) {
    if (const auto toggle = row(page.specifiers(), id))
        plat::Runtime::shared().perform(page, toggle->setter(),
                                        {plat::Value::boolean(on), plat::Value(toggle)});
}

void BundleDevice::tap(plat::ListController& page, const std::string& id) {
    if (const auto button = row(page.specifiers(), id))
        plat::Runtime::shared().perform(*button->target(), button->action(), {plat::Value(button)});
}

std::vector<std::string> BundleDevice::listOperations(std::size_t mark) const {
    std::vector<std::string> out;
    auto line = [](const char* prefix, std::optional<std::int64_t> index, bool animated) {
        return prefix + (index ? std::to_string(*index) : "") + (animated ? "a" : "");
    };
    for (const auto& e : journal().since(mark)) {
        if (const auto* insert = std::get_if<plat::journal::Insert>(&e))
            out.push_back(line("+", insert->index, insert->animated));
        else if (const auto* remove = std::get_if<plat::journal::Remove>(&e))
            out.push_back(line("-", remove->index, remove->animated));
        else if (const auto* reload = std::get_if<plat::journal::Reload>(&e))
            out.push_back(line("~", reload->index, reload->animated));
    }
    return out;
}

std::vector<std::string> BundleDevice::animated(char op, int from, int to) {
    std::vector<std::string> out;
    for (int i = from; from <= to ? i <= to : i >= to; i += from <= to ? 1 : -1)
        out.push_back(op + std::to_string(i) + "a");
    return out;
}

std::vector<std::string> BundleDevice::firstLines(std::size_t mark, std::size_t n) const {
    auto lines = journalLines(mark);
    lines.resize(std::min(lines.size(), n));
    return lines;
}

std::vector<std::string> BundleDevice::storedAndAnnounced(const std::string& key) {
    return {"preference-write com.norvale.velto " + key,
            "notification com.norvale.veltosettingschanged", "synchronize"};
}

}  // namespace testsupport
