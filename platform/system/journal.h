#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/value.h"

namespace plat {

// One observable thing the bundle did, in the order it happened.
struct JournalEntry {
    enum class Kind {
        Notification,       // Darwin notification posted (name)
        LocalNotification,  // NSNotificationCenter post (name)
        Log,                // NSLog or library log line (text = the message)
        Request,            // message-center request (name, text = center, value = user info,
                            // reply)
        Shell,              // popen/system (text = the exact command line)
        Insert,             // list insert (index, animated, row, text = the row's identifier)
        Remove,             // list removal (index, animated)
        Reload,             // reloadSpecifier (index) / reloadSpecifiers (no index)
        Present,            // presentViewController (name = class, text = title)
        Dismiss,            // dismissal (name = class, text = how)
        Navigation,         // push/pop by the host (name = class, text = "push"/"pop")
        Synchronize,        // NSUserDefaults synchronize
        PreferenceWrite,    // setPreferenceValue:specifier: stored a value (name = domain, text =
                            // key, value = what was stored)
    };

    Kind kind = Kind::Log;
    std::string name;
    std::string text;
    std::optional<std::int64_t> index;
    bool animated = false;
    bool replied = false;
    // What a request sent or a write stored; containers are shared with the caller, as the
    // objects themselves would be.
    Value value;
    Value reply;  // a request's reply (nil when none came)
    // The row an insertion added; weak, so that the journal keeps no row alive.
    std::weak_ptr<const Object> row;
};

// The JSON/human name of a kind: "notification", "local-notification", "log", "request",
// "shell", "insert", "remove", "reload", "present", "dismiss", "navigation", "synchronize",
// "preference-write".
const char* kindName(JournalEntry::Kind kind);

// The per-process record of everything observable. Thread-safe: the Darwin delivery thread
// logs too.
class Journal {
  public:
    void append(JournalEntry entry);
    std::vector<JournalEntry> entries() const;
    // Entries from position `mark` on (a mark is a size() taken earlier).
    std::vector<JournalEntry> since(std::size_t mark) const;
    std::size_t size() const;
    void clear();

    // Shorthands used all over the platform.
    void notification(const std::string& name);
    void log(const std::string& text);

  private:
    mutable std::mutex mutex_;
    std::vector<JournalEntry> entries_;
};

}  // namespace plat
