#include "platform/system/main_queue.h"

namespace plat {

void MainQueue::async(std::function<void()> block) {
    {
        std::lock_guard lock(mutex_);
        blocks_.push_back(std::move(block));
    }
    cv_.notify_all();
}

std::size_t MainQueue::drain() {
    std::size_t ran = 0;
    for (;;) {
        std::function<void()> block;
        {
            std::lock_guard lock(mutex_);
            if (blocks_.empty()) return ran;
            block = std::move(blocks_.front());
            blocks_.pop_front();
        }
        // Unlocked: a block may queue more work, which this same drain then runs.
        if (block) block();
        ++ran;
    }
}

std::size_t MainQueue::pending() const {
    std::lock_guard lock(mutex_);
    return blocks_.size();
}

bool MainQueue::waitForWork(std::chrono::milliseconds timeout) {
    std::unique_lock lock(mutex_);
    return cv_.wait_for(lock, timeout, [this] { return !blocks_.empty(); });
}

}  // namespace plat
