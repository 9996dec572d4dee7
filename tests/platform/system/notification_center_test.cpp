// How the process's parts talk: Darwin and local notifications, message-center requests, the
// main queue, and the journal that records what was sent.

#include "platform/system/notification_center.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <set>
#include <stdexcept>
#include <thread>

#include "platform/system/darwin_notify_center.h"
#include "platform/system/journal.h"
#include "platform/system/main_queue.h"
#include "platform/system/message_center.h"

namespace plat {
namespace {

constexpr auto kCoalesce = SuspensionBehavior::Coalesce;

DarwinCallback calling(std::function<void(DarwinNotifyCenter*)> body) {
    return [body](DarwinNotifyCenter* c, void*, const std::string&, const void*, const Value&) {
        body(c);
    };
}

class CentersTest : public ::testing::Test {
  protected:
    Journal journal;
    NotificationCenter local{journal};
    MessageCenters messages{journal};
    DarwinNotifyCenter darwin{journal};  // last: its delivery thread stops first
};

TEST_F(CentersTest, DarwinDeliversInOrderOnAThreadOfItsOwnAfterJournalingOwnPosts) {
    std::vector<std::string> heard;
    std::set<std::thread::id> threads;
    int context = 0;
    const DarwinCallback hear = [&](DarwinNotifyCenter*, void* observer, const std::string& name,
                                    const void* object, const Value& userInfo) {
        heard.push_back(name);
        threads.insert(std::this_thread::get_id());
        EXPECT_EQ(observer, &context);
        EXPECT_TRUE(object == nullptr && userInfo.isNil());
    };
    std::vector<std::size_t> journalSizeWhenDelivered;
    darwin.addObserver(&context, hear, "one", SuspensionBehavior::DeliverImmediately);
    darwin.addObserver(&context, hear, "two", SuspensionBehavior::Hold);
    darwin.addObserver(nullptr,
                       calling([&](auto*) { journalSizeWhenDelivered.push_back(journal.size()); }),
                       "mine", kCoalesce);

    std::vector<std::string> posted{"two"};
    std::thread([&] { darwin.postNotification("two", false); }).join();
    for (int i = 0; i < 30; ++i) {
        posted.push_back(i % 3 ? "two" : "one");
        darwin.postNotification(posted.back(), true);
    }
    darwin.postNotification("nobody", false);
    darwin.postFromOtherProcess("one");  // heard, but not journaled as ours
    posted.push_back("one");
    darwin.postNotification("mine", false);
    darwin.waitUntilDelivered();

    EXPECT_EQ(heard, posted);
    EXPECT_EQ(threads.size(), 1u);
    EXPECT_EQ(threads.count(std::this_thread::get_id()), 0u);
    EXPECT_EQ(journalSizeWhenDelivered, std::vector<std::size_t>{33});
    EXPECT_EQ(journal.size(), 33u);
}

// Removing an observer waits for its running callback; callbacks may add and remove observers
// and throw.
TEST_F(CentersTest, DarwinRemoveWaitsForARunningCallbackAndCallbacksMayChangeObserversAndThrow) {
    std::promise<void> entered, release;
    std::atomic<bool> finished{false};
    auto token = darwin.addObserver(nullptr, calling([&](auto*) {
                                        entered.set_value();
                                        release.get_future().wait();
                                        finished = true;
                                    }),
                                    "slow", kCoalesce);
    darwin.postNotification("slow", false);
    entered.get_future().wait();
    std::atomic<bool> callbackDoneWhenRemoveReturned{false};
    std::thread remover([&] {
        darwin.removeObserver(token);
        callbackDoneWhenRemoveReturned = finished.load();
    });
    // Give the remover every chance to reach removeObserver while the callback still runs.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    release.set_value();
    remover.join();
    EXPECT_TRUE(callbackDoneWhenRemoveReturned);

    int late = 0, removedBeforeItsTurn = 0;
    std::uint64_t self = 0, next = 0;
    self = darwin.addObserver(nullptr, calling([&](DarwinNotifyCenter* c) {
                                  c->removeObserver(self);
                                  c->removeObserver(next);
                                  c->addObserver(nullptr, calling([&](auto*) { ++late; }), "n",
                                                 kCoalesce);
                                  throw std::runtime_error("and then fails");
                              }),
                              "n", kCoalesce);
    next = darwin.addObserver(nullptr, calling([&](auto*) { ++removedBeforeItsTurn; }), "n",
                              kCoalesce);
    darwin.postNotification("n", false);
    darwin.waitUntilDelivered();
    EXPECT_EQ(removedBeforeItsTurn, 0);
    EXPECT_EQ(late, 0);  // added during that post: hears the next one
    darwin.postNotification("n", false);
    darwin.waitUntilDelivered();
    EXPECT_EQ(late, 1);
    EXPECT_EQ(darwin.observerCount("n"), 1u);

    // The fixture destroys the center with these still to deliver: it must stop cleanly.
    darwin.addObserver(nullptr, calling([](auto*) {}), "flood", kCoalesce);
    for (int i = 0; i < 1000; ++i)
        darwin.postNotification("flood", false);
}

TEST_F(CentersTest, LocalPostsAreDeliveredAtOnceAndJournaledToWeakObserversThatMayChange) {
    std::vector<Notification> seen;
    std::vector<std::string> everything;
    const auto poster = std::this_thread::get_id();
    local.addObserver({}, "Changed", [&](const Notification& n) {
        seen.push_back(n);
        EXPECT_EQ(std::this_thread::get_id(), poster);
    });
    local.addObserver({}, "", [&](const Notification& n) { everything.push_back(n.name); });
    const Value info = Value::dictionary({{"key", "value"}});
    local.postNotificationName("Changed", "sender", info);
    ASSERT_EQ(seen.size(), 1u);  // delivered before post returned
    local.postNotificationName("Other", nullptr, nullptr);

    EXPECT_EQ(seen[0].object, Value("sender"));
    EXPECT_TRUE(seen[0].userInfo.identical(info));
    EXPECT_EQ(everything, (std::vector<std::string>{"Changed", "Other"}));
    ASSERT_EQ(journal.size(), 2u);
    EXPECT_EQ(journal.entriesOf<plat::journal::LocalNotification>().at(1).name, "Other");

    // Observers are held weakly and may change while called.
    std::vector<std::string> calls;
    const auto note = [&](const char* call) { return [&, call](auto&) { calls.push_back(call); }; };
    auto owner = std::make_shared<int>(1);
    std::weak_ptr<int> watch = owner;
    local.addObserver(owner, "N", [&](const Notification&) {
        calls.push_back("owned");
        owner.reset();                  // the last outside reference goes mid-call...
        EXPECT_FALSE(watch.expired());  // ...but the center holds it until the call returns
    });
    std::uint64_t self = 0, next = 0;
    self = local.addObserver({}, "N", [&](const Notification&) {
        calls.push_back("changer");
        local.removeObserver(self);
        local.removeObserver(next);
        local.addObserver({}, "N", note("late"));                // hears the next post
        local.postNotificationName("Nested", nullptr, nullptr);  // delivered at once
    });
    next = local.addObserver({}, "N", note("removed"));
    local.addObserver({}, "N", note("ownerless"));
    local.addObserver({}, "Nested", note("nested"));

    local.postNotificationName("N", nullptr, nullptr);
    EXPECT_TRUE(watch.expired());
    local.postNotificationName("N", nullptr, nullptr);
    EXPECT_EQ(calls, (std::vector<std::string>{"owned", "changer", "nested", "ownerless",
                                               "ownerless", "late"}));
    EXPECT_EQ(local.observerCount("N"), 2u);
}

TEST_F(CentersTest, RequestsReachTheResponderFailuresGiveNilAndAnErrorNeverAnException) {
    std::string error;
    const auto send = [&](const std::string& message, const Value& info = Value()) {
        error.clear();
        return messages.centerNamed("com.example.center")
            ->sendMessageAndReceiveReplyName(message, info, &error);
    };
    EXPECT_TRUE(send("ping").isNil());  // nobody is listening
    EXPECT_FALSE(error.empty());

    std::string seen;
    messages.setResponder(
        [&](const std::string& center, const std::string& m, const Value& info) -> Value {
            seen = center + " " + m + " " + info.objectForKey("id").str();
            if (m == "odd") throw 42;
            if (m == "crash") throw std::runtime_error("extension crashed");
            if (m == "silent") return Value();
            return Value::dictionary({{"apps", Value::array({"com.example.app"})}});
        });
    EXPECT_EQ(send("getApps", Value::dictionary({{"id", "x"}})).objectForKey("apps"),
              Value::array({"com.example.app"}));
    EXPECT_EQ(seen, "com.example.center getApps x");
    EXPECT_TRUE(error.empty());
    const auto lastRequest = [&] { return journal.entriesOf<plat::journal::Request>().back(); };
    EXPECT_TRUE(lastRequest().replied());
    for (const char* message : {"silent", "odd", "crash"}) {
        EXPECT_TRUE(send(message).isNil()) << message;
        EXPECT_FALSE(error.empty()) << message;
        EXPECT_EQ(lastRequest().name, message);
        EXPECT_FALSE(lastRequest().replied()) << message;
    }
    EXPECT_NE(error.find("extension crashed"), std::string::npos) << error;
    auto center = messages.centerNamed("c");
    EXPECT_TRUE(center->sendMessageAndReceiveReplyName("crash", nullptr).isNil());  // no error
    EXPECT_NE(center, messages.centerNamed("c"));  // a new center object each time
}

TEST(MainQueueTest, BlocksFromAnyThreadRunInOrderOnTheDrainingThreadLaterOnesToo) {
    MainQueue queue;
    std::vector<std::string> order;
    const auto drainer = std::this_thread::get_id();
    const auto note = [&](const char* name) {
        order.push_back(name);
        EXPECT_EQ(std::this_thread::get_id(), drainer) << name;
    };
    std::thread([&] {
        queue.async([&] {
            note("outer");
            queue.async([&] { note("inner"); });
        });
        queue.async([&] { note("second"); });
    }).join();
    EXPECT_TRUE(order.empty());
    EXPECT_EQ(queue.drain(), 3u);  // a block queued while draining runs in the same drain
    EXPECT_EQ(order, (std::vector<std::string>{"outer", "second", "inner"}));
}

}  // namespace
}  // namespace plat
