#include <algorithm>
#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "contract/velto_settings.h"
#include "tests/contract/contract_fixture.h"

using contracttest::kChanged;
using contracttest::kMainFile;
using plat::Value;
using velto::VeltoSettings;

namespace {

class VeltoSettingsTest : public contracttest::ContractTest {
  protected:
    struct Flags {
        bool enabled, phone, favorites, logging;
        bool operator==(const Flags&) const = default;
    };
    static Flags flags(const VeltoSettings& s) {
        return {s.isVeltoEnabled(), s.isVeltoEnabled_Phone(), s.isShowFavoritesContactImage(),
                s.isLoggingEnabled()};
    }
    static constexpr Flags kAllOff{false, false, false, false};

    void writeMain(Value settings, bool xml = false) {
        device.writePlist(kMainFile, settings, xml);
    }
    std::vector<std::string> storedExclusions() {
        std::vector<std::string> ids;
        Value list = device.readPlist(kMainFile).objectForKey("VeltoExcludedApps");
        EXPECT_TRUE(list.isArray());
        for (std::size_t i = 0; i < list.count(); ++i)
            ids.push_back(list.objectAtIndex(i).str());
        return ids;
    }
    std::size_t changedPosts() {
        std::size_t n = 0;
        for (auto& name : device.notifications())
            n += name == kChanged;
        return n;
    }
};

TEST_F(VeltoSettingsTest, FlagsFollowTheFileAndAnythingUnreadableReadsAllOff) {
    auto settings = VeltoSettings::sharedSettings();
    EXPECT_EQ(flags(*settings), kAllOff);  // no file at all
    EXPECT_TRUE(settings->excludedApps().empty());

    // Each key on its own, stored with the kinds of value boolValue accepts.
    writeMain(Value::dictionary({{"VeltoEnabled", Value::boolean(true)},
                                 {"PhoneAppEnabled", Value::integer(2)},
                                 {"ShowFavoritesContactImage", "YES"},
                                 {"VeltoEnableLogging", Value::boolean(false)}}));
    settings->loadSettings();
    EXPECT_EQ(flags(*settings), (Flags{true, true, true, false}));

    // The same options written by a tool that prefers XML are read alike.
    writeMain(Value::dictionary({{"VeltoEnableLogging", Value::boolean(true)}}), true);
    settings->loadSettings();
    EXPECT_EQ(flags(*settings), (Flags{false, false, false, true}));

    // Values of the wrong kind answer false rather than trip the reader.
    writeMain(Value::dictionary({{"VeltoEnabled", Value::dictionary({{"on", "1"}})},
                                 {"PhoneAppEnabled", Value::array({Value::boolean(true)})},
                                 {"VeltoExcludedApps", "com.example.notalist"}}));
    settings->loadSettings();
    EXPECT_EQ(flags(*settings), kAllOff);
    EXPECT_TRUE(settings->excludedApps().empty());

    const Value allOn = Value::dictionary(
        {{"VeltoEnabled", Value::boolean(true)}, {"VeltoEnableLogging", Value::boolean(true)}});
    const std::vector<std::pair<const char*, std::function<void()>>> unreadable = {
        {"xml that is no property list",
         [&] { device.writeText(kMainFile, "<?xml version=\"1.0\"?><html><body/></html>"); }},
        {"truncated binary", [&] { device.writeText(kMainFile, "bplist00\xd1\x01\x02"); }},
        {"array root", [&] { device.writePlist(kMainFile, Value::array({"VeltoEnabled"})); }},
        {"empty file", [&] { device.writeText(kMainFile, ""); }},
    };
    for (const auto& [what, write] : unreadable) {
        writeMain(allOn);
        settings->loadSettings();
        ASSERT_TRUE(settings->isVeltoEnabled());
        write();
        settings->loadSettings();
        EXPECT_EQ(flags(*settings), kAllOff) << what;
    }
}

TEST_F(VeltoSettingsTest, OneInstancePerProcessThatFollowsTheFile) {
    writeMain(Value::dictionary({{"VeltoEnabled", Value::boolean(true)}}));
    auto settings = VeltoSettings::sharedSettings();
    EXPECT_EQ(VeltoSettings::sharedSettings(), settings);
    EXPECT_TRUE(settings->isVeltoEnabled());

    // A value stored by the platform's preference write is not answered stale.
    writeMain(Value::dictionary(
        {{"VeltoEnabled", Value::boolean(false)}, {"PhoneAppEnabled", Value::boolean(true)}}));
    EXPECT_FALSE(settings->isVeltoEnabled());
    EXPECT_TRUE(settings->isVeltoEnabled_Phone());
    device.process().root().removeItem(kMainFile);
    EXPECT_EQ(flags(*settings), kAllOff);

    // loadSettings reads again even when the file looks untouched (same inode, size and time).
    writeMain(Value::dictionary(
        {{"VeltoEnabled", Value::boolean(true)}, {"PhoneAppEnabled", Value::boolean(false)}}));
    ASSERT_TRUE(settings->isVeltoEnabled());
    rewriteKeepingStamp(kMainFile, Value::dictionary({{"VeltoEnabled", Value::boolean(false)},
                                                      {"PhoneAppEnabled", Value::boolean(true)}}));
    settings->loadSettings();
    EXPECT_FALSE(settings->isVeltoEnabled());
    EXPECT_TRUE(settings->isVeltoEnabled_Phone());

    // Another Settings process has its own instance, read from its own device.
    testsupport::TestDevice other;
    other.writePlist(kMainFile, Value::dictionary({{"VeltoEnabled", Value::boolean(true)}}));
    auto otherSettings = VeltoSettings::sharedSettings();
    EXPECT_NE(otherSettings, settings);
    EXPECT_TRUE(otherSettings->isVeltoEnabled());
}

TEST_F(VeltoSettingsTest, LoadingOnOtherThreadsWhileTheMainThreadAsks) {
    writeMain(Value::dictionary({{"VeltoEnabled", Value::boolean(true)},
                                 {"VeltoExcludedApps", Value::array({"com.example.a"})}}));

    // As on a device: the settings-changed notification reloads on the delivery thread.
    auto& darwin = device.process().darwin();
    darwin.addObserver(
        nullptr,
        [](plat::DarwinNotifyCenter*, void*, const std::string&, const void*, const Value&) {
            VeltoSettings::sharedSettings()->loadSettings();
        },
        kChanged, plat::SuspensionBehavior::DeliverImmediately);

    std::atomic<bool> go{false};
    std::vector<std::thread> loaders;
    for (int t = 0; t < 4; ++t) {
        loaders.emplace_back([&go] {
            while (!go.load())
                std::this_thread::yield();
            for (int i = 0; i < 200; ++i)
                VeltoSettings::sharedSettings()->loadSettings();
        });
    }
    go = true;
    int wrong = 0;
    for (int i = 0; i < 2000; ++i) {
        if (i % 100 == 0) darwin.postFromOtherProcess(kChanged);
        auto settings = VeltoSettings::sharedSettings();
        wrong += !settings->isVeltoEnabled();
        wrong += !settings->isAppExcluded("com.example.a", true);
        wrong += settings->isAppExcluded("com.example.b", false);
    }
    for (auto& loader : loaders)
        loader.join();
    darwin.waitUntilDelivered();
    EXPECT_EQ(wrong, 0);

    // The last reload, made on the delivery thread, is what the main thread sees afterwards.
    writeMain(Value::dictionary({{"VeltoEnabled", Value::boolean(false)}}));
    darwin.postFromOtherProcess(kChanged);
    darwin.waitUntilDelivered();
    EXPECT_FALSE(VeltoSettings::sharedSettings()->isVeltoEnabled());
}

TEST_F(VeltoSettingsTest, ExclusionChangesArePersistedOnceEachAndAnnounced) {
    auto settings = VeltoSettings::sharedSettings();
    // Written by someone else after this process read the file: must survive our writes.
    device.writePlist(kMainFile,
                      Value::dictionary({{"VeltoEnabled", Value::boolean(true)},
                                         {"VeltoEnabledMail", Value::boolean(true)},
                                         {"Note", "kept"}}),
                      true);

    settings->addToExcludedApps("com.example.mail");
    settings->addToExcludedApps("com.example.chat");
    settings->addToExcludedApps("com.example.mail");
    EXPECT_TRUE(isBinaryPlist(kMainFile));
    auto stored = storedExclusions();
    EXPECT_EQ(stored.size(), 2u);
    EXPECT_EQ(std::count(stored.begin(), stored.end(), "com.example.mail"), 1);
    EXPECT_EQ(std::count(stored.begin(), stored.end(), "com.example.chat"), 1);
    Value file = device.readPlist(kMainFile);
    EXPECT_EQ(file.objectForKey("VeltoEnabledMail"), Value::boolean(true));
    EXPECT_EQ(file.objectForKey("VeltoEnabled"), Value::boolean(true));
    EXPECT_EQ(file.objectForKey("Note").str(), "kept");
    EXPECT_EQ(changedPosts(), 3u);
    // The change is in this process's copy at once, without a reload by the caller.
    EXPECT_TRUE(settings->isAppExcluded("com.example.chat", true));

    settings->removeFromExcludedApps("com.example.mail");
    settings->removeFromExcludedApps("com.example.absent");
    EXPECT_EQ(storedExclusions(), std::vector<std::string>{"com.example.chat"});
    EXPECT_FALSE(settings->isAppExcluded("com.example.mail", true));
    EXPECT_EQ(device.readPlist(kMainFile).objectForKey("VeltoEnabledMail"), Value::boolean(true));
    EXPECT_EQ(changedPosts(), 5u);

    // A nil identifier changes nothing and tells nobody.
    const std::string before = fileText(kMainFile);
    settings->addToExcludedApps(std::nullopt);
    settings->removeFromExcludedApps(std::nullopt);
    EXPECT_EQ(fileText(kMainFile), before);
    EXPECT_EQ(changedPosts(), 5u);

    // Starting from no file at all gives a file holding just the list.
    device.process().root().removeItem(kMainFile);
    settings->addToExcludedApps("com.example.first");
    EXPECT_EQ(storedExclusions(), std::vector<std::string>{"com.example.first"});
    EXPECT_EQ(device.readPlist(kMainFile).count(), 1u);
}

TEST_F(VeltoSettingsTest, MasterSwitchOffExcludesEverythingUnlessOnlyTheListCounts) {
    writeMain(Value::dictionary({{"VeltoEnabled", Value::boolean(false)},
                                 {"VeltoExcludedApps", Value::array({"com.example.listed"})}}));
    auto settings = VeltoSettings::sharedSettings();
    settings->loadSettings();
    EXPECT_TRUE(settings->isAppExcluded("com.example.listed", false));
    EXPECT_TRUE(settings->isAppExcluded("com.example.other", false));
    EXPECT_TRUE(settings->isAppExcluded("com.example.listed", true));
    EXPECT_FALSE(settings->isAppExcluded("com.example.other", true));
    EXPECT_FALSE(settings->isAppExcluded("COM.EXAMPLE.LISTED", true));
    EXPECT_FALSE(settings->isAppExcluded(std::nullopt, true));

    writeMain(Value::dictionary({{"VeltoEnabled", Value::boolean(true)},
                                 {"VeltoExcludedApps", Value::array({"com.example.listed"})}}));
    settings->loadSettings();
    for (bool ignoreAllOther : {false, true}) {
        EXPECT_TRUE(settings->isAppExcluded("com.example.listed", ignoreAllOther));
        EXPECT_FALSE(settings->isAppExcluded("com.example.other", ignoreAllOther));
    }
}

}  // namespace
