#include "platform/system/bundle.h"

#include "platform/system/process.h"
#include "platform/system/property_list_cache.h"

namespace plat {

namespace {

std::string joined(const std::string& folder, const std::string& name) {
    if (folder.empty()) return name;
    if (folder.back() == '/') return folder + name;
    return folder + "/" + name;
}

}  // namespace

Bundle Bundle::mainBundle() {
    return Bundle("/Applications/Preferences.app");
}

std::string Bundle::pathForResource(const std::string& name, const std::string& ext) const {
    if (name.empty()) return "";
    // An empty extension means the name is the whole file name.
    std::string path = joined(path_, ext.empty() ? name : name + "." + ext);
    return Process::current().root().fileExists(path) ? path : "";
}

std::string Bundle::localizedStringForKey(const std::string& key, const std::string& value,
                                          const std::string& table) const {
    const std::string file = (table.empty() ? std::string("Localizable") : table) + ".strings";
    const DeviceRoot& root = Process::current().root();
    for (const std::string& folder : {path_, joined(path_, "en.lproj")}) {
        // Every label of every page asks: the table is parsed once, as NSBundle keeps it.
        const Value strings = cachedPropertyList(root, joined(folder, file));
        const Value found = strings.objectForKey(key);
        if (found.isString()) return found.str();
    }
    return value.empty() ? key : value;
}

}  // namespace plat
