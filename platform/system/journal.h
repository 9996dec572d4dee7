#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/foundation/value.h"

namespace plat {

// The observable things the bundle does, one type each. A reader takes the fields of the one
// kind it meets and nothing else; `kind` is the name the JSON and human views give it.
namespace journal {

// A Darwin notification posted.
struct Notification {
    static constexpr const char* kind = "notification";
    std::string name;
};

// An NSNotificationCenter post.
struct LocalNotification {
    static constexpr const char* kind = "local-notification";
    std::string name;
};

// An NSLog or library log line.
struct Log {
    static constexpr const char* kind = "log";
    std::string text;
};

// A message-center request. Containers are shared with the caller, as the objects would be.
struct Request {
    static constexpr const char* kind = "request";
    std::string center;
    std::string name;
    Value userInfo;
    Value reply;  // nil when none came
    bool replied() const { return !reply.isNil(); }
};

// popen or system, with the exact command line.
struct Shell {
    static constexpr const char* kind = "shell";
    std::string command;
};

// A row inserted into a page's list.
struct Insert {
    static constexpr const char* kind = "insert";
    std::string page;
    std::optional<std::int64_t> index;  // none once the row is no longer shown
    bool animated = false;
    std::string rowIdentifier;        // empty for a row without one
    std::weak_ptr<const Object> row;  // weak: the journal keeps no row alive
};

// A row removed from a page's list.
struct Remove {
    static constexpr const char* kind = "remove";
    std::string page;
    std::int64_t index = 0;
    bool animated = false;
};

// reloadSpecifier: (an index) or reloadSpecifiers (none).
struct Reload {
    static constexpr const char* kind = "reload";
    std::string page;
    std::optional<std::int64_t> index;
    bool animated = false;
};

// presentViewController:animated:completion:.
struct Present {
    static constexpr const char* kind = "present";
    std::string controllerClass;
    std::string title;
    bool animated = false;
};

// A presented controller went away; `how` names the call that dismissed it.
struct Dismiss {
    static constexpr const char* kind = "dismiss";
    std::string controllerClass;
    std::string how;
    bool animated = false;
};

// A push or pop by the host's navigation controller.
struct Navigation {
    static constexpr const char* kind = "navigation";
    std::string controllerClass;
    std::string action;  // "push" or "pop"
};

// NSUserDefaults synchronize.
struct Synchronize {
    static constexpr const char* kind = "synchronize";
};

// setPreferenceValue:specifier: stored a value in a defaults domain.
struct PreferenceWrite {
    static constexpr const char* kind = "preference-write";
    std::string domain;
    std::string key;
    Value value;
};

// setPreferenceValue:specifier: could not store a value: the page goes on as if it had (the
// switch snaps back at the next redraw), and only this record says why.
struct PreferenceWriteRefused {
    static constexpr const char* kind = "preference-write-refused";
    std::string domain;
    std::string key;
    std::string cause;
};

}  // namespace journal

using JournalEntry =
    std::variant<journal::Notification, journal::LocalNotification, journal::Log, journal::Request,
                 journal::Shell, journal::Insert, journal::Remove, journal::Reload,
                 journal::Present, journal::Dismiss, journal::Navigation, journal::Synchronize,
                 journal::PreferenceWrite, journal::PreferenceWriteRefused>;

// The JSON/human name of an entry's kind.
const char* kindName(const JournalEntry& entry);

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

    // The entries of one kind, in order.
    template <typename Event>
    std::vector<Event> entriesOf() const {
        std::lock_guard lock(mutex_);
        std::vector<Event> out;
        for (const JournalEntry& entry : entries_)
            if (const Event* event = std::get_if<Event>(&entry)) out.push_back(*event);
        return out;
    }

    // Shorthands used all over the platform.
    void notification(const std::string& name);
    void log(const std::string& text);

  private:
    mutable std::mutex mutex_;
    std::vector<JournalEntry> entries_;
};

}  // namespace plat
