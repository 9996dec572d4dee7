#include "platform/system/notification_center.h"

#include <gtest/gtest.h>

#include <thread>

#include "platform/system/journal.h"

namespace plat {
namespace {

class NotificationCenterTest : public ::testing::Test {
  protected:
    Journal journal;
    NotificationCenter center{journal};
};

TEST_F(NotificationCenterTest, DeliversSynchronouslyWithPayloadAndJournalsEveryPost) {
    std::vector<Notification> seen;
    std::thread::id thread;
    center.addObserver({}, "Changed", [&](const Notification& n) {
        seen.push_back(n);
        thread = std::this_thread::get_id();
    });
    std::vector<std::string> everything;
    center.addObserver({}, "", [&](const Notification& n) { everything.push_back(n.name); });
    Value info = Value::dictionary({{"key", "value"}});
    center.postNotificationName("Changed", "sender", info);
    center.postNotificationName("Other", nullptr, nullptr);

    ASSERT_EQ(seen.size(), 1u);  // delivered before post returned
    EXPECT_EQ(thread, std::this_thread::get_id());
    EXPECT_EQ(seen[0].object, Value("sender"));
    EXPECT_TRUE(seen[0].userInfo.identical(info));
    EXPECT_EQ(everything, (std::vector<std::string>{"Changed", "Other"}));
    auto entries = journal.entries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[1].kind, JournalEntry::Kind::LocalNotification);
    EXPECT_EQ(entries[1].name, "Other");
}

TEST_F(NotificationCenterTest, GoneObserversAreSkippedAndKeptAliveWhileCalled) {
    auto owner = std::make_shared<int>(1);
    std::weak_ptr<int> watch = owner;
    int ownedCalls = 0;
    int ownerlessCalls = 0;
    center.addObserver(owner, "N", [&](const Notification&) {
        ++ownedCalls;
        owner.reset();                  // the last outside reference goes mid-call...
        EXPECT_FALSE(watch.expired());  // ...but the center holds it until the call returns
    });
    center.addObserver({}, "N", [&](const Notification&) { ++ownerlessCalls; });

    center.postNotificationName("N", nullptr, nullptr);
    EXPECT_TRUE(watch.expired());
    EXPECT_EQ(center.observerCount("N"), 1u);
    center.postNotificationName("N", nullptr, nullptr);
    EXPECT_EQ(ownedCalls, 1);
    EXPECT_EQ(ownerlessCalls, 2);
}

TEST_F(NotificationCenterTest, HandlersMayChangeTheObserversWhileCalled) {
    std::vector<std::string> calls;
    std::uint64_t first = 0;
    std::uint64_t second = 0;
    first = center.addObserver({}, "N", [&](const Notification&) {
        calls.push_back("first");
        center.removeObserver(first);
        center.removeObserver(second);
        center.addObserver({}, "N", [&](const Notification&) { calls.push_back("late"); });
        center.postNotificationName("Nested", nullptr, nullptr);  // delivered at once
    });
    second = center.addObserver({}, "N", [&](const Notification&) { calls.push_back("second"); });
    center.addObserver({}, "Nested", [&](const Notification&) { calls.push_back("nested"); });

    center.postNotificationName("N", nullptr, nullptr);
    center.postNotificationName("N", nullptr, nullptr);
    EXPECT_EQ(calls, (std::vector<std::string>{"first", "nested", "late"}));
}

}  // namespace
}  // namespace plat
