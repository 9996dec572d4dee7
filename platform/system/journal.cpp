#include "platform/system/journal.h"

namespace plat {

const char* kindName(JournalEntry::Kind kind) {
    using Kind = JournalEntry::Kind;
    switch (kind) {
        case Kind::Notification:
            return "notification";
        case Kind::LocalNotification:
            return "local-notification";
        case Kind::Log:
            return "log";
        case Kind::Request:
            return "request";
        case Kind::Shell:
            return "shell";
        case Kind::Insert:
            return "insert";
        case Kind::Remove:
            return "remove";
        case Kind::Reload:
            return "reload";
        case Kind::Present:
            return "present";
        case Kind::Dismiss:
            return "dismiss";
        case Kind::Navigation:
            return "navigation";
        case Kind::Synchronize:
            return "synchronize";
        case Kind::PreferenceWrite:
            return "preference-write";
    }
    return "unknown";
}

void Journal::append(JournalEntry entry) {
    std::lock_guard lock(mutex_);
    entries_.push_back(std::move(entry));
}

std::vector<JournalEntry> Journal::entries() const {
    std::lock_guard lock(mutex_);
    return entries_;
}

std::vector<JournalEntry> Journal::since(std::size_t mark) const {
    std::lock_guard lock(mutex_);
    if (mark >= entries_.size()) return {};
    return {entries_.begin() + static_cast<std::ptrdiff_t>(mark), entries_.end()};
}

std::size_t Journal::size() const {
    std::lock_guard lock(mutex_);
    return entries_.size();
}

void Journal::clear() {
    std::lock_guard lock(mutex_);
    entries_.clear();
}

void Journal::notification(const std::string& name) {
    JournalEntry entry;
    entry.kind = JournalEntry::Kind::Notification;
    entry.name = name;
    append(std::move(entry));
}

void Journal::log(const std::string& text) {
    JournalEntry entry;
    entry.kind = JournalEntry::Kind::Log;
    entry.text = text;
    append(std::move(entry));
}

}  // namespace plat
