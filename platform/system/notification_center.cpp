#include "platform/system/notification_center.h"

#include <algorithm>

#include "platform/system/journal.h"

namespace plat {

namespace {

// An empty weak_ptr (no owner given) shares no control block with anything; an expired one
// still has its owner's.
bool hasOwner(const std::weak_ptr<void>& observer) {
    std::weak_ptr<void> none;
    return observer.owner_before(none) || none.owner_before(observer);
}

}  // namespace

std::uint64_t NotificationCenter::addObserver(std::weak_ptr<void> observer, const std::string& name,
                                              Handler handler) {
    std::lock_guard lock(mutex_);
    // Forget observers that went away, so a long-lived center does not grow without bound.
    std::erase_if(entries_, [](const Entry& e) { return e.owned && e.observer.expired(); });
    bool owned = hasOwner(observer);
    std::uint64_t token = nextToken_++;
    entries_.push_back(Entry{token, std::move(observer), owned, name, std::move(handler)});
    return token;
}

void NotificationCenter::removeObserver(std::uint64_t token) {
    std::lock_guard lock(mutex_);
    std::erase_if(entries_, [token](const Entry& e) { return e.token == token; });
}

void NotificationCenter::postNotificationName(const std::string& name, Value object,
                                              Value userInfo) {
    journal_.append(journal::LocalNotification{name});

    // An observer registered for no name hears every notification, as with a nil name.
    std::vector<std::uint64_t> tokens;
    {
        std::lock_guard lock(mutex_);
        for (const auto& e : entries_)
            if (e.name == name || e.name.empty()) tokens.push_back(e.token);
    }

    const Notification notification{name, std::move(object), std::move(userInfo)};
    for (std::uint64_t token : tokens) {
        Handler handler;
        std::shared_ptr<void> keepAlive;
        {
            // Looked up again: an earlier handler may have removed this one.
            std::lock_guard lock(mutex_);
            auto it = std::find_if(entries_.begin(), entries_.end(),
                                   [token](const Entry& e) { return e.token == token; });
            if (it == entries_.end()) continue;
            if (it->owned) {
                keepAlive = it->observer.lock();
                if (!keepAlive) continue;
            }
            handler = it->handler;
        }
        // The observer stays alive while its handler runs, even if the last other owner lets
        // go of it meanwhile.
        if (handler) handler(notification);
    }
}

std::size_t NotificationCenter::observerCount(const std::string& name) const {
    std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(std::count_if(
        entries_.begin(), entries_.end(),
        [&](const Entry& e) { return e.name == name && (!e.owned || !e.observer.expired()); }));
}

}  // namespace plat
