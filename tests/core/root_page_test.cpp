#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <tuple>

#include "contract/velto_settings.h"
#include "core/velto_settings_controller.h"
#include "platform/foundation/errors.h"
#include "platform/foundation/keyed_archive.h"
#include "platform/prefs/runtime.h"
#include "platform/ui/image.h"
#include "tests/support/bundle_device.h"

using plat::Value;
using velto::VeltoSettingsController;

namespace {

using Ids = std::vector<std::string>;

Ids without(Ids ids, const Ids& removed) {
    for (const auto& r : removed)
        ids.erase(std::find(ids.begin(), ids.end(), r));
    return ids;
}

class RootPageTest : public ::testing::Test {
  protected:
    auto openRoot() { return device.open<VeltoSettingsController>("VeltoSettingsController"); }
    Ids rootIds() { return device.ids(openRoot()->specifiers()); }
    // The master switch on and every application with a custom row installed.
    static void enableWithEveryCustomApp(testsupport::BundleDevice& on) {
        on.writeSettings({{"VeltoEnabled", true}});
        on.installBiteSMS();
        on.installUserApp("net.whatsapp.WhatsApp", "WhatsApp");
        on.installUserApp("com.norvale.RingLedger10", "RingLedger");
        on.installSystemApp("com.norvale.recents", "Recents");
    }

    // Every row of a shipped list by identifier: what a page shows when nothing is filtered.
    Ids fileIds(const std::string& name) const {
        Ids ids;
        const auto file = device.resource(name);
        for (const auto& item : *file.objectForKey("items").asArray())
            ids.push_back(item.objectForKey("id").str());
        return ids;
    }

    testsupport::BundleDevice device;
    const Ids phoneList = fileIds("Velto");
    const Ids ipadList = fileIds("VeltoiPad");
};

TEST_F(RootPageTest, MasterSwitchOffKeepsHeaderSwitchAndTheLastTwoRowsOnBothLists) {
    const Ids expected = {"VeltoHeader", "VeltoEnabled", "SupportGroup", "About"};
    EXPECT_EQ(rootIds(), expected);  // no settings file at all
    device.writeSettings({{"VeltoEnabled", false}});
    EXPECT_EQ(rootIds(), expected);
    device.setProfile("iPad");
    EXPECT_EQ(rootIds(), expected);

    // No application test runs while off: a list without "Recents" does not fail even with
    // the recents application installed.
    device.setProfile("iPhone");
    device.installSystemApp("com.norvale.recents", "Recents");
    auto velto = device.resource("Velto");
    velto.objectForKey("items").removeObjectAtIndex(15);
    device.writeResource("Velto", velto);
    EXPECT_EQ(rootIds(), expected);
}

TEST_F(RootPageTest, InstalledApplicationsDecideTheCustomRows) {
    enableWithEveryCustomApp(device);
    auto list = openRoot()->specifiers();
    EXPECT_EQ(device.ids(list), phoneList);
    // The recents row reads "<name> 2" and keeps its identifier.
    EXPECT_EQ(list->objectAtIndex(15)->name(), "Recents 2");
    EXPECT_EQ(list->objectAtIndex(15)->identifier(), "Recents");
}

TEST_F(RootPageTest, NoCustomApplicationRemovesTheGroupAndEveryMember) {
    device.writeSettings({{"VeltoEnabled", true}});
    EXPECT_EQ(rootIds(),
              without(phoneList, {"Custom Applications", "biteSMS", "RingLedger", "Recents"}));

    // Any one of the applications keeps the group, the recents one too.
    device.installSystemApp("com.norvale.recents", "Recents");
    EXPECT_EQ(rootIds(), without(phoneList, {"biteSMS", "RingLedger"}));
    std::filesystem::remove_all(device.host("/Applications/Recents.app"));

    // WhatsApp has no row of its own but keeps the group.
    device.installUserApp("net.whatsapp.WhatsApp", "WhatsApp");
    EXPECT_EQ(rootIds(), without(phoneList, {"biteSMS", "RingLedger", "Recents"}));

    // biteSMS is found by its relative path alone.
    device.writeText("/Applications/biteSMS.app/placeholder", "");
    EXPECT_EQ(rootIds(), without(phoneList, {"RingLedger", "Recents"}));
    EXPECT_TRUE(openRoot()->isBiteSMSInstalled());
}

TEST_F(RootPageTest, SystemVersionAndFaceTimeHideTheirRows) {
    enableWithEveryCustomApp(device);
    device.setSystemVersion("13.0");
    EXPECT_EQ(rootIds(), without(phoneList, {"Lock Screen"}));
    device.setProfile("iPhone", 3, false);
    EXPECT_EQ(rootIds(), without(phoneList, {"Lock Screen", "FaceTime"}));
    device.setSystemVersion("12.9");
    EXPECT_EQ(rootIds(), without(phoneList, {"FaceTime"}));

    // The iPad list loses "Lock Screen" from 13 on as well.
    device.setProfile("iPad");
    device.setSystemVersion("14.4");
    EXPECT_EQ(rootIds(), without(ipadList, {"Lock Screen"}));
    // Without FaceTime its row goes, found by its identifier: not at the phone list's index.
    device.setProfile("iPad", 2, false);
    device.setSystemVersion("12.0");
    EXPECT_EQ(rootIds(), without(ipadList, {"FaceTime"}));
}

TEST_F(RootPageTest, IPadListKeepsItsOwnRingLedgerRule) {
    device.writeSettings({{"VeltoEnabled", true}});
    device.setProfile("iPad");
    device.installBiteSMS();
    // No call-log row on the iPad list and no fallback: nothing else is removed for it.
    EXPECT_EQ(rootIds(), without(ipadList, {"Recents"}));
    // Without any custom application the group goes, found by its identifier: on the iPad
    // it does not stand at the phone list's index.
    std::filesystem::remove_all(device.host("/Applications/biteSMS.app"));
    EXPECT_EQ(rootIds(), without(ipadList, {"Recents", "biteSMS", "Custom Applications"}));
    // So is the biteSMS row, while WhatsApp keeps the group.
    device.installUserApp("net.whatsapp.WhatsApp", "WhatsApp");
    EXPECT_EQ(rootIds(), without(ipadList, {"Recents", "biteSMS"}));

    // A call-log row standing at index 0 is not removed either; one at index 1 is.
    auto ipad = device.resource("VeltoiPad");
    ipad.objectForKey("items").objectAtIndex(0).setValueForKey("id", "RingLedger");
    device.writeResource("VeltoiPad", ipad);
    EXPECT_EQ(rootIds().front(), "RingLedger");
    ipad.objectForKey("items").objectAtIndex(0).setValueForKey("id", ipadList[0]);
    ipad.objectForKey("items").objectAtIndex(1).setValueForKey("id", "RingLedger");
    device.writeResource("VeltoiPad", ipad);
    EXPECT_EQ(rootIds()[1], ipadList[2]);
}

// A row that has lost its identifier (so it is known by its new label) is still removed, from
// the index it has in the shipped list.
TEST_F(RootPageTest, EachRowWithoutItsIdentifierGoesFromItsFallbackIndex) {
    using Hide = std::function<void(testsupport::BundleDevice&)>;
    const auto uninstall = [](std::vector<const char*> paths) -> Hide {
        return [paths](testsupport::BundleDevice& d) {
            for (const char* path : paths)
                std::filesystem::remove_all(d.host(path));
        };
    };
    const std::vector<std::tuple<std::size_t, Hide, Ids>> cases = {
        {6, [](auto& d) { d.setProfile("iPhone", 3, false); }, {"FaceTime"}},
        {7, [](auto& d) { d.setSystemVersion("13.0"); }, {"Lock Screen"}},
        {13, uninstall({"/Applications/biteSMS.app"}), {"biteSMS"}},
        {14, uninstall({"/var/containers"}), {"RingLedger"}},
        {15, uninstall({"/Applications/Recents.app"}), {"Recents"}},
        {12,
         uninstall({"/Applications/biteSMS.app", "/Applications/Recents.app", "/var/containers"}),
         {"Custom Applications", "biteSMS", "RingLedger", "Recents"}},
    };
    for (const auto& [index, hide, removed] : cases) {
        SCOPED_TRACE(index);
        testsupport::BundleDevice fresh;
        enableWithEveryCustomApp(fresh);
        hide(fresh);
        auto velto = fresh.resource("Velto");
        velto.objectForKey("items").objectAtIndex(index).removeObjectForKey("id");
        velto.objectForKey("items").objectAtIndex(index).setValueForKey("label", "Renamed");
        fresh.writeResource("Velto", velto);
        const auto root = fresh.open<VeltoSettingsController>("VeltoSettingsController");
        EXPECT_EQ(fresh.ids(root->specifiers()), without(phoneList, removed));
    }
}

TEST_F(RootPageTest, ARowFoundAtZeroGoesFromThereAndAnInstalledRecentsNeedsItsRow) {
    enableWithEveryCustomApp(device);
    std::filesystem::remove_all(device.host("/Applications/biteSMS.app"));
    auto velto = device.resource("Velto");
    velto.objectForKey("items").objectAtIndex(0).setValueForKey("id", "biteSMS");
    velto.objectForKey("items").objectAtIndex(13).setValueForKey("id", "Later");
    device.writeResource("Velto", velto);
    EXPECT_EQ(rootIds().front(), "VeltoEnabled");

    // The recents row must exist while the application is installed: a negative index fails.
    velto.objectForKey("items").removeObjectAtIndex(15);
    device.writeResource("Velto", velto);
    EXPECT_THROW(openRoot()->specifiers(), plat::RangeError);
}

TEST_F(RootPageTest, MasterSwitchAnimatesTheMiddleAndRebuilds) {
    device.installBiteSMS();
    auto root = openRoot();
    ASSERT_EQ(root->specifiers()->count(), 4u);
    auto master = root->specifierAtIndex(1);

    auto mark = device.mark();
    plat::Runtime::shared().perform(
        *root, "veltoEnabledOrDisabled:specifier:", {Value::boolean(true), Value(master)});
    // The unfiltered middle (rows 2..m-3 of a fresh load) comes in animated, then the rebuild.
    const auto thenRebuilt = [](Ids ops) {
        ops.push_back("~");
        return ops;
    };
    EXPECT_EQ(device.listOperations(mark), thenRebuilt(device.animated('+', 2, 17)));
    EXPECT_TRUE(device.mainSettings().objectForKey("VeltoEnabled").boolValue());
    EXPECT_EQ(device.notifications(), Ids{"com.norvale.veltosettingschanged"});
    EXPECT_EQ(device.firstLines(mark, 3), device.storedAndAnnounced("VeltoEnabled"));
    EXPECT_EQ(device.ids(root->heldSpecifiers()), without(phoneList, {"RingLedger", "Recents"}));

    mark = device.mark();
    const auto count = static_cast<int>(root->heldSpecifiers()->count());
    plat::Runtime::shared().perform(*root, "veltoEnabledOrDisabled:specifier:",
                                    {Value::boolean(false), Value(root->specifierAtIndex(1))});
    EXPECT_EQ(device.listOperations(mark), thenRebuilt(device.animated('-', count - 3, 2)));
    EXPECT_EQ(root->heldSpecifiers()->count(), 4u);

    // Flipped before any list exists: stored, then only the rebuild.
    auto fresh = openRoot();
    mark = device.mark();
    fresh->veltoEnabledOrDisabled(Value::boolean(true), master);
    EXPECT_EQ(device.listOperations(mark), Ids{"~"});
}

TEST_F(RootPageTest, IconsAreRequestedOnEveryCallAndOnlyDecodedRepliesAreKept) {
    device.writeSettings({{"VeltoEnabled", true}});
    auto root = openRoot();
    // No responder: every request goes unanswered and no row gets an icon.
    auto list = root->specifiers();
    Ids requests;
    for (const auto& r : device.entries<plat::journal::Request>())
        requests.push_back(r.name + (r.replied() ? " replied" : ""));
    // Phone, Messages, Mail, FaceTime, Contacts
    EXPECT_EQ(requests, Ids(5, "com.norvale.velto.appicon"));
    EXPECT_TRUE(list->objectAtIndex(3)->propertyForKey("iconImage").isNil());

    device.answerIcons(87);
    root->specifiers();  // the held list is not rebuilt, the icons are fetched again
    EXPECT_EQ(device.entries<plat::journal::Request>().size(), 10u);
    auto icon = list->objectAtIndex(3)->propertyForKey("iconImage").as<plat::Image>();
    ASSERT_TRUE(icon);
    EXPECT_EQ(icon->pixelWidth(), 87);
    // Rows without a bundle identifier keep their resource icon.
    EXPECT_EQ(list->objectAtIndex(7)->propertyForKey("iconImage").as<plat::Image>()->pixelWidth(),
              87);

    // A reply whose payload is not an archive leaves the icon as it was.
    device.process().messageCenters().setResponder([](auto&, auto&, auto&) {
        return Value::dictionary({{"VeltoServiceMessageData", Value::data({1, 2, 3})}});
    });
    EXPECT_TRUE(openRoot()->specifiers()->objectAtIndex(3)->propertyForKey("iconImage").isNil());

    // The tweak message center is made once per process, whatever the number of pages.
    EXPECT_EQ(device.process().messageCenters().centersMade(), 1u);
    EXPECT_EQ(VeltoSettingsController::tweakMessageCenter()->name(), "com.norvale.velto");
}

TEST_F(RootPageTest, HideOtherSpecifiersWorksOnTheCountItIsGiven) {
    auto root = openRoot();
    EXPECT_EQ(root->hideOtherSpecifiers(device.groups(3))->count(), 3u);
    EXPECT_EQ(device.ids(root->hideOtherSpecifiers(device.groups(7))), (Ids{"0", "1", "5", "6"}));
    EXPECT_EQ(root->hideOtherSpecifiers(nullptr), nullptr);
    EXPECT_THROW(root->hideOtherSpecifiers(device.groups(2)), plat::RangeError);
}

TEST_F(RootPageTest, MainSettingsAreReadAtCreationAndUnreadableOnesAsAllOffLeftAlone) {
    for (const std::string& content :
         {std::string("bplist00garbage"), std::string(""),
          std::string("<?xml version=\"1.0\"?><plist><array/></plist>")}) {
        device.writeText(device.kMainSettings, content);
        velto::VeltoSettings::sharedSettings()->loadSettings();
        auto root = openRoot();
        EXPECT_TRUE(root->settings().isNil());
        EXPECT_EQ(root->specifiers()->count(), 4u);
        auto bytes = device.process().root().readFile(device.kMainSettings);
        EXPECT_EQ(std::string(bytes->begin(), bytes->end()), content);
    }
    // A readable file is what the page holds from its creation on.
    device.writeSettings({{"VeltoEnabled", true}});
    EXPECT_EQ(openRoot()->settings(), device.mainSettings());
}

TEST_F(RootPageTest, BrokenResourcesAndOddRepliesHaveTheirTolerableOutcome) {
    // A missing list loads empty with one log line; the count-down on it then fails with the
    // platform's range error, which the host reports.
    std::filesystem::remove(device.host(std::string(device.kBundle) + "/Velto.plist"));
    EXPECT_THROW(openRoot()->specifiers(), plat::RangeError);
    EXPECT_EQ(device.logLines().size(), 1u);

    // A reply that decodes to something other than a picture is kept as it decoded; hosts
    // show no icon for it.
    device.install(testsupport::sourceDir() / "resources", device.kBundle);
    device.writeSettings({{"VeltoEnabled", true}});
    device.process().messageCenters().setResponder([](auto&, auto&, auto&) {
        auto archived = plat::archivedDataWithRootObject(Value("not a picture"));
        return Value::dictionary({{"VeltoServiceMessageData", Value::data(*archived)}});
    });
    auto list = openRoot()->specifiers();
    EXPECT_EQ(list->objectAtIndex(3)->propertyForKey("iconImage").str(), "not a picture");
    EXPECT_EQ(list->objectAtIndex(3)->propertyForKey("iconImage").as<plat::Image>(), nullptr);
}

}  // namespace
