#include "contract/enabled_query.h"

#include "platform/foundation/strings.h"
#include "platform/system/plist_file.h"

namespace velto {

std::string preferencesFolder() {
    return plat::stringByAppendingPathComponent("/var/mobile/", "Library/Preferences");
}

std::string settingsFilePathFor(const std::string& fileName) {
    return plat::stringByAppendingPathComponent(preferencesFolder(), fileName);
}

bool enabledQuery(const std::string& key, const std::string& settingsFileName) {
    plat::Value settings =
        plat::dictionaryWithContentsOfFile(settingsFilePathFor(settingsFileName));
    const bool enabled = settings.objectForKey(key).boolValue();
    settings.removeAllObjects();
    return enabled;
}

}  // namespace velto
