#include "platform/system/device_facts.h"

#include <gtest/gtest.h>

#include "platform/foundation/plist.h"
#include "platform/system/device_root.h"
#include "tests/platform/system/temp_folder.h"

namespace plat {
namespace {

class DeviceFactsTest : public ::testing::Test {
  protected:
    testing::TempFolder host;
    DeviceRoot root{host.path()};

    void write(const std::string& devicePath, const Value& value, PropertyListFormat format) {
        auto bytes = dataFromPropertyList(value, format);
        ASSERT_TRUE(bytes.has_value());
        ASSERT_TRUE(root.createDirectory(devicePath.substr(0, devicePath.rfind('/')), true));
        ASSERT_TRUE(root.writeFile(devicePath, *bytes, true));
    }
    void writeVersion(const std::string& version) {
        write("/System/Library/CoreServices/SystemVersion.plist",
              Value::dictionary({{"ProductVersion", version}}), PropertyListFormat::XML);
    }
};

TEST_F(DeviceFactsTest, AnEmptyOrUnreadableDeviceIsARecentIPhone) {
    ASSERT_TRUE(root.writeFile("/DeviceProfile.plist", Bytes{'<', 'x'}, true));
    DeviceFacts facts = DeviceFacts::read(root);
    EXPECT_EQ(facts.family, DeviceFamily::iPhone);
    EXPECT_EQ(facts.productType.rfind("iPhone", 0), 0u) << facts.productType;
    EXPECT_EQ(facts.systemVersion, "14.4");
    EXPECT_TRUE(facts.faceTime);
    EXPECT_EQ(facts.screenScale, 3);
}

TEST_F(DeviceFactsTest, TheProfileAndSystemVersionAreReadAfreshEachTime) {
    writeVersion("12.5.7");
    write("/DeviceProfile.plist",
          Value::dictionary({{"DeviceFamily", "iPad"},
                             {"ProductType", "iPad7,5"},
                             {"FaceTime", Value::boolean(false)},
                             {"ScreenScale", Value::integer(2)}}),
          PropertyListFormat::Binary);
    DeviceFacts facts = DeviceFacts::read(root);
    EXPECT_EQ(facts.systemVersion, "12.5.7");
    EXPECT_EQ(facts.family, DeviceFamily::iPad);
    EXPECT_EQ(facts.productType, "iPad7,5");
    EXPECT_FALSE(facts.faceTime);
    EXPECT_EQ(facts.screenScale, 2);

    writeVersion("15.1");
    EXPECT_EQ(DeviceFacts::read(root).systemVersion, "15.1");
}

TEST_F(DeviceFactsTest, MissingOrNonsenseKeysFollowTheFamily) {
    write("/DeviceProfile.plist",
          Value::dictionary({{"DeviceFamily", "iPod"},
                             {"ScreenScale", Value::real(7.5)},
                             {"ProductType", Value::integer(5)}}),
          PropertyListFormat::XML);
    DeviceFacts facts = DeviceFacts::read(root);
    EXPECT_STREQ(familyName(facts.family), "iPod");
    EXPECT_EQ(facts.productType.rfind("iPod", 0), 0u) << facts.productType;
    EXPECT_EQ(facts.screenScale, 2);  // no iPod had a 3x screen
    EXPECT_TRUE(facts.faceTime);
}

TEST(SystemVersionTest, ComparesNumericallyNotAsText) {
    auto at = [](const char* version, int major, int minor) {
        DeviceFacts facts;
        facts.systemVersion = version;
        return facts.systemVersionAtLeast(major, minor);
    };
    EXPECT_FALSE(at("9.3", 10, 0));
    EXPECT_TRUE(at("10.0", 9, 3));
    EXPECT_TRUE(at("13", 13, 0));
    EXPECT_FALSE(at("13", 13, 1));
    EXPECT_TRUE(at("13.10", 13, 9));
    EXPECT_TRUE(at("14.4.1", 14, 4));
    EXPECT_FALSE(at("14.3.9", 14, 4));
}

}  // namespace
}  // namespace plat
