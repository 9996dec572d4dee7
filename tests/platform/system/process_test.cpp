#include "platform/system/process.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

#include "tests/platform/system/temp_folder.h"

namespace plat {
namespace {

Process::Options quiet() {
    return Process::Options{"Preferences", false};
}

TEST(ProcessTest, ScopesNestAndTheCurrentProcessIsSeenFromEveryThread) {
    testing::TempFolder host;
    Process outer(host.path() / "outer", quiet());
    Process inner(host.path() / "inner", quiet());
    EXPECT_THROW(Process::current(), std::logic_error);
    {
        ProcessScope a(outer);
        {
            ProcessScope b(inner);
            EXPECT_EQ(&Process::current(), &inner);
            Process* seenOnWorker = nullptr;
            std::thread([&] { seenOnWorker = Process::tryCurrent(); }).join();
            EXPECT_EQ(seenOnWorker, &inner);
        }
        EXPECT_EQ(&Process::current(), &outer);
        // Observers on the delivery thread look their process up too.
        Process* seenInCallback = nullptr;
        outer.darwin().addObserver(
            nullptr,
            [&](DarwinNotifyCenter*, void*, const std::string&, const void*, const Value&) {
                seenInCallback = Process::tryCurrent();
            },
            "n", SuspensionBehavior::DeliverImmediately);
        outer.darwin().postNotification("n", true);
        outer.darwin().waitUntilDelivered();
        EXPECT_EQ(seenInCallback, &outer);
    }
    EXPECT_EQ(Process::tryCurrent(), nullptr);
}

TEST(ProcessTest, AMissingRootIsCreatedAFileInTheWayIsRefused) {
    testing::TempFolder host;
    Process process(host.path() / "not/yet/there", quiet());
    EXPECT_TRUE(std::filesystem::is_directory(host.path() / "not/yet/there"));
    host.write("plain-file", "x");
    EXPECT_THROW(Process(host.path() / "plain-file", quiet()), std::system_error);
}

TEST(ProcessTest, ServicesShareTheProcessJournal) {
    testing::TempFolder host;
    Process process(host.path(), quiet());
    process.logger().log("logged");
    process.notificationCenter().postNotificationName("Local", nullptr, nullptr);
    process.darwin().postNotification("com.example.darwin", false);
    process.messageCenters().centerNamed("c")->sendMessageAndReceiveReplyName("m", nullptr);
    process.shell().system("true");

    std::vector<std::string> kinds;
    for (const auto& e : process.journal().entries())
        kinds.push_back(kindName(e.kind));
    EXPECT_EQ(kinds, (std::vector<std::string>{"log", "local-notification", "notification",
                                               "request", "shell"}));
}

TEST(ProcessTest, ADestroyedProcessStopsBeingCurrent) {
    testing::TempFolder host;
    auto process = std::make_unique<Process>(host.path(), quiet());
    ProcessScope scope(*process);
    process.reset();
    EXPECT_EQ(Process::tryCurrent(), nullptr);
}

}  // namespace
}  // namespace plat
