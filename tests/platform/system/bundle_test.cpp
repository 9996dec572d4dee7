#include "platform/system/bundle.h"

#include <gtest/gtest.h>

#include "platform/foundation/plist.h"
#include "platform/system/process.h"
#include "tests/platform/system/temp_folder.h"

namespace plat {
namespace {

class BundleTest : public ::testing::Test {
  protected:
    testing::TempFolder host;
    Process process{host.path(), Process::Options{"Preferences", false}};
    ProcessScope scope{process};
    const std::string path = "/System/Library/PreferenceBundles/Example.bundle";
    Bundle bundle{path};

    void write(const std::string& devicePath, const Bytes& bytes) {
        ASSERT_TRUE(
            process.root().createDirectory(devicePath.substr(0, devicePath.rfind('/')), true));
        ASSERT_TRUE(process.root().writeFile(devicePath, bytes, true));
    }
    void writeStrings(const std::string& devicePath, const Value& table) {
        write(devicePath, dataFromPropertyList(table, PropertyListFormat::Binary).value());
    }
};

TEST_F(BundleTest, ResourcesAreFoundOnlyWhenTheyExist) {
    write(path + "/icon@2x.png", {1});
    EXPECT_EQ(bundle.pathForResource("icon@2x", "png"), path + "/icon@2x.png");
    EXPECT_EQ(bundle.pathForResource("icon@2x.png", ""), path + "/icon@2x.png");
    EXPECT_EQ(bundle.pathForResource("icon", "png"), "");
    EXPECT_EQ(Bundle::mainBundle().bundlePath(), "/Applications/Preferences.app");
}

TEST_F(BundleTest, TranslationsComeFromTheTableInTheFolderThenEnglish) {
    write(path + "/Localizable.strings", {'b', 'p', 'l', 'i', 's', 't'});  // broken: skipped
    writeStrings(path + "/en.lproj/Localizable.strings",
                 Value::dictionary({{"TITLE", "English title"}, {"NUMBER", Value::integer(3)}}));
    writeStrings(path + "/Root.strings", Value::dictionary({{"TITLE", "Root"}}));
    writeStrings(path + "/en.lproj/Root.strings", Value::dictionary({{"TITLE", "Shadowed"}}));

    EXPECT_EQ(bundle.localizedStringForKey("TITLE", "", ""), "English title");
    EXPECT_EQ(bundle.localizedStringForKey("TITLE", "", "Root"), "Root");
    // Without a translation: the value, else the key.
    EXPECT_EQ(bundle.localizedStringForKey("MISSING", "Fallback", ""), "Fallback");
    EXPECT_EQ(bundle.localizedStringForKey("MISSING", "", "NoSuchTable"), "MISSING");
    EXPECT_EQ(bundle.localizedStringForKey("NUMBER", "", ""), "NUMBER");  // not a string
}

}  // namespace
}  // namespace plat
