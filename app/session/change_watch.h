#pragma once

#include <sys/types.h>

#include <ctime>
#include <filesystem>
#include <map>
#include <vector>

namespace velto::app {

// Notices files created, changed or removed under some folders (sub-folders included; a folder
// may not exist yet) by comparing what stat says of each file between two looks. Polling rather
// than inotify: a folder that does not exist yet needs no watch on its parent, a tree needs no
// watch per sub-folder, editors that replace a file by renaming another over it are seen the
// same way as those that write in place, and folders shared from another machine (a container's
// bind mount of a Mac's folder) change without any inotify event.
class ChangeWatch {
  public:
    explicit ChangeWatch(std::vector<std::filesystem::path> folders);

    // The files whose state differs from the previous look (or from construction), sorted.
    std::vector<std::filesystem::path> changes();

  private:
    struct Stamp {
        timespec modified{};
        off_t size = 0;
        ino_t inode = 0;
        mode_t mode = 0;
        bool operator==(const Stamp& other) const;
    };
    using Snapshot = std::map<std::filesystem::path, Stamp>;
    Snapshot look() const;

    std::vector<std::filesystem::path> folders_;
    Snapshot last_;
};

}  // namespace velto::app
