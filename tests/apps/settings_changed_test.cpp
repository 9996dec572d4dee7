// The settings-changed path on real threads: the Darwin callback on the notify center's
// delivery thread, the in-process re-post, loadSettings there, one reload on the main queue
// through a weak reference. Also built and run under ThreadSanitizer (scripts/test --tsan).

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>

#include "contract/velto_settings.h"
#include "platform/prefs/runtime.h"
#include "tests/apps/apps_fixture.h"

using appstest::AppsDevice;
using appstest::Page;
using plat::Value;

namespace {

const char* const kChanged = "com.norvale.veltosettingschanged";

// Counts the reloads that reach live pages.
std::atomic<int> reloads{0};
class CountingPage : public Page {
  public:
    void reloadSpecifiers() override {
        ++reloads;
        Page::reloadSpecifiers();
    }
};

class SettingsChangedTest : public ::testing::Test {
  protected:
    SettingsChangedTest() { reloads = 0; }
    std::shared_ptr<CountingPage> openPage() {
        auto page = std::make_shared<CountingPage>();
        EXPECT_TRUE(page->initForContentSize({320, 568}));
        page->specifiers();
        page->viewDidLoad();
        return page;
    }
    std::size_t requests() const { return device.entries<plat::journal::Request>().size(); }
    // The Darwin notification from the extension's process, delivered and handed on.
    void settingsChangeArrives() {
        device.process().darwin().postFromOtherProcess(kChanged);
        device.process().darwin().waitUntilDelivered();
    }
    AppsDevice device;
};

TEST_F(SettingsChangedTest, NotificationRefetchesAndRebuildsOnTheMainQueue) {
    device.answerRecords(Value::array({appstest::record("com.alpha", "Alpha", false)}));
    auto page = openPage();
    const auto firstRow = page->specifiers()->objectAtIndex(1);
    const auto before = requests();

    settingsChangeArrives();
    // Nothing touched the rows off the main thread.
    EXPECT_EQ(reloads, 0);
    EXPECT_EQ(page->specifiers()->objectAtIndex(1), firstRow);
    EXPECT_EQ(device.process().mainQueue().drain(), 1u);
    EXPECT_EQ(reloads, 1);
    EXPECT_EQ(requests(), before + 1);
    EXPECT_NE(page->specifiers()->objectAtIndex(1), firstRow);
    EXPECT_EQ(device.notifications(), std::vector<std::string>{});  // the page posts nothing
}

TEST_F(SettingsChangedTest, EachLoadRegistersAgainAndNothingIsRemoved) {
    device.answerRecords(Value::array());
    auto& process = device.process();
    auto page = openPage();
    page->viewDidLoad();
    EXPECT_EQ(process.darwin().observerCount(kChanged), 2u);
    EXPECT_EQ(process.notificationCenter().observerCount(kChanged), 2u);
    std::weak_ptr<CountingPage> weak = page;
    page.reset();
    EXPECT_TRUE(weak.expired());  // the registrations do not keep the page alive
    EXPECT_EQ(process.darwin().observerCount(kChanged), 2u);
}

TEST_F(SettingsChangedTest, QueuedReloadOfAClosedPageDoesNothing) {
    device.answerRecords(Value::array({appstest::record("com.alpha", "Alpha", false)}));
    auto page = openPage();
    settingsChangeArrives();
    std::weak_ptr<CountingPage> weak = page;
    page.reset();
    EXPECT_TRUE(weak.expired());
    const auto before = requests();
    EXPECT_EQ(device.process().mainQueue().drain(), 1u);
    EXPECT_EQ(reloads, 0);
    EXPECT_EQ(requests(), before);
}

// One thread posts the notification 10,000 times while the main thread toggles 1,000 apps and
// drains the main queue, then closes the page with reloads still on their way.
TEST_F(SettingsChangedTest, StressTogglesAgainstNotifications) {
    constexpr int kApps = 1000, kPosts = 10000;
    Value records = Value::array();
    for (int i = 0; i < kApps; ++i)
        records.addObject(
            Value::dictionary({{"VeltoBundleIdentifier", "com.app" + std::to_string(i)},
                               {"VeltoFolderDisplayName", "App " + std::to_string(i)},
                               {"VeltoType", Value::boolean(i % 3 == 0)}}));
    // The page is opened on the full list; the ten thousand reloads after it get a short one,
    // so the run measures the threads and the store rather than decoding.
    const plat::Bytes full = *plat::archivedDataWithRootObject(records);
    const plat::Bytes brief =
        *plat::archivedDataWithRootObject(Value::array({records.objectAtIndex(1)}));
    std::atomic<int> asked{0};
    device.process().messageCenters().setResponder(
        [&](const std::string&, const std::string&, const Value&) {
            return Value::dictionary(
                {{"VeltoServiceMessageData", Value::data(asked++ == 0 ? full : brief)}});
        });
    auto settings = velto::VeltoSettings::sharedSettings();
    for (int i = 0; i < kApps; i += 2)
        settings->addToExcludedApps("com.app" + std::to_string(i));  // every even app to start

    auto& process = device.process();
    auto page = openPage();
    std::thread poster([&] {
        for (int i = 0; i < kPosts; ++i)
            process.darwin().postNotification(kChanged, true);
    });

    // The rows as first shown: a tap reaches the page through the row it was shown on.
    const auto shown = page->specifiers();
    std::set<std::string> expected;
    for (int i = 0; i < kApps; ++i) {
        const std::string id = "com.app" + std::to_string(i);
        // Odd apps start included and get excluded; even ones the other way round.
        if (i % 2) expected.insert(id);
        const auto row = AppsDevice::row(shown, id);
        ASSERT_TRUE(row) << id;
        page->setPreferenceValue(Value::boolean(true), row);
        process.mainQueue().drain();
    }
    const int reachedOpenPage = reloads;
    std::weak_ptr<CountingPage> closed = page;
    page.reset();
    poster.join();
    process.darwin().waitUntilDelivered();
    // A delivery may have held it a moment longer; queued reloads do not keep it alive.
    EXPECT_TRUE(closed.expired());
    process.mainQueue().drain();

    const auto stored = settings->excludedApps();
    EXPECT_EQ(std::set<std::string>(stored.begin(), stored.end()), expected);
    EXPECT_EQ(stored.size(), expected.size());  // no identifier twice
    EXPECT_GT(reachedOpenPage, 0);
    EXPECT_EQ(reloads, reachedOpenPage);  // nothing reached the closed page
    EXPECT_EQ(process.mainQueue().pending(), 0u);
}

}  // namespace
