// Files Apple's reader takes that a tree-building reader cannot: shared objects. And the one write
// path that never replaces what it could not read.

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/system/plist_file.h"
#include "tests/platform/foundation/plist_test_support.h"

namespace {

using plat::PropertyListFormat;
using plat::Value;

TEST(PlistReach, SharedObjectsStayShared) {
    // 300 keys refer to one array of 50 items: a few KB on disk, 15000 items when expanded.
    Value list = Value::array();
    for (int i = 0; i < 50; ++i)
        list.asArray()->push_back(Value("item" + std::to_string(i)));
    Value settings = Value::dictionary({{"Keep", Value("me")}});
    for (int i = 0; i < 300; ++i)
        settings.setValueForKey("K" + std::to_string(i), list);
    const auto bytes = plat::dataFromPropertyList(settings, PropertyListFormat::Binary);
    ASSERT_TRUE(bytes);
    EXPECT_LT(bytes->size(), 8000u);  // the array is written once
    const Value back = plat::propertyListFromData(*bytes);
    ASSERT_TRUE(back.isDictionary());
    EXPECT_EQ(back.objectForKey("K0").asArray(), back.objectForKey("K299").asArray());
    EXPECT_EQ(back.objectForKey("K7").objectAtIndex(49).str(), "item49");
    // Sharing that doubles at each of 64 levels: 2^64 paths, 64 objects.
    Value chain = Value::array({Value::boolean(true)});
    for (int i = 0; i < 64; ++i)
        chain = Value::array({chain, chain});
    const auto doubled = plat::dataFromPropertyList(chain, PropertyListFormat::Binary);
    ASSERT_TRUE(doubled);
    EXPECT_TRUE(plat::propertyListFromData(*doubled).isArray());
    EXPECT_FALSE(plat::dataFromPropertyList(chain, PropertyListFormat::XML));  // no references
}

// A write replaces a readable file, or none, in place; an unreadable one is first moved aside
// byte for byte, with one log line naming where.
TEST(PlistReach, OnlyAnUnreadableFileIsMovedAsideBeforeAWrite) {
    testsupport::TestDevice device;
    const auto asideFiles = [&] {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(device.host("/var")))
            if (entry.path().filename().string().starts_with("s.plist.unreadable-"))
                names.push_back(entry.path().filename().string());
        return names;
    };
    const plat::Bytes fresh = *plat::dataFromPropertyList(
        Value::dictionary({{"A", Value::boolean(true)}}), PropertyListFormat::Binary);
    std::filesystem::create_directories(device.host("/var"));
    ASSERT_TRUE(plat::writeDataToFile(fresh, "/var/s.plist", false));  // none there
    device.writePlist("/var/s.plist", Value::dictionary({{"B", Value::boolean(true)}}), true);
    ASSERT_TRUE(plat::writeDataToFile(fresh, "/var/s.plist", true));
    EXPECT_TRUE(asideFiles().empty());
    EXPECT_TRUE(device.logLines().empty());

    const std::string bad =
        "<?xml version=\"1.0\"?><plist><dict><key>Keep</key><string>m\xff"
        "e</string></dict></plist>";
    for (const std::string& content :
         {bad, std::string("bplist00 truncated"), std::string("[1, 2]")}) {
        device.writeText("/var/s.plist", content);
        device.journal().clear();
        ASSERT_TRUE(plat::writeDataToFile(fresh, "/var/s.plist", false));
        EXPECT_TRUE(device.readPlist("/var/s.plist").objectForKey("A").boolValue());
        const auto aside = asideFiles();
        ASSERT_EQ(aside.size(), 1u) << content;
        EXPECT_EQ(plisttest::readHostFile(device.host("/var/" + aside[0])),
                  testsupport::bytesOf(content));
        EXPECT_EQ(device.logLines(), std::vector{"Moved the unreadable property list "
                                                 "/var/s.plist aside to /var/" +
                                                 aside[0]});
        std::filesystem::remove(device.host("/var/" + aside[0]));
    }
}

}  // namespace
