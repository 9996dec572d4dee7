#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "platform/foundation/value.h"
#include "platform/system/device_root.h"

namespace velto {

// The extension library's view of the main settings file, one shared instance per process.
// It keeps a parsed copy. loadSettings re-reads it; besides, every question first compares the
// file's identity (inode, size, modification time) with the one the copy was read from and
// re-reads a file that changed underneath, so a value the Settings application's own
// preference write stored a moment ago is never answered stale. Reloads may happen on a
// notification delivery thread while the main thread asks questions, so the copy is swapped
// under a lock.
//
// Keys it owns in the main settings file:
//   "VeltoEnabled"               the master switch
//   "PhoneAppEnabled"            pictures in Phone
//   "ShowFavoritesContactImage"  pictures in the Favorites list
//   "VeltoEnableLogging"         write the extension's log file
//   "VeltoExcludedApps"          array of bundle identifiers the extension stays out of
class VeltoSettings {
  public:
    static std::shared_ptr<VeltoSettings> sharedSettings();

    // Re-reads the main settings file (a missing or unreadable file reads as empty).
    void loadSettings();

    bool isVeltoEnabled() const;
    bool isVeltoEnabled_Phone() const;
    bool isShowFavoritesContactImage() const;
    bool isLoggingEnabled() const;

    // With ignoreAllOther, only the exclusion list counts. Without it, every application
    // counts as excluded while the master switch is off, since the extension then stays out
    // of all of them.
    bool isAppExcluded(const std::optional<std::string>& bundleIdentifier,
                       bool ignoreAllOther) const;
    // Persist the change in the main settings file (read afresh, so nothing another writer
    // stored is lost, and entries of the list that are not bundle identifiers stay where they
    // are), refresh the copy, and tell the extension with "com.norvale.veltoexcludedappschanged".
    // A nil identifier is ignored.
    void addToExcludedApps(const std::optional<std::string>& bundleIdentifier);
    void removeFromExcludedApps(const std::optional<std::string>& bundleIdentifier);
    std::vector<std::string> excludedApps() const;

    // The size of a contact picture, in points.
    double defaultWidth() const { return 60.0; }
    double defaultHeight() const { return 60.0; }

  private:
    // The file as last read, with its exclusion list as a set: a page of thousands of switches
    // asks once per row.
    struct Copy {
        plat::Value settings = plat::Value::dictionary();
        std::shared_ptr<const std::unordered_set<std::string>> excluded =
            std::make_shared<const std::unordered_set<std::string>>();
    };
    Copy snapshot() const;
    void refresh() const;
    bool flag(const char* key) const;
    void changeExclusion(const std::string& bundleIdentifier, bool exclude);

    struct FileStamp {
        bool exists = false;
        plat::FileVersion version;
        friend bool operator==(const FileStamp&, const FileStamp&) = default;
    };
    static FileStamp stampOfFile();

    mutable std::mutex mutex_;
    mutable Copy copy_;
    mutable FileStamp stamp_;
};

}  // namespace velto
