#include "platform/system/journal.h"

namespace plat {

const char* kindName(const JournalEntry& entry) {
    return std::visit([](const auto& event) { return event.kind; }, entry);
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
    append(journal::Notification{name});
}

void Journal::log(const std::string& text) {
    append(journal::Log{text});
}

}  // namespace plat
