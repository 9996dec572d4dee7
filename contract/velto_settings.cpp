#include "contract/velto_settings.h"

#include <algorithm>

#include "contract/catalogue.h"
#include "platform/foundation/plist.h"
#include "platform/system/plist_file.h"
#include "platform/system/process.h"

namespace velto {

namespace {

const char* const kSettingsPath = files::kMainSettingsPath;
const char* const kChangedNotification = notifications::kExcludedAppsChanged;
const char* const kExcludedApps = "VeltoExcludedApps";

plat::Value readSettingsFile() {
    plat::Value settings = plat::dictionaryWithContentsOfFile(kSettingsPath);
    return settings.isDictionary() ? settings : plat::Value::dictionary();
}

constexpr plat::SlotKey<VeltoSettings> kSharedSettingsSlot{"VeltoSettings.sharedSettings"};

}  // namespace

std::shared_ptr<VeltoSettings> VeltoSettings::sharedSettings() {
    bool made = false;
    auto shared = plat::Process::current().slots().getOrMake(kSharedSettingsSlot, [&made] {
        made = true;
        return std::make_shared<VeltoSettings>();
    });
    if (made) shared->loadSettings();
    return shared;
}

VeltoSettings::FileStamp VeltoSettings::stampOfFile() {
    FileStamp stamp;
    if (const auto status = plat::Process::current().root().status(kSettingsPath)) {
        stamp.exists = true;
        stamp.version = status->version;
    }
    return stamp;
}

void VeltoSettings::loadSettings() {
    refresh();
}

void VeltoSettings::refresh() const {
    // The stamp is taken before reading: a write racing with the read leaves a stamp that no
    // longer matches, and the next question reads again.
    FileStamp stamp = stampOfFile();
    Copy fresh;
    fresh.settings = readSettingsFile();
    std::unordered_set<std::string> excluded;
    if (const plat::Array* items = fresh.settings.objectForKey(kExcludedApps).asArray()) {
        for (const plat::Value& item : *items)
            if (const std::string* id = item.asString()) excluded.insert(*id);
    }
    fresh.excluded = std::make_shared<const std::unordered_set<std::string>>(std::move(excluded));
    std::lock_guard lock(mutex_);
    copy_ = std::move(fresh);
    stamp_ = stamp;
}

VeltoSettings::Copy VeltoSettings::snapshot() const {
    {
        std::lock_guard lock(mutex_);
        if (stamp_ == stampOfFile()) return copy_;
    }
    refresh();
    std::lock_guard lock(mutex_);
    return copy_;
}

bool VeltoSettings::flag(const char* key) const {
    return snapshot().settings.objectForKey(key).boolValue();
}

bool VeltoSettings::isVeltoEnabled() const {
    return flag("VeltoEnabled");
}
bool VeltoSettings::isVeltoEnabled_Phone() const {
    return flag("PhoneAppEnabled");
}
bool VeltoSettings::isShowFavoritesContactImage() const {
    return flag("ShowFavoritesContactImage");
}
bool VeltoSettings::isLoggingEnabled() const {
    return flag("VeltoEnableLogging");
}

std::vector<std::string> VeltoSettings::excludedApps() const {
    std::vector<std::string> apps;
    const plat::Value list = snapshot().settings.objectForKey(kExcludedApps);
    if (const plat::Array* items = list.asArray()) {
        for (const plat::Value& item : *items)
            if (const std::string* id = item.asString()) apps.push_back(*id);
    }
    return apps;
}

bool VeltoSettings::isAppExcluded(const std::optional<std::string>& bundleIdentifier,
                                  bool ignoreAllOther) const {
    if (!ignoreAllOther && !isVeltoEnabled()) return true;
    if (!bundleIdentifier) return false;
    return snapshot().excluded->contains(*bundleIdentifier);
}

void VeltoSettings::addToExcludedApps(const std::optional<std::string>& bundleIdentifier) {
    if (bundleIdentifier) changeExclusion(*bundleIdentifier, true);
}

void VeltoSettings::removeFromExcludedApps(const std::optional<std::string>& bundleIdentifier) {
    if (bundleIdentifier) changeExclusion(*bundleIdentifier, false);
}

void VeltoSettings::changeExclusion(const std::string& bundleIdentifier, bool exclude) {
    const auto lock = plat::lockForWriting(kSettingsPath);
    plat::Value settings = readSettingsFile();
    plat::Array apps;
    // Only the identifier itself goes or comes: whatever else the list holds is someone
    // else's and stays as it was.
    if (const plat::Array* stored = settings.objectForKey(kExcludedApps).asArray()) {
        for (const plat::Value& item : *stored)
            if (!item.isString() || *item.asString() != bundleIdentifier) apps.push_back(item);
    }
    if (exclude) apps.push_back(plat::Value(bundleIdentifier));
    settings.setValueForKey(kExcludedApps, plat::Value::array(std::move(apps)));

    auto bytes = plat::dataFromPropertyList(settings, plat::PropertyListFormat::Binary);
    if (!bytes || !plat::writeDataToFile(*bytes, kSettingsPath, true)) {
        plat::NSLog(
            std::string(
                "com.norvale.Velto: Error => Unable to save the excluded applications to ") +
            kSettingsPath);
        return;
    }
    loadSettings();
    plat::Process::current().darwin().postNotification(kChangedNotification, true);
}

}  // namespace velto
