#include "platform/foundation/plist.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <limits>

#include "platform/foundation/plist_file.h"
#include "platform/ui/color.h"
#include "tests/platform/foundation/plist_test_support.h"
#include "tests/support/test_device.h"

namespace {

using plat::Bytes;
using plat::PropertyListFormat;
using plat::Value;
using namespace plisttest;
using I = std::int64_t;

// What the oracles' README says a correct reader gets, kinds included.
Value appleDictionary() {
    using namespace std::chrono;
    const auto date = sys_days{2004y / October / 26} + 10h + 33min + 33s;
    const double since2001 = (date - sys_seconds{sys_days{2001y / January / 1}}).count();
    Bytes gunk;
    for (int i = 0; i < 10; ++i) {
        const Bytes piece = bytesOf("<lots of binary gunk>");
        gunk.insert(gunk.end(), piece.begin(), piece.end());
        gunk.insert(gunk.end(), {0, 1, 2, 3});
    }
    auto ints = [](std::initializer_list<I> list) {
        Value a = Value::array();
        for (I i : list)
            a.addObject(Value::integer(i));
        return a;
    };
    return Value::dictionary({
        {"aString", "Doodah"},
        {"anInt", Value::integer(728)},
        {"aNegativeInt", Value::integer(-5)},
        {"aNegativeBigInt", Value::integer(-80000000000)},
        {"aBigInt", Value::integer(9223372036854775764)},
        {"aBigInt2", Value::unsignedInteger(9223372036854775852u)},
        {"aFloat", Value::real(0.5)},
        {"aDate", Value::date(since2001)},
        {"aList", Value::array({"A", "B", Value::integer(12), Value::real(32.5), ints({1, 2, 3})})},
        {"aDict", Value::dictionary(
                      {{"aFalseValue", Value::boolean(false)},
                       {"aTrueValue", Value::boolean(true)},
                       {"aUnicodeValue", "M\u00e4ssig, Ma\u00df"},
                       {"anotherString", "<hello & 'hi' there!>"},
                       {"deeperDict",
                        Value::dictionary({{"a", Value::integer(17)},
                                           {"b", Value::real(32.5)},
                                           {"c", Value::array({Value::integer(1), Value::integer(2),
                                                               "text"})}})}})},
        {"anEmptyDict", Value::dictionary()},
        {"anEmptyList", Value::array()},
        {"someData", Value::data(bytesOf("<binary gunk>"))},
        {"someMoreData", Value::data(gunk)},
        {"nestedData", Value::array({Value::data(gunk)})},
        {"\u00c5benraa", "That was a unicode key."},
    });
}

TEST(PropertyListOracle, AppleFilesReadWithEveryValueAndKind) {
    PropertyListFormat format{};
    const Value binary = plat::propertyListFromData(oracle("apple-binary.plist"), &format);
    EXPECT_EQ(format, PropertyListFormat::Binary);
    expectSame(binary, appleDictionary());
    EXPECT_TRUE(binary.objectForKey("aBigInt2").isUnsignedBig());
    EXPECT_EQ(binary.objectForKey("aBigInt2").unsignedValue(), 9223372036854775852u);
    const Value xml = plat::propertyListFromData(oracle("apple-xml.plist"), &format);
    EXPECT_EQ(format, PropertyListFormat::XML);
    expectSame(xml, appleDictionary());
}

TEST(PropertyListWrite, BinaryAndXmlRoundTripEveryKind) {
    const auto binary = plat::dataFromPropertyList(appleDictionary(), PropertyListFormat::Binary);
    ASSERT_TRUE(binary);
    EXPECT_EQ(std::string(binary->begin(), binary->begin() + 8), "bplist00");
    // aBigInt2 as Apple writes it: 16 bytes, high half zero; negatives in 8 bytes.
    EXPECT_TRUE(contains(*binary, {0x14, 0, 0, 0, 0, 0, 0, 0, 0, 0x80, 0, 0, 0, 0, 0, 0, 0x2c}));
    EXPECT_TRUE(contains(*binary, {0x13, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xfb}));
    expectSame(plat::propertyListFromData(*binary), appleDictionary());

    const auto xml = plat::dataFromPropertyList(appleDictionary(), PropertyListFormat::XML);
    ASSERT_TRUE(xml);
    const std::string text(xml->begin(), xml->end());
    EXPECT_EQ(text.rfind("<?xml", 0), 0u);
    EXPECT_NE(text.find("<integer>9223372036854775852</integer>"), std::string::npos);
    expectSame(plat::propertyListFromData(*xml), appleDictionary());

    // Integer widths and extremes, dates before 2001, past 2038 and with fractions, strings
    // beyond the BMP, UIDs.
    const Value more = Value::array(
        {Value::integer(255), Value::integer(256), Value::integer(65536),
         Value::integer(4294967296), Value::integer(std::numeric_limits<I>::min()),
         Value::integer(std::numeric_limits<I>::max()),
         Value::unsignedInteger(std::numeric_limits<std::uint64_t>::max()), Value::real(0.1),
         Value::real(-1e300), Value::date(-0.25), Value::date(-1234567.875),
         Value::date(63113904000.5), Value::date(1.000001), "\xF0\x9F\x98\x80 caf\u00e9",
         Value::uid(300), Value::boolean(false), Value::integer(0), Value::data({})});
    expectSame(
        plat::propertyListFromData(*plat::dataFromPropertyList(more, PropertyListFormat::Binary)),
        more);
}

TEST(PropertyListWrite, RefusesWhatIsNotAPropertyListWithFoundationsReasons) {
    const std::string prefix = "Property list invalid for format: ";
    std::string why;
    EXPECT_FALSE(plat::dataFromPropertyList(Value(), PropertyListFormat::Binary, &why));
    EXPECT_EQ(why, prefix + "200 (property lists cannot contain NULL)");
    const Value withNull = Value::dictionary({{"a", Value::array({Value::null()})}});
    EXPECT_FALSE(plat::dataFromPropertyList(withNull, PropertyListFormat::Binary, &why));
    EXPECT_EQ(why, prefix + "200 (property lists cannot contain objects of type 'CFNull')");
    EXPECT_FALSE(plat::dataFromPropertyList(withNull, PropertyListFormat::XML, &why));
    EXPECT_EQ(why, prefix + "100 (property lists cannot contain objects of type 'CFNull')");
    const Value colour = Value::array({Value(plat::Color::whiteColor())});
    EXPECT_FALSE(plat::dataFromPropertyList(colour, PropertyListFormat::Binary, &why));
    EXPECT_EQ(why, prefix + "200 (property lists cannot contain objects of type 'UIColor')");
    const Value loop = Value::array({"x"});
    loop.addObject(Value::dictionary({{"back", loop}}));
    EXPECT_FALSE(plat::dataFromPropertyList(loop, PropertyListFormat::Binary, &why));
    EXPECT_EQ(why, prefix + "200 (property lists cannot contain recursive container references)");
    loop.removeAllObjects();  // lets the array be freed
    EXPECT_FALSE(plat::dataFromPropertyList(Value("x"), PropertyListFormat::OpenStep, &why));
    EXPECT_NE(why.find("not supported for writing"), std::string::npos);
    // Text libplist would mangle: not UTF-8, or cut short at a NUL.
    for (const std::string& text : {std::string("\xff"), std::string("a\0b", 3)})
        EXPECT_FALSE(plat::dataFromPropertyList(Value(text), PropertyListFormat::XML));
    // A container met twice is not a cycle.
    const Value shared = Value::array({"s"});
    EXPECT_TRUE(
        plat::dataFromPropertyList(Value::array({shared, shared}), PropertyListFormat::Binary));
}

TEST(PropertyListRead, MalformedAndHostileInputGivesNil) {
    const Bytes binary = oracle("apple-binary.plist"), xml = oracle("apple-xml.plist");
    for (std::size_t n = 0; n < binary.size(); ++n)
        EXPECT_TRUE(plat::propertyListFromData(Bytes(binary.begin(), binary.begin() + n)).isNil())
            << "binary prefix " << n;
    for (std::size_t n = 0; n + 20 < xml.size(); n += 37)
        EXPECT_TRUE(plat::propertyListFromData(Bytes(xml.begin(), xml.begin() + n)).isNil())
            << "xml prefix " << n;
    for (const char* text : {"", "garbage", "<plist><dict><key>a</key></plist>",
                             "<plist><string>\xff\xfe</string></plist>", "bplist00"})
        EXPECT_TRUE(plat::propertyListFromData(bytesOf(text)).isNil()) << text;

    // Each level refers twice to the next: 2^40 nodes if expanded.
    std::vector<Bytes> doubling;
    for (std::uint64_t i = 0; i < 40; ++i)
        doubling.push_back(array({i + 1, i + 1}));
    doubling.push_back({0x09});
    const std::pair<const char*, Bytes> cases[] = {
        {"self-reference", bplist({array({0})})},
        {"two-object cycle", bplist({array({1}), array({0})})},
        {"dangling reference", bplist({array({1})})},
        {"absurd count", bplist({{0x5f, 0x13, 0x7f, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff}})},
        {"non-ASCII in an ASCII string", bplist({{0x52, 0xc3, 0xa9}})},
        {"NUL in a key", bplist({{0xd1, 0, 0, 0, 1, 0, 0, 0, 2}, {0x52, 'a', 0}, {0x09}})},
        {"shared children", bplist(doubling)},
        {"binary chain past the stack", nestedBinary(100000)},
        {"XML nesting past the stack", nestedXml(100000)},
    };
    for (const auto& [what, bytes] : cases)
        EXPECT_TRUE(plat::propertyListFromData(bytes).isNil()) << what;
}

TEST(PropertyListRead, NestingLimitIsTheSameForReadingAndWriting) {
    const std::size_t limit = plat::kMaxPropertyListDepth;
    EXPECT_EQ(depthOf(plat::propertyListFromData(nestedBinary(limit))), limit);
    EXPECT_EQ(depthOf(plat::propertyListFromData(nestedXml(limit))), limit);
    EXPECT_TRUE(plat::propertyListFromData(nestedBinary(limit + 1)).isNil());
    EXPECT_TRUE(plat::propertyListFromData(nestedXml(limit + 1)).isNil());
    EXPECT_TRUE(plat::dataFromPropertyList(nestedValue(limit), PropertyListFormat::Binary));
    EXPECT_FALSE(plat::dataFromPropertyList(nestedValue(limit + 1), PropertyListFormat::Binary));
}

TEST(PropertyListFile, ReadsOnlyTheRightRootAndWritesXml) {
    testsupport::TestDevice device;
    const plat::DeviceRoot& root = device.process().root();
    const Bytes apple = oracle("apple-binary.plist");
    device.writeText("/var/a.plist", std::string(apple.begin(), apple.end()));
    expectSame(plat::dictionaryWithContentsOfFile("/var/a.plist"), appleDictionary());
    EXPECT_TRUE(plat::arrayWithContentsOfFile(root, "/var/a.plist").isNil());
    device.writePlist("/var/list.plist", Value::array({"x"}));
    EXPECT_EQ(plat::arrayWithContentsOfFile("/var/list.plist"), Value::array({"x"}));
    EXPECT_TRUE(plat::dictionaryWithContentsOfFile(root, "/var/list.plist").isNil());
    EXPECT_TRUE(plat::dictionaryWithContentsOfFile("/var/missing.plist").isNil());
    EXPECT_TRUE(plat::dictionaryWithContentsOfFile("/var").isNil());
    device.writeText("/var/corrupt.plist", "<plist><dict><key>a</key><true/>");
    EXPECT_TRUE(plat::dictionaryWithContentsOfFile("/var/corrupt.plist").isNil());

    const Value settings =
        Value::dictionary({{"on", Value::boolean(true)}, {"n", Value::integer(3)}});
    EXPECT_TRUE(plat::writePropertyListToFile(settings, "/var/s.plist", true));
    EXPECT_TRUE(plat::writePropertyListToFile(root, settings, "/var/t.plist", false));
    for (const char* path : {"/var/s.plist", "/var/t.plist"}) {
        EXPECT_EQ(root.readFile(path)->at(0), '<') << path;
        expectSame(plat::dictionaryWithContentsOfFile(path), settings);
    }
    EXPECT_FALSE(plat::writePropertyListToFile(Value::dictionary({{"a", Value::null()}}),
                                               "/var/null.plist", true));
    EXPECT_FALSE(plat::writePropertyListToFile(Value("text"), "/var/text.plist", true));
    EXPECT_FALSE(device.exists("/var/null.plist") || device.exists("/var/text.plist"));
}

TEST(PropertyListFile, InPlaceWritesKeepTheFileAtomicWritesReplaceIt) {
    testsupport::TestDevice device;
    const plat::DeviceRoot& root = device.process().root();
    device.writeText("/var/f.plist", "old");
    const auto host = device.host("/var/f.plist");
    ASSERT_EQ(::link(host.c_str(), device.host("/var/link.plist").c_str()), 0);
    auto inode = [&] {
        struct stat st {};
        return ::stat(host.c_str(), &st) == 0 ? st.st_ino : 0;
    };
    const auto before = inode();
    EXPECT_TRUE(plat::writeDataToFile(bytesOf("in place"), "/var/f.plist", false));
    EXPECT_EQ(inode(), before);
    EXPECT_EQ(*root.readFile("/var/link.plist"), bytesOf("in place"));
    EXPECT_TRUE(plat::writeDataToFile(root, bytesOf("atomic"), "/var/f.plist", true));
    EXPECT_NE(inode(), before);
    EXPECT_EQ(*root.readFile("/var/f.plist"), bytesOf("atomic"));
    EXPECT_EQ(*root.readFile("/var/link.plist"), bytesOf("in place"));
    EXPECT_FALSE(plat::writeDataToFile(bytesOf("x"), "/no/such/folder/f", false));
}

// plistlib, an independent reader, takes our binary output and writes it back as XML, which we
// read again: every value and kind must survive both readers.
TEST(PropertyListPython, PlistlibReadsWhatWeWrite) {
    if (!hasPlistlib()) GTEST_SKIP() << "python3 with plistlib is not available";
    const Value original = appleDictionary();
    const Value back =
        throughPlistlib(*plat::dataFromPropertyList(original, PropertyListFormat::Binary),
                        "result = plistlib.dumps(plistlib.loads(data), fmt=plistlib.FMT_XML)");
    expectSame(back, original);
}

}  // namespace
