#include "platform/system/main_queue.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace plat {
namespace {

using namespace std::chrono_literals;

TEST(MainQueueTest, BlocksFromOtherThreadsRunInOrderWhenTheMainThreadDrains) {
    MainQueue queue;
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    EXPECT_FALSE(queue.waitForWork(1ms));
    std::thread producer([&] {
        for (int i = 0; i < 3; ++i)
            queue.async([&order, &threads, i] {
                order.push_back(i);
                threads.push_back(std::this_thread::get_id());
            });
    });
    EXPECT_TRUE(queue.waitForWork(60s));
    producer.join();
    EXPECT_EQ(queue.pending(), 3u);
    EXPECT_TRUE(order.empty());

    EXPECT_EQ(queue.drain(), 3u);
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
    for (auto id : threads)
        EXPECT_EQ(id, std::this_thread::get_id());
    EXPECT_EQ(queue.pending(), 0u);
}

TEST(MainQueueTest, DrainAlsoRunsBlocksQueuedWhileDraining) {
    MainQueue queue;
    std::vector<std::string> order;
    queue.async([&] {
        order.push_back("outer");
        queue.async([&] {
            order.push_back("inner");
            queue.async([&] { order.push_back("innermost"); });
        });
    });
    queue.async([&] { order.push_back("second"); });
    EXPECT_EQ(queue.drain(), 4u);
    EXPECT_EQ(order, (std::vector<std::string>{"outer", "second", "inner", "innermost"}));
}

}  // namespace
}  // namespace plat
