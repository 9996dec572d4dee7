#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace plat {

// Whether two stats are of the same version of a file: its identity, size and modification
// time.
inline bool sameFileVersion(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
           a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

// What was made of a file (a decoded image, a parsed property list), by host path. An entry
// stands while the file keeps its version, so an edited file is read anew. Past `limit`
// entries it starts over, which is cheap next to reading them again. From any thread.
template <class T>
class FileVersionCache {
  public:
    explicit FileVersionCache(std::size_t limit) : limit_(limit) {}

    std::optional<T> find(const std::string& host, const struct stat& info) {
        std::lock_guard lock(mutex_);
        const auto found = entries_.find(host);
        if (found == entries_.end() || !sameFileVersion(found->second.info, info))
            return std::nullopt;
        return found->second.value;
    }
    // Keep under the version stat'ed before reading: if the file changed meanwhile, the next
    // find sees another version and it is read again.
    void keep(const std::string& host, const struct stat& info, T value) {
        std::lock_guard lock(mutex_);
        if (entries_.size() >= limit_) entries_.clear();
        entries_[host] = Entry{info, std::move(value)};
    }

  private:
    struct Entry {
        struct stat info;
        T value;
    };
    std::size_t limit_;
    std::mutex mutex_;
    std::map<std::string, Entry> entries_;
};

}  // namespace plat
