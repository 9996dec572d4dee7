#include "platform/system/darwin_notify_center.h"

#include <cstdio>
#include <exception>

#include "platform/system/journal.h"

namespace plat {

DarwinNotifyCenter::DarwinNotifyCenter(Journal& journal) : journal_(journal) {
    thread_ = std::thread(&DarwinNotifyCenter::deliveryLoop, this);
}

DarwinNotifyCenter::~DarwinNotifyCenter() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
        // Posts not yet delivered die with the process, as they would on a device.
        pending_.clear();
    }
    wake_.notify_all();
    idle_.notify_all();
    if (thread_.joinable()) thread_.join();
}

void DarwinNotifyCenter::postNotification(const std::string& name, bool deliverImmediately) {
    // Every post is delivered as it comes; the flag only matters to suspended applications,
    // and Settings is in front whenever its bundle runs.
    (void)deliverImmediately;
    journal_.notification(name);
    enqueue(name);
}

void DarwinNotifyCenter::postFromOtherProcess(const std::string& name) {
    enqueue(name);
}

void DarwinNotifyCenter::enqueue(const std::string& name) {
    {
        std::lock_guard lock(mutex_);
        if (stopping_) return;
        pending_.push_back(name);
    }
    wake_.notify_one();
}

std::uint64_t DarwinNotifyCenter::addObserver(void* observer, DarwinCallback callback,
                                              const std::string& name,
                                              SuspensionBehavior behavior) {
    std::lock_guard lock(mutex_);
    std::uint64_t token = nextToken_++;
    observers_.push_back(Observer{token, observer, std::move(callback), name, behavior});
    return token;
}

void DarwinNotifyCenter::removeObserver(std::uint64_t token) {
    std::unique_lock lock(mutex_);
    std::erase_if(observers_, [token](const Observer& o) { return o.token == token; });
    // From the delivery thread (a callback removing itself or another) there is nothing to
    // wait for: the callback that is running is the caller.
    if (std::this_thread::get_id() == thread_.get_id()) return;
    idle_.wait(lock, [&] { return running_ != token; });
}

std::size_t DarwinNotifyCenter::observerCount(const std::string& name) const {
    std::lock_guard lock(mutex_);
    std::size_t count = 0;
    for (const auto& o : observers_)
        if (o.name == name) ++count;
    return count;
}

void DarwinNotifyCenter::waitUntilDelivered() {
    if (std::this_thread::get_id() == thread_.get_id()) return;
    std::unique_lock lock(mutex_);
    idle_.wait(lock, [this] { return stopping_ || (pending_.empty() && !delivering_); });
}

void DarwinNotifyCenter::deliveryLoop() {
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_.wait(lock, [this] { return stopping_ || !pending_.empty(); });
        if (stopping_) break;
        std::string name = std::move(pending_.front());
        pending_.pop_front();
        delivering_ = true;

        // Tokens only: callbacks add and remove observers, and one removed by an earlier
        // callback of this same post must not be called.
        std::vector<std::uint64_t> tokens;
        for (const auto& o : observers_)
            if (o.name == name) tokens.push_back(o.token);

        for (std::uint64_t token : tokens) {
            const Observer* found = nullptr;
            for (const auto& o : observers_)
                if (o.token == token) found = &o;
            if (!found || stopping_) continue;
            DarwinCallback callback = found->callback;
            void* observer = found->observer;
            running_ = token;
            lock.unlock();
            try {
                callback(this, observer, name, nullptr, Value());
            } catch (const std::exception& e) {
                // A callback has no one to report to; the delivery thread must live on.
                std::fprintf(stderr, "Darwin notification %s: observer threw: %s\n", name.c_str(),
                             e.what());
            } catch (...) {
                std::fprintf(stderr, "Darwin notification %s: observer threw\n", name.c_str());
            }
            lock.lock();
            running_ = 0;
            idle_.notify_all();
        }

        delivering_ = false;
        if (pending_.empty()) idle_.notify_all();
    }
    delivering_ = false;
    idle_.notify_all();
}

}  // namespace plat
