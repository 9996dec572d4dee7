#include <gtest/gtest.h>

#include "pages/face_time_app_settings_controller.h"
#include "pages/phone_app_settings_controller.h"
#include "platform/foundation/errors.h"
#include "platform/prefs/runtime.h"
#include "tests/support/bundle_device.h"

using plat::Value;
using velto::FaceTimeAppSettingsController;
using velto::PhoneAppSettingsController;

namespace {

using Ids = std::vector<std::string>;
constexpr auto ids = &testsupport::BundleDevice::ids;

class PhoneFaceTimeTest : public ::testing::Test {
  protected:
    auto phone() { return device.open<PhoneAppSettingsController>("PhoneAppSettingsController"); }
    std::shared_ptr<FaceTimeAppSettingsController> faceTime() {
        return device.open<FaceTimeAppSettingsController>("FaceTimeAppSettingsController");
    }
    template <class Page>
    void flip(Page& page, const std::string& selector, std::size_t row, bool on) {
        plat::Runtime::shared().perform(page, selector,
                                        {Value::boolean(on), Value(page.specifierAtIndex(row))});
    }

    testsupport::BundleDevice device;
};

TEST_F(PhoneFaceTimeTest, DisabledPagesShowOnlyTheirHead) {
    EXPECT_EQ(ids(phone()->specifiers()), (Ids{"PhoneGroup", "PhoneAppEnabled"}));
    EXPECT_EQ(ids(faceTime()->specifiers()), (Ids{"FaceTimeGroup", "FaceTimeEnabled"}));
    // A stored false and an unreadable file read the same way.
    device.writeText(device.kMainSettings, "not a property list");
    EXPECT_EQ(faceTime()->specifiers()->count(), 2u);
    EXPECT_FALSE(faceTime()->isVeltoEnabledForFaceTime());
}

TEST_F(PhoneFaceTimeTest, PhoneBuildPrunesByFavourites) {
    device.writeSettings({{"PhoneAppEnabled", true}});
    auto off = phone()->specifiers();
    // Rows 4, 5 and the last go, and the favourites group loses its footer.
    EXPECT_EQ(ids(off), (Ids{"PhoneGroup", "PhoneAppEnabled", "FavoritesGroup", "Favorites",
                             "CallHistoryGroup", "Pictures in Recents"}));
    EXPECT_TRUE(off->objectAtIndex(2)->propertyForKey("footerText").isNil());

    device.writeSettings({{"PhoneAppEnabled", true}, {"ShowFavoritesContactImage", true}});
    auto on = phone()->specifiers();
    EXPECT_EQ(on->count(), 8u);  // only the last row goes
    EXPECT_FALSE(on->objectAtIndex(2)->propertyForKey("footerText").isNil());
}

TEST_F(PhoneFaceTimeTest, PhoneSwitchesInsertAndRemoveWithoutLookingAtWhatIsShown) {
    auto page = device.openBuilt<PhoneAppSettingsController>("PhoneAppSettingsController");
    auto mark = device.mark();
    flip(*page, "phoneAppEnabledOrDisabled:specifier:", 1, true);
    EXPECT_EQ(device.firstLines(mark, 3), device.storedAndAnnounced("PhoneAppEnabled"));
    // File rows 2..7 (the last is left out), favourites or not.
    EXPECT_EQ(device.listOperations(mark), device.animated('+', 2, 7));
    EXPECT_TRUE(device.mainSettings().objectForKey("PhoneAppEnabled").boolValue());
    EXPECT_EQ(device.notifications().back(), "com.norvale.veltosettingschanged");

    // Favourites on: row 2 goes (no animation argument) and a fixed six rows come in.
    mark = device.mark();
    flip(*page, "favoritesEnabledOrDisabled:specifier:", 3, true);
    EXPECT_EQ(device.firstLines(mark, 3), device.storedAndAnnounced("ShowFavoritesContactImage"));
    EXPECT_EQ(device.listOperations(mark), (Ids{"-2", "+2a", "+3a", "+4a", "+5a", "+6a", "+7a"}));
    EXPECT_EQ(page->specifiers()->count(), 8u + 5u);
    EXPECT_TRUE(device.mainSettings().objectForKey("ShowFavoritesContactImage").boolValue());

    // Favourites off: row 2 goes and file row 3 comes back at 3, both without animation. The
    // group's footer is taken off the file's group, never off the row that comes back.
    auto phoneFile = device.resource("PhoneApp");
    phoneFile.objectForKey("items").objectAtIndex(3).setValueForKey("footerText", "kept");
    device.writeResource("PhoneApp", phoneFile);
    mark = device.mark();
    flip(*page, "favoritesEnabledOrDisabled:specifier:", 3, false);
    EXPECT_EQ(device.listOperations(mark), (Ids{"-2", "+3"}));
    EXPECT_EQ(page->specifierAtIndex(3)->identifier(), "Favorites");
    EXPECT_EQ(page->specifierAtIndex(3)->propertyForKey("footerText").str(), "kept");
    EXPECT_FALSE(device.mainSettings().objectForKey("ShowFavoritesContactImage").boolValue());

    // Off removes every row from the last down to 2.
    mark = device.mark();
    flip(*page, "phoneAppEnabledOrDisabled:specifier:", 1, false);
    EXPECT_EQ(device.listOperations(mark), device.animated('-', 12, 2));
    EXPECT_EQ(page->specifiers()->count(), 2u);
}

TEST_F(PhoneFaceTimeTest, SwitchesFlippedBeforeTheListIsBuiltOnlyStore) {
    auto page = faceTime();
    const auto file = page->loadSpecifiersFromPlistName("FaceTimeiPhone", page);
    const auto mark = device.mark();
    page->faceTimeAppEnabledOrDisabled(Value::boolean(true), file->objectAtIndex(1));
    page->favoritesEnabledOrDisabled(Value::boolean(true), file->objectAtIndex(3));
    EXPECT_TRUE(device.listOperations(mark).empty());
    EXPECT_EQ(page->heldSpecifiers(), nullptr);
    EXPECT_TRUE(device.mainSettings().objectForKey("VeltoEnabledFacetime").boolValue());
    EXPECT_TRUE(device.mainSettings().objectForKey("ShowFavoritesContactImage").boolValue());
}

TEST_F(PhoneFaceTimeTest, FaceTimeClearsTheMonogramRangeOnceOrTwice) {
    // "Monogram Image" stands at k = 4: favourites on remove k - 1 rows...
    device.writeSettings({{"VeltoEnabledFacetime", true}, {"ShowFavoritesContactImage", true}});
    EXPECT_EQ(ids(faceTime()->specifiers()),
              (Ids{"FaceTimeGroup", "FaceTimeEnabled", "CallsGroup", "Pictures on the Call Screen",
                   "Pictures in Recents", "FaceTimeMoreGroup", "FaceTimeNote"}));
    // ...favourites off remove 2(k - 1).
    device.writeSettings({{"VeltoEnabledFacetime", true}});
    EXPECT_EQ(ids(faceTime()->specifiers()),
              (Ids{"FaceTimeGroup", "FaceTimeEnabled", "FaceTimeMoreGroup", "FaceTimeNote"}));

    // Without the row (k = -1) the signed passes remove nothing; the footer of row 2 still goes.
    auto file = device.resource("FaceTimeiPhone");
    file.objectForKey("items").objectAtIndex(4).removeObjectForKey("id");
    file.objectForKey("items").objectAtIndex(4).setValueForKey("label", "Initials");
    device.writeResource("FaceTimeiPhone", file);
    auto list = faceTime()->specifiers();
    EXPECT_EQ(list->count(), 10u);
    EXPECT_TRUE(list->objectAtIndex(2)->propertyForKey("footerText").isNil());
}

TEST_F(PhoneFaceTimeTest, IPadFaceTimeGovernsThePhoneKey) {
    device.writeSettings({{"PhoneAppEnabled", true},
                          {"VeltoEnabledFacetime", false},
                          {"ShowFavoritesContactImage", true}});
    device.setProfile("iPad");
    auto ipad = faceTime();
    EXPECT_TRUE(ipad->isVeltoEnabledForFaceTime());
    EXPECT_EQ(ipad->specifiers()->count(), 7u);
    // Its switch stores under the Phone key, as the iPad resource names it.
    ipad->faceTimeAppEnabledOrDisabled(Value::boolean(false), ipad->specifierAtIndex(1));
    EXPECT_FALSE(device.mainSettings().objectForKey("PhoneAppEnabled").boolValue());

    device.writeSettings({{"PhoneAppEnabled", true}, {"VeltoEnabledFacetime", false}});
    device.setProfile("iPod");
    EXPECT_TRUE(faceTime()->isVeltoEnabledForFaceTime());
    device.setProfile("iPhone");
    EXPECT_FALSE(faceTime()->isVeltoEnabledForFaceTime());
    EXPECT_EQ(faceTime()->specifiers()->count(), 2u);
}

TEST_F(PhoneFaceTimeTest, FaceTimeSwitchesKeepTheLastRowWhenTurnedOff) {
    device.writeSettings({{"VeltoEnabledFacetime", true}, {"ShowFavoritesContactImage", true}});
    // 7 rows
    auto page = device.openBuilt<FaceTimeAppSettingsController>("FaceTimeAppSettingsController");
    auto mark = device.mark();
    flip(*page, "faceTimeAppEnabledOrDisabled:specifier:", 1, false);
    EXPECT_EQ(device.firstLines(mark, 3), device.storedAndAnnounced("VeltoEnabledFacetime"));
    EXPECT_EQ(device.listOperations(mark), (Ids{"-5a", "-4a", "-3a", "-2a"}));
    EXPECT_EQ(ids(page->specifiers()), (Ids{"FaceTimeGroup", "FaceTimeEnabled", "FaceTimeNote"}));

    // On brings every file row from 2 on, including the monogram range the build removed.
    mark = device.mark();
    flip(*page, "faceTimeAppEnabledOrDisabled:specifier:", 1, true);
    EXPECT_EQ(device.listOperations(mark), device.animated('+', 2, 9));
    EXPECT_EQ(page->specifiers()->count(), 11u);

    mark = device.mark();
    flip(*page, "favoritesEnabledOrDisabled:specifier:", 3, true);
    EXPECT_EQ(device.firstLines(mark, 3), device.storedAndAnnounced("ShowFavoritesContactImage"));
    EXPECT_EQ(device.listOperations(mark), (Ids{"-2a", "+2a", "+3a", "+4a", "+5a", "+6a", "+7a"}));
}

TEST_F(PhoneFaceTimeTest, ShortListsFailWithTheRangeErrorWhereThePlatformWould) {
    // FaceTime, favourites off: a file shorter than 2k rows runs past the end on the second pass.
    auto file = device.resource("FaceTimeiPhone");
    auto items = file.objectForKey("items");
    while (items.count() > 7)
        items.removeObjectAtIndex(items.count() - 1);
    device.writeResource("FaceTimeiPhone", file);
    device.writeSettings({{"VeltoEnabledFacetime", true}});
    EXPECT_THROW(faceTime()->specifiers(), plat::RangeError);

    // The off handler counts down from count - 2: one row wraps, and nothing is removed.
    auto page = faceTime();
    auto one = device.groups(1);
    page->setHeldSpecifiers(one);
    EXPECT_THROW(page->faceTimeAppEnabledOrDisabled(Value::boolean(false),
                                                    plat::Specifier::emptyGroupSpecifier()),
                 plat::RangeError);
    EXPECT_EQ(one->count(), 1u);

    // Phone: an empty resource wraps count - 1 on the disabled build; a short one fails the
    // favourites pruning.
    device.writeResource("PhoneApp", Value::dictionary({{"items", Value::array()}}));
    EXPECT_THROW(phone()->specifiers(), plat::RangeError);
    device.writeSettings({{"PhoneAppEnabled", true}});
    auto phoneFile = Value::dictionary({{"items", Value::array()}});
    for (int i = 0; i < 5; ++i)
        phoneFile.objectForKey("items").addObject(Value::dictionary({{"cell", "PSGroupCell"}}));
    device.writeResource("PhoneApp", phoneFile);
    EXPECT_THROW(phone()->specifiers(), plat::RangeError);
}

}  // namespace
