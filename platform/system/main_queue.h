#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace plat {

// dispatch_get_main_queue(): blocks may be queued from any thread; the owner of the main
// thread (the host) runs them with drain().
class MainQueue {
  public:
    void async(std::function<void()> block);
    // Runs queued blocks, including those queued while draining, until none is left.
    // Answers how many ran.
    std::size_t drain();
    std::size_t pending() const;
    // Waits until a block is queued or the time is up; true when work is pending.
    bool waitForWork(std::chrono::milliseconds timeout);

  private:
    mutable std::mutex mutex_;
    std::condition_variable cv_;
    std::deque<std::function<void()>> blocks_;
};

}  // namespace plat
