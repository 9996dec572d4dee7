#include "app/serve/event_hub.h"

namespace velto::app {

void EventHub::publish(const std::string& name, const std::string& data) {
    {
        std::lock_guard lock(mutex_);
        events_.push_back(Event{++lastId_, name, data});
        if (name == "page") lastPage_ = lastId_;
        if (events_.size() > kKept) events_.pop_front();
    }
    published_.notify_all();
}

std::uint64_t EventHub::startFor(std::optional<std::uint64_t> lastSeen) const {
    std::lock_guard lock(mutex_);
    const std::uint64_t oldest = events_.empty() ? lastId_ + 1 : events_.front().id;
    if (lastSeen && *lastSeen + 1 >= oldest && *lastSeen <= lastId_) return *lastSeen;
    return lastPage_ ? lastPage_ - 1 : lastId_;
}

std::optional<std::string> EventHub::next(std::uint64_t& cursor, std::chrono::milliseconds wait) {
    std::unique_lock lock(mutex_);
    published_.wait_for(lock, wait, [&] { return closed_ || lastId_ > cursor; });
    if (closed_) return std::nullopt;
    std::string text;
    for (const Event& event : events_) {
        if (event.id <= cursor) continue;
        text += "id: " + std::to_string(event.id) + "\nevent: " + event.name +
                "\ndata: " + event.data + "\n\n";
        cursor = event.id;
    }
    // Fell behind the oldest kept: what was lost is lost, the stream goes on from now.
    cursor = std::max(cursor, lastId_);
    return text;
}

bool EventHub::join() {
    std::lock_guard lock(mutex_);
    if (closed_ || streams_ >= kMaxStreams) return false;
    ++streams_;
    return true;
}

void EventHub::leave() {
    std::lock_guard lock(mutex_);
    --streams_;
}

void EventHub::close() {
    {
        std::lock_guard lock(mutex_);
        closed_ = true;
    }
    published_.notify_all();
}

}  // namespace velto::app
