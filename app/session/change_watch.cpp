#include "app/session/change_watch.h"

#include <sys/stat.h>

#include <algorithm>

namespace velto::app {

namespace fs = std::filesystem;

bool ChangeWatch::Stamp::operator==(const Stamp& other) const {
    return modified.tv_sec == other.modified.tv_sec && modified.tv_nsec == other.modified.tv_nsec &&
           size == other.size && inode == other.inode && mode == other.mode;
}

ChangeWatch::ChangeWatch(std::vector<fs::path> folders)
    : folders_(std::move(folders)), last_(look()) {}

ChangeWatch::Snapshot ChangeWatch::look() const {
    Snapshot snapshot;
    const auto stamp = [&snapshot](const fs::path& path) {
        struct stat info {};
        if (::lstat(path.c_str(), &info) != 0) return;
        snapshot[path] = Stamp{info.st_mtim, info.st_size, info.st_ino, info.st_mode};
    };
    for (const fs::path& folder : folders_) {
        stamp(folder);
        std::error_code error;
        // A tree that changes while it is walked ends the walk early; the next look sees the rest.
        for (fs::recursive_directory_iterator it(folder, error), end; !error && it != end;
             it.increment(error))
            stamp(it->path());
    }
    return snapshot;
}

std::vector<fs::path> ChangeWatch::changes() {
    Snapshot now = look();
    // A folder's own time changes with every file made or removed in it: the files tell more.
    std::vector<fs::path> changed;
    for (const auto& [path, stamp] : now) {
        const auto before = last_.find(path);
        if (!S_ISDIR(stamp.mode) && (before == last_.end() || !(before->second == stamp)))
            changed.push_back(path);
    }
    for (const auto& [path, stamp] : last_)
        if (!S_ISDIR(stamp.mode) && !now.count(path)) changed.push_back(path);
    last_ = std::move(now);
    std::sort(changed.begin(), changed.end());
    return changed;
}

}  // namespace velto::app
