// The page host in-process: navigation lifetimes and the restart of the user interface.

#include "app/session.h"

#include <gtest/gtest.h>

#include "app/step_error.h"
#include "app/ui_restart.h"
#include "device/device_init.h"
#include "tests/app/page_fixtures.h"
#include "tests/support/program_run.h"
#include "tests/support/test_device.h"

namespace apptest {
namespace {

using velto::app::Session;

class SessionTest : public ::testing::Test {
  protected:
    void SetUp() override {
        velto::device::initDevice(device_, {}, testsupport::sourceDir() / "resources");
    }

    ScratchFolder scratch_;
    std::string device_ = scratch_ / "device";
};

TEST_F(SessionTest, KillingBackboarddRestartsTheInterfaceWithoutReachingTheHost) {
    Session session(device_);
    std::weak_ptr<plat::ListController> before = session.topPage();
    const std::size_t centers = session.process().messageCenters().centersMade();
    session.takeJournal();

    EXPECT_EQ(session.process().shell().system("killall backboardd"), 0);
    session.settle();

    EXPECT_TRUE(before.expired());
    ASSERT_NE(session.topPage(), nullptr);
    EXPECT_EQ(session.depth(), 1u);
    EXPECT_EQ(session.restarts(), 1);
    // A new Settings application: the root page made its message center afresh.
    EXPECT_EQ(session.process().messageCenters().centersMade(), centers + 1);
    const auto journal = session.takeJournal();
    ASSERT_FALSE(journal.empty());
    EXPECT_EQ(journal[0].kind, plat::JournalEntry::Kind::Shell);
    EXPECT_EQ(journal[0].text, "killall backboardd");
}

TEST(UiRestart, OnlyCommandsThatEndTheInterfaceRestartItAndNoKillallReachesTheHost) {
    int restarts = 0;
    const auto intercept = [&](const std::string& command) {
        return velto::app::interceptRestart(command, [&] { ++restarts; });
    };
    for (const char* command : {"killall backboardd", "/usr/bin/killall -9 backboardd",
                                "killall 'SpringBoard'", "sbreload"}) {
        const auto result = intercept(command);
        ASSERT_TRUE(result) << command;
        EXPECT_EQ(result->status, 0) << command;
    }
    EXPECT_EQ(restarts, 4);

    const auto other = intercept("killall Preferences");
    ASSERT_TRUE(other);
    EXPECT_NE(other->status, 0);
    EXPECT_FALSE(intercept("'/usr/bin/dpkg-query' '-Wf' '${Version}' 'com.norvale.velto2'"));
    EXPECT_EQ(restarts, 4);
}

TEST_F(SessionTest, APoppedPageIsReleased) {
    writeRootList(device_, {{"Again", "VeltoSettingsController"}});
    Session session(device_);
    session.open(session.topPage()->heldSpecifiers()->objectAtIndex(3));
    ASSERT_EQ(session.depth(), 2u);
    std::weak_ptr<plat::ListController> pushed = session.topPage();
    session.back();
    EXPECT_TRUE(pushed.expired());
    EXPECT_EQ(session.depth(), 1u);
    EXPECT_THROW(session.back(), velto::app::StepError);
}

TEST_F(SessionTest, AFailedOpenPushesNothing) {
    writeRootList(device_, {{"Someday", "SomedaySettingsController"}});
    Session session(device_);
    session.takeJournal();
    EXPECT_THROW(session.open(session.topPage()->heldSpecifiers()->objectAtIndex(3)),
                 velto::app::StepError);
    EXPECT_EQ(session.depth(), 1u);
    EXPECT_TRUE(session.takeJournal().empty());
}

}  // namespace
}  // namespace apptest
