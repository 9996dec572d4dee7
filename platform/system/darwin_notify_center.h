#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/foundation/value.h"

namespace plat {

class Journal;

// CFNotificationSuspensionBehavior.
enum class SuspensionBehavior { Drop = 1, Coalesce = 2, Hold = 3, DeliverImmediately = 4 };

class DarwinNotifyCenter;

// CFNotificationCallback: (center, observer, name, object, userInfo). Darwin notifications
// carry no object or user info; the last two are always null/nil.
using DarwinCallback =
    std::function<void(DarwinNotifyCenter* center, void* observer, const std::string& name,
                       const void* object, const Value& userInfo)>;

// The system-wide, name-only notify center (CFNotificationCenterGetDarwinNotifyCenter).
// Observers are called on a delivery thread of the center's own, never on the poster's
// thread, so code that must tolerate another thread is exercised for real.
class DarwinNotifyCenter {
  public:
    explicit DarwinNotifyCenter(Journal& journal);
    ~DarwinNotifyCenter();
    DarwinNotifyCenter(const DarwinNotifyCenter&) = delete;
    DarwinNotifyCenter& operator=(const DarwinNotifyCenter&) = delete;

    // CFNotificationCenterPostNotification from this process: journaled, then delivered.
    void postNotification(const std::string& name, bool deliverImmediately);
    // Another process posts: delivered to this process's observers, not journaled as ours.
    void postFromOtherProcess(const std::string& name);

    // CFNotificationCenterAddObserver. Answers a token for removeObserver.
    std::uint64_t addObserver(void* observer, DarwinCallback callback, const std::string& name,
                              SuspensionBehavior behavior);
    // Once this returns on any thread but the delivery thread, the observer's callback is
    // neither running nor called again, so its context may be freed right away.
    void removeObserver(std::uint64_t token);
    std::size_t observerCount(const std::string& name) const;

    // Blocks until every callback for the posts made so far has returned. From a callback (the
    // delivery thread itself) it returns at once rather than wait for itself.
    void waitUntilDelivered();

  private:
    struct Observer {
        std::uint64_t token;
        void* observer;
        DarwinCallback callback;
        std::string name;
        SuspensionBehavior behavior;
    };
    void deliveryLoop();
    void enqueue(const std::string& name);

    Journal& journal_;
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable idle_;
    std::vector<Observer> observers_;
    std::deque<std::string> pending_;
    std::uint64_t nextToken_ = 1;
    std::uint64_t running_ = 0;  // the observer being called back, 0 between calls
    bool delivering_ = false;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace plat
