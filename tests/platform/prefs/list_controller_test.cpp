#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/foundation/errors.h"
#include "platform/foundation/plist.h"
#include "platform/prefs/list_controller.h"
#include "platform/prefs/runtime.h"
#include "platform/prefs/specifier_loader.h"
#include "platform/prefs/table_cell.h"
#include "platform/prefs/user_defaults.h"
#include "platform/ui/image.h"
#include "tests/support/test_device.h"

using plat::Value;

namespace toy {

constexpr const char* kBundle = "/System/Library/PreferenceBundles/Toy.bundle";
constexpr const char* kDomainFile = "/var/mobile/Library/Preferences/com.example.toy.plist";

// A page written only for the tests: it builds its held list once and prunes it by a stored
// switch, as every real page does, on a resource of its own, so the framework model is
// exercised end to end. What a real page does with its rows when the switch flips is checked
// on that page.
class ToyController : public plat::ListController {
  public:
    std::string className() const override { return "ToyController"; }
    plat::SpecifierArrayPtr specifiers() override {
        if (heldSpecifiers()) return heldSpecifiers();
        auto list = loadSpecifiersFromPlistName("Toy", shared_from_this());
        // Row 1 is the page's switch; its stored value decides whether the rest shows.
        const bool on = readPreferenceValue(list->objectAtIndex(1)).boolValue();
        for (std::size_t i = list->count() - 1; !on && i > 1; --i)
            list->removeObjectAtIndex(i);
        setHeldSpecifiers(list);
        return list;
    }
};

// A switch cell class named by "cellClass" in the resource.
class ToySwitchCell : public plat::TableCell {
  public:
    std::string className() const override { return "ToySwitchCell"; }
};

}  // namespace toy

namespace {

class PrefsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        auto& runtime = plat::Runtime::shared();  // registering again is harmless
        runtime.registerClass(
            "ToyController", "PSListController",
            [] { return std::make_shared<toy::ToyController>(); }, toy::kBundle);
        runtime.addMethod("ToyController", "toyEnabledOrDisabled:specifier:",
                          plat::bindMethod<toy::ToyController>([](toy::ToyController& self,
                                                                  const plat::Arguments& a) {
                              self.setPreferenceValue(plat::argumentAt(a, 0),
                                                      plat::argumentAt(a, 1).as<plat::Specifier>());
                              plat::UserDefaults::standardUserDefaults().synchronize();
                              return Value();
                          }));
        runtime.registerClass("ToySwitchCell", "PSTableCell",
                              [] { return std::make_shared<toy::ToySwitchCell>(); });
        device.setProfile("iPhone", 3);
        device.install(testsupport::sourceDir() / "tests/platform/prefs/resources", toy::kBundle);
    }

    // The page as the runtime makes it, its list built unless told.
    std::shared_ptr<toy::ToyController> openToy(bool build = true) {
        auto page = std::dynamic_pointer_cast<toy::ToyController>(
            plat::Runtime::shared().instantiate("ToyController"));
        EXPECT_TRUE(page && page->initForContentSize({320, 480}));
        if (page && build) page->specifiers();
        return page;
    }

    testsupport::TestDevice device;
};

TEST_F(PrefsTest, LoaderKeepsEveryKeyLocalisesAndResolvesIconsByScale) {
    auto loaded = plat::loadSpecifiersFromPlist(plat::Bundle(toy::kBundle), "Toy", nullptr);
    ASSERT_EQ(loaded.specifiers->count(), 8u);  // the one non-dictionary item is skipped
    EXPECT_EQ(loaded.title, "The Toy Page");
    const auto row = [&](std::size_t index) { return loaded.specifiers->objectAtIndex(index); };
    EXPECT_EQ(row(0)->cellType(), plat::PSGroupCell);
    EXPECT_EQ(row(0)->propertyForKey("footerText").str(), "Toys are shown below.");
    auto toggle = row(1);
    EXPECT_EQ(toggle->name(), "Enabled Toys");
    EXPECT_EQ(toggle->cellType(), plat::PSSwitchCell);
    EXPECT_EQ(toggle->setter(), "toyEnabledOrDisabled:specifier:");
    EXPECT_EQ(toggle->propertyForKey("customKey").str(), "kept");
    EXPECT_EQ(toggle->propertyForKey("cellClass").str(), "ToySwitchCell");
    EXPECT_EQ(toggle->propertyForKey("PostNotification").str(), "com.example.toy.changed");

    EXPECT_EQ(row(2)->detailControllerClass(), "ToyDetailController");
    EXPECT_EQ(row(3)->action(), "pickPicture:");

    // Scale 3 picks the @3x file (87 px); the row keeps its "icon" key as well.
    auto icon = row(7)->propertyForKey("iconImage").as<plat::Image>();
    ASSERT_TRUE(icon);
    EXPECT_EQ(std::pair(icon->pixelWidth(), icon->scale()), std::pair(87, 3.0));
    EXPECT_EQ(row(7)->propertyForKey("icon").str(), "toyicon.png");

    // One log line for the skipped item, and every call makes new rows.
    EXPECT_EQ(device.logLines().size(), 1u);
    auto again = plat::loadSpecifiersFromPlist(plat::Bundle(toy::kBundle), "Toy", nullptr);
    again.specifiers->objectAtIndex(1)->properties().setValueForKey("customKey", "changed");
    EXPECT_EQ(toggle->propertyForKey("customKey").str(), "kept");
}

TEST_F(PrefsTest, MissingOrMalformedResourcesGiveAnEmptyListAndOneLogLine) {
    for (const char* name : {"Absent", "Broken", "NoItems"}) {
        const auto before = device.logLines().size();
        auto loaded = plat::loadSpecifiersFromPlist(plat::Bundle(toy::kBundle), name, nullptr);
        EXPECT_TRUE(loaded.specifiers->empty()) << name;
        EXPECT_EQ(device.logLines().size(), before + 1) << name;
    }
}

TEST_F(PrefsTest, HeldListIsNullUntilBuiltAndIndexErrorsRaiseRangeError) {
    auto page = openToy(false);
    EXPECT_EQ(page->heldSpecifiers(), nullptr);
    EXPECT_THROW(page->specifierAtIndex(0), plat::RangeError);
    EXPECT_THROW(page->removeSpecifierAtIndex(0, true), plat::RangeError);

    auto list = page->specifiers();
    EXPECT_EQ(list->count(), 2u);  // pruned to the group and its switch
    EXPECT_EQ(list->objectAtIndex(1)->identifier(), "ToyEnabled");
    EXPECT_EQ(page->specifiers(), list);  // built once, then the same list
    EXPECT_EQ(page->navigationItem().title(), "The Toy Page");
    EXPECT_THROW(page->specifierAtIndex(2), plat::RangeError);
    EXPECT_THROW(page->insertSpecifier(list->objectAtIndex(0), 3, false), plat::RangeError);
    // An unsigned count-down from an empty list wraps and fails on its first removal.
    EXPECT_THROW(page->removeSpecifierAtIndex(std::size_t{0} - 1, true), plat::RangeError);
    EXPECT_EQ(list->count(), 2u);
}

TEST_F(PrefsTest, SwitchWritesBinaryDefaultsAndPostsAndARefusedWriteIsNotOnTheRecordButPosts) {
    auto page = openToy();
    auto toggle = page->specifierAtIndex(1);

    plat::Runtime::shared().perform(*page, toggle->setter(), {Value::boolean(true), Value(toggle)});

    // The value is stored as a binary plist in the row's defaults domain.
    auto bytes = device.process().root().readFile(toy::kDomainFile);
    ASSERT_TRUE(bytes);
    EXPECT_EQ(std::string(bytes->begin(), bytes->begin() + 8), "bplist00");
    EXPECT_TRUE(plat::propertyListFromData(*bytes).objectForKey("ToyEnabled").boolValue());
    EXPECT_EQ(device.notifications(), std::vector<std::string>{"com.example.toy.changed"});

    // A file where the preferences folder belongs: no domain can be written.
    std::filesystem::remove_all(device.host("/var/mobile/Library/Preferences"));
    device.writeText("/var/mobile/Library/Preferences", "x");
    const auto mark = device.journal().size();
    plat::Runtime::shared().perform(*page, toggle->setter(),
                                    {Value::boolean(false), Value(toggle)});
    EXPECT_THAT(device.journalLines(mark),
                ::testing::ElementsAre(::testing::StartsWith("preference-write-refused "),
                                       "notification com.example.toy.changed", "synchronize"));
}

TEST_F(PrefsTest, CellsComeFromTheirCellClassAndShowStoredOrDefaultValues) {
    device.writePlist(toy::kDomainFile, Value::dictionary({{"ToyEnabled", Value::boolean(true)}}));
    auto page = openToy();
    EXPECT_EQ(std::tuple(page->numberOfGroups(), page->rowsForGroup(0), page->indexForRow(1, 1)),
              std::tuple(2u, 4u, 7u));  // groups, rows of the first, the second's row 1

    auto cell = page->tableViewCellForRowAtIndexPath(0, 0);
    ASSERT_TRUE(cell);
    EXPECT_EQ(cell->className(), "ToySwitchCell");
    ASSERT_TRUE(cell->control());
    EXPECT_TRUE(cell->control()->isOn());
    EXPECT_EQ(page->specifierAtIndex(1)->propertyForKey("cellObject").as<plat::TableCell>(), cell);

    // No stored value: the row's "default" shows.
    auto plain = page->tableViewCellForRowAtIndexPath(0, 1);
    EXPECT_EQ(plain->className(), "PSTableCell");
    EXPECT_TRUE(plain->control()->isOn());
    EXPECT_EQ(page->readPreferenceValue(page->specifierAtIndex(6)), Value::boolean(true));
}

}  // namespace
