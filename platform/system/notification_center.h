#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/foundation/value.h"

namespace plat {

class Journal;

struct Notification {
    std::string name;
    Value object;
    Value userInfo;
};

// NSNotificationCenter defaultCenter: in-process, synchronous on the posting thread.
// Observers are held weakly (a gone observer is skipped, as with modern Foundation).
class NotificationCenter {
  public:
    using Handler = std::function<void(const Notification&)>;

    explicit NotificationCenter(Journal& journal) : journal_(journal) {}

    // addObserver:selector:name:object:. An empty observer pointer means "no owner": the
    // handler lives until removed.
    std::uint64_t addObserver(std::weak_ptr<void> observer, const std::string& name,
                              Handler handler);
    void removeObserver(std::uint64_t token);
    // postNotificationName:object:userInfo:.
    void postNotificationName(const std::string& name, Value object, Value userInfo);
    std::size_t observerCount(const std::string& name) const;

  private:
    struct Entry {
        std::uint64_t token;
        std::weak_ptr<void> observer;
        bool owned;
        std::string name;
        Handler handler;
    };
    Journal& journal_;
    mutable std::mutex mutex_;
    std::vector<Entry> entries_;
    std::uint64_t nextToken_ = 1;
};

}  // namespace plat
