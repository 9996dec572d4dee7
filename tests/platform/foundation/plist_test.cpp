#include "platform/foundation/plist.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
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

// Seconds from 2001-01-01 to a UTC calendar time, worked out by the standard library.
double sinceReferenceDate(std::chrono::sys_seconds t) {
    using namespace std::chrono;
    return static_cast<double>((t - sys_seconds{sys_days{2001y / January / 1}}).count());
}

Bytes gunk() {
    const std::string piece = "<lots of binary gunk>";
    Bytes out;
    for (int i = 0; i < 10; ++i) {
        out.insert(out.end(), piece.begin(), piece.end());
        for (std::uint8_t b = 0; b < 4; ++b)
            out.push_back(b);
    }
    return out;
}

// Every value the oracles' README lists, with its kind.
void expectOracleDictionary(const Value& d) {
    using namespace std::chrono;
    ASSERT_TRUE(d.isDictionary());
    EXPECT_EQ(d.count(), 16u);
    EXPECT_EQ(d.objectForKey("aString").str(), "Doodah");
    for (auto [key, n] : {std::pair{"anInt", INT64_C(728)},
                          {"aNegativeInt", -5},
                          {"aNegativeBigInt", INT64_C(-80000000000)},
                          {"aBigInt", INT64_C(9223372036854775764)}}) {
        EXPECT_TRUE(d.objectForKey(key).isInteger()) << key;
        EXPECT_FALSE(d.objectForKey(key).isUnsignedBig()) << key;
        EXPECT_EQ(d.objectForKey(key).integerValue(), n) << key;
    }
    const Value big2 = d.objectForKey("aBigInt2");
    EXPECT_TRUE(big2.isInteger() && big2.isUnsignedBig());
    EXPECT_EQ(big2.unsignedValue(), UINT64_C(9223372036854775852));
    EXPECT_TRUE(d.objectForKey("aFloat").isReal());
    EXPECT_EQ(d.objectForKey("aFloat").doubleValue(), 0.5);
    EXPECT_EQ(d.objectForKey("aDate").asDate(),
              sinceReferenceDate(sys_days{2004y / October / 26} + 10h + 33min + 33s));
    EXPECT_EQ(
        d.objectForKey("aList"),
        Value::array({"A", "B", Value::integer(12), Value::real(32.5),
                      Value::array({Value::integer(1), Value::integer(2), Value::integer(3)})}));
    EXPECT_TRUE(d.objectForKey("aList").objectAtIndex(3).isReal());
    const Value inner = d.objectForKey("aDict");
    EXPECT_TRUE(inner.objectForKey("aFalseValue").isBoolean());
    EXPECT_FALSE(inner.objectForKey("aFalseValue").boolValue());
    EXPECT_TRUE(inner.objectForKey("aTrueValue").isBoolean());
    EXPECT_TRUE(inner.objectForKey("aTrueValue").boolValue());
    EXPECT_EQ(inner.objectForKey("aUnicodeValue").str(), "M\u00e4ssig, Ma\u00df");
    EXPECT_EQ(inner.objectForKey("anotherString").str(), "<hello & 'hi' there!>");
    EXPECT_EQ(
        inner.objectForKey("deeperDict"),
        Value::dictionary({{"a", Value::integer(17)},
                           {"b", Value::real(32.5)},
                           {"c", Value::array({Value::integer(1), Value::integer(2), "text"})}}));
    EXPECT_TRUE(d.objectForKey("anEmptyDict").isDictionary());
    EXPECT_EQ(d.objectForKey("anEmptyDict").count(), 0u);
    EXPECT_TRUE(d.objectForKey("anEmptyList").isArray());
    EXPECT_EQ(d.objectForKey("anEmptyList").count(), 0u);
    const std::string small = "<binary gunk>";
    EXPECT_EQ(d.objectForKey("someData"), Value::data(Bytes(small.begin(), small.end())));
    EXPECT_EQ(d.objectForKey("someMoreData"), Value::data(gunk()));
    EXPECT_EQ(d.objectForKey("nestedData"), Value::array({Value::data(gunk())}));
    EXPECT_EQ(d.objectForKey("\u00c5benraa").str(), "That was a unicode key.");
}

TEST(PropertyListOracle, AppleFilesReadWithEveryValueAndKind) {
    PropertyListFormat format{};
    const Value binary = plat::propertyListFromData(oracle("apple-binary.plist"), &format);
    EXPECT_EQ(format, PropertyListFormat::Binary);
    expectOracleDictionary(binary);
    const Value xml = plat::propertyListFromData(oracle("apple-xml.plist"), &format);
    EXPECT_EQ(format, PropertyListFormat::XML);
    expectOracleDictionary(xml);
    EXPECT_EQ(binary, xml);
}

TEST(PropertyListWrite, BinaryAndXmlRoundTripEveryKind) {
    const Value original = plat::propertyListFromData(oracle("apple-binary.plist"));
    const auto binary = plat::dataFromPropertyList(original, PropertyListFormat::Binary);
    ASSERT_TRUE(binary);
    EXPECT_EQ(std::string(binary->begin(), binary->begin() + 8), "bplist00");
    // aBigInt2 as Apple writes it: a 16-byte integer, high half zero.
    EXPECT_TRUE(contains(*binary, {0x14, 0, 0, 0, 0, 0, 0, 0, 0, 0x80, 0, 0, 0, 0, 0, 0, 0x2c}));
    // Negative numbers in 8 bytes, two's complement.
    EXPECT_TRUE(contains(*binary, {0x13, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xfb}));
    expectOracleDictionary(plat::propertyListFromData(*binary));

    const auto xml = plat::dataFromPropertyList(original, PropertyListFormat::XML);
    ASSERT_TRUE(xml);
    const std::string text(xml->begin(), xml->end());
    EXPECT_EQ(text.rfind("<?xml", 0), 0u);
    EXPECT_NE(text.find("<integer>9223372036854775852</integer>"), std::string::npos);
    EXPECT_NE(text.find("<integer>-5</integer>"), std::string::npos);
    expectOracleDictionary(plat::propertyListFromData(*xml));

    // Values the oracles do not cover: integer widths and extremes, dates before the
    // reference date, past 2038 and with fractions, strings beyond the BMP, UIDs.
    const Value extremes = Value::array(
        {Value::integer(255), Value::integer(256), Value::integer(65536),
         Value::integer(INT64_C(4294967296)), Value::integer(std::numeric_limits<int64_t>::min()),
         Value::integer(std::numeric_limits<int64_t>::max()),
         Value::unsignedInteger(std::numeric_limits<uint64_t>::max()), Value::real(0.1),
         Value::real(-1e300), Value::date(-0.25), Value::date(-1234567.875),
         Value::date(63113904000.5), Value::date(1.000001), "\xF0\x9F\x98\x80 caf\u00e9",
         Value::uid(300), Value::boolean(false), Value::integer(0), Value::data({})});
    const Value back = plat::propertyListFromData(
        *plat::dataFromPropertyList(extremes, PropertyListFormat::Binary));
    ASSERT_TRUE(back.isArray());
    ASSERT_EQ(back.count(), extremes.count());
    for (std::size_t i = 0; i < extremes.count(); ++i) {
        const Value a = extremes.objectAtIndex(i), b = back.objectAtIndex(i);
        EXPECT_EQ(a.type(), b.type()) << i;
        EXPECT_EQ(a.isUnsignedBig(), b.isUnsignedBig()) << i;
        EXPECT_TRUE(a == b) << i << ": " << a.description() << " vs " << b.description();
    }
}

TEST(PropertyListWrite, RefusesWhatIsNotAPropertyListWithFoundationsReasons) {
    std::string why;
    EXPECT_FALSE(plat::dataFromPropertyList(Value(), PropertyListFormat::Binary, &why));
    EXPECT_EQ(why, "Property list invalid for format: 200 (property lists cannot contain NULL)");
    const Value withNull = Value::dictionary({{"a", Value::array({Value::null()})}});
    EXPECT_FALSE(plat::dataFromPropertyList(withNull, PropertyListFormat::Binary, &why));
    EXPECT_EQ(why,
              "Property list invalid for format: 200 (property lists cannot contain objects of "
              "type 'CFNull')");
    EXPECT_FALSE(plat::dataFromPropertyList(withNull, PropertyListFormat::XML, &why));
    EXPECT_EQ(why,
              "Property list invalid for format: 100 (property lists cannot contain objects of "
              "type 'CFNull')");
    const Value colour = Value::array({Value(plat::Color::whiteColor())});
    EXPECT_FALSE(plat::dataFromPropertyList(colour, PropertyListFormat::Binary, &why));
    EXPECT_NE(why.find("cannot contain objects of type 'UIColor'"), std::string::npos);
    const Value loop = Value::array({"x"});
    loop.addObject(Value::dictionary({{"back", loop}}));
    EXPECT_FALSE(plat::dataFromPropertyList(loop, PropertyListFormat::Binary, &why));
    EXPECT_EQ(why,
              "Property list invalid for format: 200 (property lists cannot contain recursive "
              "container references)");
    loop.removeObjectAtIndex(1);  // break the cycle so the array can be freed
    EXPECT_FALSE(plat::dataFromPropertyList(Value::dictionary({{"k", "v"}}),
                                            PropertyListFormat::OpenStep, &why));
    EXPECT_NE(why.find("not supported for writing"), std::string::npos);
    EXPECT_FALSE(plat::dataFromPropertyList(Value::string("\xff"), PropertyListFormat::XML));
    // A container shared twice is not a cycle.
    const Value shared = Value::array({Value::integer(1), Value::integer(2)});
    EXPECT_TRUE(
        plat::dataFromPropertyList(Value::array({shared, shared}), PropertyListFormat::Binary));
}

TEST(PropertyListRead, MalformedAndHostileInputGivesNil) {
    const Bytes binary = oracle("apple-binary.plist");
    for (std::size_t n = 0; n < binary.size(); ++n)
        EXPECT_TRUE(plat::propertyListFromData(Bytes(binary.begin(), binary.begin() + n)).isNil())
            << "binary prefix " << n;
    const Bytes xml = oracle("apple-xml.plist");
    for (std::size_t n = 0; n + 20 < xml.size(); n += 37)
        EXPECT_TRUE(plat::propertyListFromData(Bytes(xml.begin(), xml.begin() + n)).isNil())
            << "xml prefix " << n;
    for (const char* text : {"", "garbage", "<plist><dict><key>a</key></plist>",
                             "<plist><string>\xff\xfe</string></plist>", "bplist00"})
        EXPECT_TRUE(plat::propertyListFromData(bytesOf(text)).isNil()) << text;

    EXPECT_TRUE(plat::propertyListFromData(bplist({array({0})})).isNil()) << "self-reference";
    EXPECT_TRUE(plat::propertyListFromData(bplist({array({1}), array({0})})).isNil())
        << "two-object cycle";
    EXPECT_TRUE(plat::propertyListFromData(bplist({array({1})})).isNil()) << "dangling reference";
    EXPECT_TRUE(plat::propertyListFromData(
                    bplist({{0x5f, 0x13, 0x7f, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff}}))
                    .isNil())
        << "absurd count";
    EXPECT_TRUE(plat::propertyListFromData(bplist({{0x52, 0xc3, 0xa9}})).isNil())
        << "non-ASCII bytes in an ASCII string";
    // Each level refers twice to the next: 2^40 nodes if expanded.
    std::vector<Bytes> doubling;
    for (std::uint64_t i = 0; i < 40; ++i)
        doubling.push_back(array({i + 1, i + 1}));
    doubling.push_back({0x09});
    EXPECT_TRUE(plat::propertyListFromData(bplist(doubling)).isNil());
    // Long chains would overflow the parser's stack.
    EXPECT_TRUE(plat::propertyListFromData(nestedBinary(100000)).isNil());
    EXPECT_TRUE(plat::propertyListFromData(nestedXml(100000)).isNil());
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
    expectOracleDictionary(plat::dictionaryWithContentsOfFile("/var/a.plist"));
    EXPECT_TRUE(plat::arrayWithContentsOfFile(root, "/var/a.plist").isNil());
    device.writePlist("/var/list.plist", Value::array({"x"}));
    EXPECT_EQ(plat::arrayWithContentsOfFile("/var/list.plist"), Value::array({"x"}));
    EXPECT_TRUE(plat::dictionaryWithContentsOfFile(root, "/var/list.plist").isNil());
    EXPECT_TRUE(plat::dictionaryWithContentsOfFile("/var/missing.plist").isNil());
    EXPECT_TRUE(plat::dictionaryWithContentsOfFile("/var").isNil());
    device.writeText("/var/corrupt.plist", "<plist><dict><key>a</key><true/>");
    EXPECT_TRUE(plat::dictionaryWithContentsOfFile("/var/corrupt.plist").isNil());

    const Value settings =
        Value::dictionary({{"enabled", Value::boolean(true)}, {"n", Value::integer(3)}});
    EXPECT_TRUE(plat::writePropertyListToFile(settings, "/var/s.plist", true));
    EXPECT_TRUE(plat::writePropertyListToFile(root, settings, "/var/t.plist", false));
    for (const char* path : {"/var/s.plist", "/var/t.plist"}) {
        const Bytes written = *root.readFile(path);
        EXPECT_EQ(std::string(written.begin(), written.begin() + 5), "<?xml") << path;
        EXPECT_EQ(plat::dictionaryWithContentsOfFile(path), settings) << path;
    }
    EXPECT_FALSE(plat::writePropertyListToFile(Value::dictionary({{"a", Value::null()}}),
                                               "/var/null.plist", true));
    EXPECT_FALSE(plat::writePropertyListToFile(Value("text"), "/var/text.plist", true));
    EXPECT_FALSE(device.exists("/var/null.plist") || device.exists("/var/text.plist"));
}

TEST(PropertyListFile, InPlaceWritesKeepTheFileAtomicWritesReplaceIt) {
    testsupport::TestDevice device;
    device.writeText("/var/f.plist", "old");
    const auto host = device.host("/var/f.plist");
    const auto link = device.host("/var/link.plist");
    ASSERT_EQ(::link(host.c_str(), link.c_str()), 0);
    auto inode = [](const std::filesystem::path& p) {
        struct stat st {};
        return ::stat(p.c_str(), &st) == 0 ? st.st_ino : 0;
    };
    const auto before = inode(host);

    EXPECT_TRUE(plat::writeDataToFile(bytesOf("in place"), "/var/f.plist", false));
    EXPECT_EQ(inode(host), before);
    EXPECT_EQ(*device.process().root().readFile("/var/link.plist"), bytesOf("in place"));

    EXPECT_TRUE(
        plat::writeDataToFile(device.process().root(), bytesOf("atomic"), "/var/f.plist", true));
    EXPECT_NE(inode(host), before);
    EXPECT_EQ(*device.process().root().readFile("/var/f.plist"), bytesOf("atomic"));
    EXPECT_EQ(*device.process().root().readFile("/var/link.plist"), bytesOf("in place"));
    EXPECT_FALSE(plat::writeDataToFile(bytesOf("x"), "/no/such/folder/f", false));
}

// plistlib, an independent reader, takes our binary output and writes it back as XML, which we
// read again: every value and kind must survive both readers.
TEST(PropertyListPython, PlistlibReadsWhatWeWrite) {
    if (std::system("python3 -c 'import plistlib' >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "python3 with plistlib is not available";
    const Value original = Value::dictionary({
        {"flag", Value::boolean(true)},
        {"off", Value::boolean(false)},
        {"one", Value::integer(1)},
        {"negative", Value::integer(-80000000000)},
        {"big", Value::unsignedInteger(UINT64_C(9223372036854775852))},
        {"real", Value::real(2.5)},
        {"when", Value::date(120479613)},
        {"bytes", Value::data({0, 1, 2, 255})},
        {"\u00c5benraa", "M\u00e4ssig \xF0\x9F\x98\x80"},
        {"nested", Value::array({Value::dictionary({{"k", "v"}}), Value::array()})},
    });
    const Value back =
        throughPlistlib(*plat::dataFromPropertyList(original, PropertyListFormat::Binary),
                        "result = plistlib.dumps(plistlib.loads(data), fmt=plistlib.FMT_XML)");
    EXPECT_EQ(back, original);
    EXPECT_TRUE(back.objectForKey("flag").isBoolean());
    EXPECT_TRUE(back.objectForKey("one").isInteger());
    EXPECT_TRUE(back.objectForKey("real").isReal());
    EXPECT_TRUE(back.objectForKey("big").isUnsignedBig());
}

}  // namespace
