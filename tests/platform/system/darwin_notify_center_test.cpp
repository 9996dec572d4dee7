#include "platform/system/darwin_notify_center.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>

#include "platform/system/journal.h"

namespace plat {
namespace {

// What one observer heard. Written on the delivery thread, read after waitUntilDelivered.
struct Heard {
    std::mutex mutex;
    std::vector<std::string> names;
    std::vector<std::thread::id> threads;
    std::vector<void*> observers;
    bool payloadEmpty = true;

    DarwinCallback callback() {
        return [this](DarwinNotifyCenter*, void* observer, const std::string& name,
                      const void* object, const Value& userInfo) {
            std::lock_guard lock(mutex);
            names.push_back(name);
            threads.push_back(std::this_thread::get_id());
            observers.push_back(observer);
            payloadEmpty = payloadEmpty && object == nullptr && userInfo.isNil();
        };
    }
};

DarwinCallback calling(std::function<void(DarwinNotifyCenter*)> body) {
    return [body](DarwinNotifyCenter* c, void*, const std::string&, const void*, const Value&) {
        body(c);
    };
}

class DarwinNotifyCenterTest : public ::testing::Test {
  protected:
    Journal journal;
    DarwinNotifyCenter center{journal};
};

TEST_F(DarwinNotifyCenterTest, DeliversInOrderOnOneThreadOfItsOwn) {
    Heard one;
    Heard two;
    int context = 0;
    center.addObserver(&context, one.callback(), "one", SuspensionBehavior::DeliverImmediately);
    center.addObserver(&context, one.callback(), "two", SuspensionBehavior::Coalesce);
    center.addObserver(nullptr, two.callback(), "two", SuspensionBehavior::Hold);

    std::vector<std::string> posted;
    std::thread other([&] { center.postNotification("two", false); });
    other.join();
    posted.push_back("two");
    for (int i = 0; i < 30; ++i) {
        posted.push_back(i % 3 ? "two" : "one");
        center.postNotification(posted.back(), true);
    }
    center.postNotification("nobody", false);
    center.waitUntilDelivered();

    EXPECT_EQ(one.names, posted);
    EXPECT_EQ(two.names.size(), 21u);
    EXPECT_TRUE(one.payloadEmpty);
    EXPECT_EQ(one.observers[0], &context);
    for (auto id : one.threads) {
        EXPECT_NE(id, std::this_thread::get_id());
        EXPECT_EQ(id, one.threads[0]);
    }
}

TEST_F(DarwinNotifyCenterTest, OwnPostsAreJournaledBeforeDeliveryOthersAreNot) {
    std::promise<std::size_t> journalSizeInCallback;
    center.addObserver(nullptr, calling([&](DarwinNotifyCenter*) {
                           journalSizeInCallback.set_value(journal.size());
                       }),
                       "mine", SuspensionBehavior::DeliverImmediately);
    Heard theirs;
    center.addObserver(nullptr, theirs.callback(), "theirs", SuspensionBehavior::Coalesce);

    center.postNotification("mine", true);
    center.postFromOtherProcess("theirs");
    center.waitUntilDelivered();

    EXPECT_EQ(journalSizeInCallback.get_future().get(), 1u);
    EXPECT_EQ(theirs.names.size(), 1u);
    auto entries = journal.entries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].kind, JournalEntry::Kind::Notification);
    EXPECT_EQ(entries[0].name, "mine");
}

TEST_F(DarwinNotifyCenterTest, CallbacksMayAddAndRemoveObserversAndThrow) {
    Heard late;
    Heard removedBeforeItsTurn;
    std::uint64_t self = 0;
    std::uint64_t next = 0;
    self = center.addObserver(nullptr, calling([&](DarwinNotifyCenter* c) {
                                  c->removeObserver(self);
                                  c->removeObserver(next);
                                  c->addObserver(nullptr, late.callback(), "n",
                                                 SuspensionBehavior::Coalesce);
                                  throw std::runtime_error("and then fails");
                              }),
                              "n", SuspensionBehavior::Coalesce);
    next = center.addObserver(nullptr, removedBeforeItsTurn.callback(), "n",
                              SuspensionBehavior::Coalesce);
    EXPECT_EQ(center.observerCount("n"), 2u);

    center.postNotification("n", false);
    center.waitUntilDelivered();
    EXPECT_TRUE(removedBeforeItsTurn.names.empty());
    EXPECT_TRUE(late.names.empty());  // added during that post: hears the next one
    center.postNotification("n", false);
    center.waitUntilDelivered();
    EXPECT_EQ(late.names.size(), 1u);
    EXPECT_EQ(center.observerCount("n"), 1u);
}

TEST_F(DarwinNotifyCenterTest, RemoveWaitsForARunningCallback) {
    std::promise<void> entered;
    std::promise<void> release;
    std::atomic<bool> finished{false};
    auto token = center.addObserver(nullptr, calling([&](DarwinNotifyCenter*) {
                                        entered.set_value();
                                        release.get_future().wait();
                                        finished = true;
                                    }),
                                    "slow", SuspensionBehavior::Coalesce);
    center.postNotification("slow", false);
    entered.get_future().wait();

    std::atomic<bool> callbackDoneWhenRemoveReturned{false};
    std::thread remover([&] {
        center.removeObserver(token);
        callbackDoneWhenRemoveReturned = finished.load();
    });
    // Give the remover every chance to reach removeObserver while the callback still runs.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    release.set_value();
    remover.join();
    EXPECT_TRUE(callbackDoneWhenRemoveReturned);
}

TEST(DarwinNotifyCenterLifetime, DestroyingWithPostsOutstandingStopsCleanly) {
    Journal journal;
    std::atomic<int> calls{0};
    {
        DarwinNotifyCenter center(journal);
        center.addObserver(nullptr, calling([&](DarwinNotifyCenter*) { ++calls; }), "n",
                           SuspensionBehavior::Coalesce);
        for (int i = 0; i < 1000; ++i)
            center.postNotification("n", false);
    }
    EXPECT_EQ(journal.size(), 1000u);
}

}  // namespace
}  // namespace plat
