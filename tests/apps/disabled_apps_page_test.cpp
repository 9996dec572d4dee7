// The Excluded applications page in-process: grouping and order, the hidden applications, the
// rows, switches that show and flip the stored exclusion, and replies that carry nothing usable.

#include <gtest/gtest.h>

#include "contract/velto_settings.h"
#include "tests/apps/apps_fixture.h"

using appstest::AppsDevice;
using appstest::Page;
using appstest::record;
using plat::Value;
using Names = std::vector<std::string>;

namespace {

class DisabledAppsPageTest : public ::testing::Test {
  protected:
    AppsDevice device;
    auto settings() { return velto::VeltoSettings::sharedSettings(); }
};

TEST_F(DisabledAppsPageTest, SystemGroupFirstEachSortedIgnoringCase) {
    device.answerRecords(Value::array(
        {record("com.apple.mobilenotes", "Notes", true), record("com.apple.Maps", "Maps", true),
         record("com.bank", "bank", false), record("com.bank2", "Bank", false),
         record("com.zeta", "Zeta", false), record("com.emile", "\u00c9mile", false)}));
    // By bytes "Zeta" comes before "bank"; ignoring case it follows. "É" compares as its
    // decomposition, an "e" and an accent, so it falls between them. Names alike but for case
    // keep the order of the extension's list, which is sorted by bytes: "Bank" first.
    EXPECT_EQ(AppsDevice::names(device.page()->specifiers()),
              (Names{"System Applications", "Maps", "Notes", "User Applications", "Bank", "bank",
                     "\u00c9mile", "Zeta"}));

    // An empty group leaves with its title.
    device.answerRecords(Value::array({record("com.bank", "bank", false)}));
    EXPECT_EQ(AppsDevice::names(device.page()->specifiers()), (Names{"User Applications", "bank"}));
}

TEST_F(DisabledAppsPageTest, RowCarriesTheRecordAsTheDataModelSays) {
    Value app = record("com.alpha", "Alpha", false);
    app.setValueForKey("Extra", "kept");
    device.answerRecords(Value::array({app}));
    auto page = device.page();
    const auto row = page->specifiers()->objectAtIndex(1);
    EXPECT_EQ(row->cellType(), plat::PSSwitchCell);
    EXPECT_EQ(row->propertyForKey("cellClass").str(), "VeltoSwitchCell");
    EXPECT_EQ(row->identifier(), "com.alpha");
    EXPECT_EQ(row->setter(), "setPreferenceValue:specifier:");
    EXPECT_TRUE(row->getter().empty());
    EXPECT_EQ(row->target(), page);
    ASSERT_TRUE(row->propertyForKey("iconImage").as<plat::Image>());
    EXPECT_EQ(row->propertyForKey("iconImage").as<plat::Image>()->pixelWidth(), 4);
    EXPECT_EQ(row->userInfo().count(), 4u);
    EXPECT_TRUE(row->userInfo().objectForKey("VeltoFolderImage").isNil());
    EXPECT_EQ(row->userInfo().objectForKey("Extra").str(), "kept");
    EXPECT_EQ(row->propertyForKey("cellObject").isNil(), true);
    // The icon still belongs to the record the row came from.
    EXPECT_EQ(app.objectForKey("VeltoFolderImage").isNil(), false);
}

TEST_F(DisabledAppsPageTest, HiddenApplicationsStayHiddenAndMatchCaseSensitively) {
    // A misspelt entry would show the page of an application the bundle covers itself, and
    // only the list itself can tell: it is here in full.
    const Names hidden = {"com.apple.mobilephone",
                          "com.apple.facetime",
                          "com.apple.MobileSMS",
                          "com.apple.mobilesms.notification",
                          "com.apple.MobileSMS.MessagesNotificationExtension",
                          "net.whatsapp.WhatsApp",
                          "com.apple.MobileAddressBook",
                          "com.apple.mobilemail",
                          "com.norvale.RingLedger10",
                          "com.apple.ContactsUI.ContactsViewService",
                          "com.apple.MobileAddressBook.ContactsViewService",
                          "com.norvale.RingLedger2",
                          "com.norvale.RingLedgerKit"};
    Value records = Value::array();
    for (const auto& id : hidden)
        records.addObject(record(id, id, true));
    for (const auto* shown :
         {"com.apple.mobilesms", "com.apple.MobilePhone", "com.norvale.RingLedger", ""})
        records.addObject(record(shown, shown, false));
    // Excluded or not, a hidden application stays hidden.
    settings()->addToExcludedApps("com.apple.mobilemail");
    settings()->addToExcludedApps("com.norvale.RingLedger2");
    device.answerRecords(records);
    EXPECT_EQ(AppsDevice::ids(device.page()->specifiers()),
              (Names{"User Applications", "", "com.apple.MobilePhone", "com.apple.mobilesms",
                     "com.norvale.RingLedger"}));
}

TEST_F(DisabledAppsPageTest, SwitchShowsExclusionAndToggleFlipsWhatIsStored) {
    device.answerRecords(
        Value::array({record("com.alpha", "Alpha", false), record("com.bank", "bank", false)}));
    settings()->addToExcludedApps("com.bank");
    auto page = device.page();
    // The rows' cells as the Settings app shows them (cell hook): the switch position.
    EXPECT_FALSE(device.cell(*page, "com.alpha")->control()->isOn());
    EXPECT_TRUE(device.cell(*page, "com.bank")->control()->isOn());

    // Alpha was shown off, then excluded elsewhere: the tap sends "on" but un-excludes it.
    settings()->addToExcludedApps("com.alpha");
    page->setPreferenceValue(Value::boolean(true), page->specifiers()->objectAtIndex(1));
    EXPECT_FALSE(settings()->isAppExcluded("com.alpha", true));
    // The value is ignored both ways.
    page->setPreferenceValue(Value::boolean(false), page->specifiers()->objectAtIndex(1));
    EXPECT_TRUE(settings()->isAppExcluded("com.alpha", true));
    EXPECT_TRUE(device.cell(*page, "com.alpha")->control()->isOn());
    // Through the file, as the extension reads it; the page wrote no value of its own.
    EXPECT_EQ(device.mainSettings().objectForKey("VeltoExcludedApps"),
              Value::array({"com.bank", "com.alpha"}));
    EXPECT_TRUE(device.entries<plat::journal::PreferenceWrite>().empty());
}

// A reply (or payload) that carries nothing usable, one per way out of the fetch: none, data
// that does not decode, not an array, an empty one. Which bytes decode is the archive reader's
// to say.
TEST(BrokenReplyTest, GivesAnEmptyPageSilently) {
    const auto payload = [](const plat::Bytes& bytes) {
        return Value::dictionary({{"VeltoServiceMessageData", Value::data(bytes)}});
    };
    for (const auto& [name, reply] :
         {std::pair{"NoReply", Value()},
          {"Garbage", payload({'b', 'p', 'l', 'i', 's', 't', '0', '0', 1, 2})},
          {"NotAnArray", payload(*plat::archivedDataWithRootObject(record("a", "A", true)))},
          {"EmptyArray", payload(*plat::archivedDataWithRootObject(Value::array()))}}) {
        SCOPED_TRACE(name);
        AppsDevice device;
        if (!reply.isNil()) device.answerReply(reply);  // nil: the extension does not answer
        EXPECT_EQ(device.page()->specifiers()->count(), 0u);
        EXPECT_TRUE(device.logLines().empty());
    }
}

TEST_F(DisabledAppsPageTest, IncompleteRecordsStillGetRows) {
    device.answerRecords(Value::array(
        {Value::dictionary(
             {{"VeltoFolderDisplayName", "NoId"}, {"VeltoType", Value::boolean(true)}}),
         Value::dictionary(
             {{"VeltoBundleIdentifier", "com.untyped"}, {"VeltoFolderDisplayName", "Untyped"}}),
         Value::dictionary({{"VeltoBundleIdentifier", "com.nameless"}}), Value("not a record")}));
    auto page = device.page();
    const auto list = page->specifiers();
    ASSERT_EQ(list->count(), 5u);
    EXPECT_EQ(AppsDevice::names(list)[2], "User Applications");
    // No identifier: a nil identifier, so toggling stores nothing.
    EXPECT_FALSE(list->objectAtIndex(1)->hasExplicitIdentifier());
    page->setPreferenceValue(Value(), list->objectAtIndex(1));
    EXPECT_TRUE(settings()->excludedApps().empty());
    const Names users = {AppsDevice::names(list)[3], AppsDevice::names(list)[4]};
    EXPECT_TRUE((users == Names{"(nil)", "Untyped"}) || (users == Names{"Untyped", "(nil)"}));
}

TEST_F(DisabledAppsPageTest, OneMessageCenterForEveryPageOfTheProcess) {
    device.answerRecords(Value::array());
    const auto before = device.process().messageCenters().centersMade();
    auto first = device.page();
    const auto center = Page::tweakMessageCenter();
    auto second = device.page();
    EXPECT_EQ(device.process().messageCenters().centersMade(), before + 1);
    EXPECT_EQ(Page::tweakMessageCenter(), center);
}

}  // namespace
