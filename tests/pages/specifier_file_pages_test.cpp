#include <gtest/gtest.h>

#include "contract/velto_base_messages_settings_controller.h"
#include "pages/velto_nv_recents_settings_controller.h"
#include "pages/velto_ring_ledger_settings_controller.h"
#include "platform/foundation/errors.h"
#include "tests/support/bundle_device.h"

using plat::Value;

namespace {

using Ids = std::vector<std::string>;
const char* const kWhatsApp = "/var/mobile/Library/Preferences/com.norvale.whatsapp.plist";

TEST(SpecifierFilePagesTest, ShowTheirResourceAndHoldOnlyTheirOwnSettings) {
    // class, resource, whether it keeps the whatsapp file
    for (auto [className, resource, keepsWhatsAppFile] :
         {std::tuple{"ContactsAppSettingsController", "ContactsApp", false},
          {"BiteSMSAppSettingsController", "BiteSMSApp", false},
          {"VeltoRingLedgerSettingsController", "RingLedger", true},
          {"VeltoNVRecentsSettingsController", "Recents", true}}) {
        SCOPED_TRACE(className);
        testsupport::BundleDevice device;
        device.writePlist(kWhatsApp, device.bools({{"VeltoEnabledRecents", true}}));
        auto page = device.open<plat::ListController>(className);
        ASSERT_NE(page, nullptr);
        auto list = page->specifiers();
        EXPECT_EQ(page->loadedResourceNames(), Ids{resource});
        EXPECT_EQ(list->count(), device.resource(resource).objectForKey("items").count());
        EXPECT_EQ(page->specifiers(), list);

        auto own = std::dynamic_pointer_cast<velto::VeltoBaseMessagesSettingsController>(page);
        EXPECT_EQ(own != nullptr, keepsWhatsAppFile);
        if (!own) continue;
        EXPECT_TRUE(own->settings().objectForKey("VeltoEnabledRecents").boolValue());
        EXPECT_FALSE(own->shouldShowImageAsTitle());
        // The page's switch goes to the main file; the whatsapp file is left as it was.
        page->setPreferenceValue(Value::boolean(true), list->objectAtIndex(1));
        EXPECT_TRUE(device.mainSettings()
                        .objectForKey(list->objectAtIndex(1)->propertyForKey("key").str())
                        .boolValue());
        EXPECT_EQ(device.readPlist(kWhatsApp).count(), 1u);
    }
}

TEST(RecentsPageTest, TheVersionIsAddedOnceToTheRowAndTheTitle) {
    testsupport::BundleDevice device;
    auto page =
        device.open<velto::VeltoNVRecentsSettingsController>("VeltoNVRecentsSettingsController");
    EXPECT_TRUE(page->settings().isNil());  // no whatsapp file
    // As the Settings application loads the page: the rows (and the resource's title) first.
    page->specifiers();
    page->viewDidLoad();
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(page->specifiers()->objectAtIndex(0)->name(), "Recents 2");
    EXPECT_EQ(page->navigationItem().title(), "Recents 2");

    // No title stays no title; a resource without the row fails on the range check.
    auto untitled =
        device.open<velto::VeltoNVRecentsSettingsController>("VeltoNVRecentsSettingsController");
    untitled->viewDidLoad();
    EXPECT_EQ(untitled->navigationItem().title(), std::nullopt);
    auto file = device.resource("Recents");
    file.objectForKey("items").objectAtIndex(0).setValueForKey("id", "History");
    device.writeResource("Recents", file);
    EXPECT_THROW(untitled->specifiers(), plat::RangeError);
}

}  // namespace
