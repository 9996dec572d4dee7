#include <vector>

#include "contract/velto_settings.h"
#include "platform/prefs/runtime.h"
#include "tests/contract/contract_fixture.h"

namespace {

using namespace contracttest;
using plat::Value;
using velto::VeltoSettings;

class VeltoSettingsTest : public ContractTest {
  protected:
    // enabled, phone, favourites, logging
    static std::vector<bool> flags() {
        auto s = VeltoSettings::sharedSettings();
        return {s->isVeltoEnabled(), s->isVeltoEnabled_Phone(), s->isShowFavoritesContactImage(),
                s->isLoggingEnabled()};
    }
    const std::vector<bool> allOff = {false, false, false, false};
    // The exclusion list has a notification of its own: the settings-changed one would send
    // the Excluded applications page back for the whole application list after each switch.
    std::size_t exclusionPosts() {
        EXPECT_EQ(changedPosts(), 0u);
        return std::ranges::count(device.notifications(), "com.norvale.veltoexcludedappschanged");
    }
};

TEST_F(VeltoSettingsTest, FlagsFollowTheFileAndAnythingUnreadableReadsAllOff) {
    auto settings = VeltoSettings::sharedSettings();
    EXPECT_EQ(flags(), allOff);  // no file at all
    // Code that does not link the library finds the class by its name.
    EXPECT_TRUE(plat::Runtime::shared().isSubclass("VeltoSettings", "NSObject"));
    EXPECT_TRUE(plat::Runtime::shared().classExists("NVControlTableCell"));

    // Each key on its own, stored with the kinds of value boolValue accepts.
    device.writePlist(kMainFile, Value::dictionary({{"VeltoEnabled", Value::boolean(true)},
                                                    {"PhoneAppEnabled", Value::integer(2)},
                                                    {"ShowFavoritesContactImage", "YES"},
                                                    {"VeltoExcludedApps", Value::array({"a"})}}));
    settings->loadSettings();
    EXPECT_EQ(flags(), (std::vector<bool>{true, true, true, false}));
    EXPECT_EQ(settings->excludedApps(), std::vector<std::string>{"a"});

    // A file that is no property list, then values of the wrong kind, read all off.
    device.writeText(kMainFile, "bplist00\xd1\x01\x02");
    settings->loadSettings();
    EXPECT_EQ(flags(), allOff);
    EXPECT_TRUE(settings->excludedApps().empty());
    device.writeSettings({{"VeltoEnableLogging", true}});
    settings->loadSettings();
    ASSERT_EQ(flags(), (std::vector<bool>{false, false, false, true}));
    device.writePlist(kMainFile,
                      Value::dictionary({{"VeltoEnabled", Value::dictionary({{"on", "1"}})},
                                         {"PhoneAppEnabled", Value::array({Value::boolean(true)})},
                                         {"VeltoExcludedApps", "a"}}));
    settings->loadSettings();
    EXPECT_EQ(flags(), allOff);
    EXPECT_TRUE(settings->excludedApps().empty());
}

TEST_F(VeltoSettingsTest, OneInstancePerProcessThatFollowsTheFile) {
    device.writeSettings({{"VeltoEnabled", true}});
    auto settings = VeltoSettings::sharedSettings();
    EXPECT_EQ(VeltoSettings::sharedSettings(), settings);
    EXPECT_TRUE(settings->isVeltoEnabled());

    // A file changed or removed by someone else is not answered stale.
    device.writeSettings({{"VeltoEnabled", false}, {"PhoneAppEnabled", true}});
    EXPECT_EQ(flags(), (std::vector<bool>{false, true, false, false}));
    device.process().root().removeItem(kMainFile);
    EXPECT_EQ(flags(), allOff);

    // loadSettings reads again even when the file looks untouched (same inode, size and time).
    device.writeSettings({{"VeltoEnabled", true}, {"PhoneAppEnabled", false}});
    ASSERT_TRUE(settings->isVeltoEnabled());
    rewriteKeepingStamp(kMainFile, bools({{"VeltoEnabled", false}, {"PhoneAppEnabled", true}}));
    EXPECT_TRUE(VeltoSettings::sharedSettings()->isVeltoEnabled());  // handing it out reads nothing
    settings->loadSettings();
    EXPECT_EQ(flags(), (std::vector<bool>{false, true, false, false}));

    // Another Settings process has its own instance, read from its own device.
    testsupport::TestDevice other;
    other.writePlist(kMainFile, bools({{"VeltoEnabled", true}}));
    EXPECT_NE(VeltoSettings::sharedSettings(), settings);
    EXPECT_TRUE(VeltoSettings::sharedSettings()->isVeltoEnabled());
}

TEST_F(VeltoSettingsTest, ExclusionsArePersistedOnceEachAndCountOnlyWhileTheMasterSwitchIsOn) {
    auto settings = VeltoSettings::sharedSettings();
    // Written by someone else after this process read the file: must survive our writes.
    const Value others = bools({{"VeltoEnabled", true}, {"VeltoEnabledMail", true}});
    device.writePlist(kMainFile, others, true);

    for (const char* id : {"mail", "chat", "mail"})
        settings->addToExcludedApps(id);
    EXPECT_TRUE(fileText(kMainFile).starts_with("bplist00"));
    EXPECT_EQ(device.mainSettings().objectForKey("VeltoExcludedApps").count(), 2u);
    EXPECT_EQ(exclusionPosts(), 3u);
    // Both are in this process's copy at once, without a reload by the caller.
    for (bool ignoreAllOther : {false, true}) {
        EXPECT_TRUE(settings->isAppExcluded("mail", ignoreAllOther));
        EXPECT_TRUE(settings->isAppExcluded("chat", ignoreAllOther));
        EXPECT_FALSE(settings->isAppExcluded("other", ignoreAllOther));
    }
    EXPECT_FALSE(settings->isAppExcluded("MAIL", true));
    EXPECT_FALSE(settings->isAppExcluded(std::nullopt, true));

    settings->removeFromExcludedApps("mail");
    settings->removeFromExcludedApps("absent");
    EXPECT_FALSE(settings->isAppExcluded("mail", true));
    EXPECT_EQ(exclusionPosts(), 5u);
    Value file = device.mainSettings();
    EXPECT_EQ(file.objectForKey("VeltoExcludedApps"), Value::array({"chat"}));
    file.removeObjectForKey("VeltoExcludedApps");
    EXPECT_EQ(file, others);

    // A nil identifier changes nothing and tells nobody.
    const std::string before = fileText(kMainFile);
    settings->addToExcludedApps(std::nullopt);
    settings->removeFromExcludedApps(std::nullopt);
    EXPECT_EQ(fileText(kMainFile), before);
    EXPECT_EQ(exclusionPosts(), 5u);

    // Entries that are not bundle identifiers are someone else's: they survive every change
    // in their places, and only the identifier's own string goes or comes.
    const Value foreign = Value::array({"kept", Value::integer(7), Value::boolean(true)});
    device.writePlist(kMainFile, Value::dictionary({{"VeltoExcludedApps", foreign}}));
    settings->addToExcludedApps("new");
    settings->addToExcludedApps("kept");
    settings->removeFromExcludedApps("new");
    EXPECT_EQ(device.mainSettings().objectForKey("VeltoExcludedApps"),
              Value::array({Value::integer(7), Value::boolean(true), "kept"}));
    EXPECT_TRUE(settings->isAppExcluded("kept", true));

    // Starting from no file at all gives a file holding just the list. The master switch is
    // off then: every app is excluded unless only the list counts.
    device.process().root().removeItem(kMainFile);
    settings->addToExcludedApps("first");
    EXPECT_EQ(device.mainSettings(),
              Value::dictionary({{"VeltoExcludedApps", Value::array({"first"})}}));
    EXPECT_TRUE(settings->isAppExcluded("first", false) && settings->isAppExcluded("other", false));
    EXPECT_TRUE(settings->isAppExcluded("first", true));
    EXPECT_FALSE(settings->isAppExcluded("other", true));

    // A file where the preferences folder belongs: the failure is logged, nobody is told.
    const std::string folder = "/var/mobile/Library/Preferences";
    device.process().root().removeItem(folder);
    device.writeText(folder, "in the way");
    const std::size_t posted = exclusionPosts();
    settings->addToExcludedApps("lost");
    EXPECT_EQ(
        device.logLines().back(),
        std::string("com.norvale.Velto: Error => Unable to save the excluded applications to ") +
            kMainFile);
    EXPECT_EQ(exclusionPosts(), posted);
}

}  // namespace
