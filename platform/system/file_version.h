#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "platform/system/device_root.h"

namespace plat {

// What was made of a file (a decoded image, a parsed property list), by device and path. An
// entry stands while the file keeps its version, so an edited file is read anew. Past `limit`
// entries it starts over, which is cheap next to reading them again. From any thread.
template <class T>
class FileVersionCache {
  public:
    explicit FileVersionCache(std::size_t limit) : limit_(limit) {}

    static std::string keyOf(const DeviceRoot& root, std::string_view devicePath) {
        return root.identity() + "\n" + std::string(devicePath);
    }

    std::optional<T> find(const std::string& key, const FileVersion& version) {
        std::lock_guard lock(mutex_);
        const auto found = entries_.find(key);
        if (found == entries_.end() || found->second.version != version) return std::nullopt;
        return found->second.value;
    }
    // Keep under the version seen before reading: if the file changed meanwhile, the next
    // find sees another version and it is read again.
    void keep(const std::string& key, const FileVersion& version, T value) {
        std::lock_guard lock(mutex_);
        if (entries_.size() >= limit_) entries_.clear();
        entries_[key] = Entry{version, std::move(value)};
    }

  private:
    struct Entry {
        FileVersion version;
        T value;
    };
    std::size_t limit_;
    std::mutex mutex_;
    std::map<std::string, Entry> entries_;
};

}  // namespace plat
