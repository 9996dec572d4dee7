#include "platform/foundation/plist.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <limits>
#include <tuple>
#include <vector>

#include "platform/system/plist_file.h"
#include "platform/ui/color.h"
#include "tests/platform/foundation/plist_test_support.h"

namespace {

using plat::Bytes;
using plat::PropertyListFormat;
using plat::Value;
using namespace plisttest;
using I = std::int64_t;

const auto n = [](I i) { return Value::integer(i); };

// What the oracles' README says a correct reader gets, kinds included.
Value appleDictionary() {
    using namespace std::chrono;
    const duration<double> date =
        sys_days{2004y / October / 26} + 10h + 33min + 33s - sys_days{2001y / January / 1};
    std::string gunk;
    for (int i = 0; i < 10; ++i)
        gunk += std::string("<lots of binary gunk>\0\1\2\3", 25);
    return Value::dictionary({
        {"aString", "Doodah"},
        {"anInt", n(728)},
        {"aNegativeInt", n(-5)},
        {"aNegativeBigInt", n(-80000000000)},
        {"aBigInt", n(9223372036854775764)},
        {"aBigInt2", Value::unsignedInteger(9223372036854775852u)},
        {"aFloat", Value::real(0.5)},
        {"aDate", Value::date(date.count())},
        {"aList",
         Value::array({"A", "B", n(12), Value::real(32.5), Value::array({n(1), n(2), n(3)})})},
        {"aDict",
         Value::dictionary(
             {{"aFalseValue", Value::boolean(false)},
              {"aTrueValue", Value::boolean(true)},
              {"aUnicodeValue", "M\u00e4ssig, Ma\u00df"},
              {"anotherString", "<hello & 'hi' there!>"},
              {"deeperDict", Value::dictionary({{"a", n(17)},
                                                {"b", Value::real(32.5)},
                                                {"c", Value::array({n(1), n(2), "text"})}})}})},
        {"anEmptyDict", Value::dictionary()},
        {"anEmptyList", Value::array()},
        {"someData", Value::data(bytesOf("<binary gunk>"))},
        {"someMoreData", Value::data(bytesOf(gunk))},
        {"nestedData", Value::array({Value::data(bytesOf(gunk))})},
        {"\u00c5benraa", "That was a unicode key."},
    });
}

void put(Bytes& to, std::uint64_t v, int width) {
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
        to.push_back(v >> shift & 0xff);
}

// A binary plist put together by hand (objects as marker + payload, 4-byte references and
// offsets, root object 0), for files no writer would make. 0xA1 marks an array of one.
Bytes bplist(const std::vector<Bytes>& objects) {
    Bytes out = bytesOf("bplist00"), table;
    for (const auto& object : objects) {
        put(table, out.size(), 4);
        out.insert(out.end(), object.begin(), object.end());
    }
    const std::uint64_t tableOffset = out.size();
    out.insert(out.end(), table.begin(), table.end());
    out.insert(out.end(), {0, 0, 0, 0, 0, 0, 4, 4});
    for (std::uint64_t field : {std::uint64_t(objects.size()), std::uint64_t{0}, tableOffset})
        put(out, field, 8);
    return out;
}

Bytes nestedXml(std::size_t levels) {
    std::string open, close;
    for (std::size_t i = 0; i < levels; ++i)
        open += "<array>", close += "</array>";
    return bytesOf("<plist version=\"1.0\">" + open + close + "</plist>");
}

TEST(PropertyListOracle, AppleFilesReadWithEveryValueAndKind) {
    for (auto [file, expected] : {std::pair{"apple-binary.plist", PropertyListFormat::Binary},
                                  {"apple-xml.plist", PropertyListFormat::XML}}) {
        PropertyListFormat format{};
        const Value read = plat::propertyListFromData(oracle(file), &format);
        EXPECT_EQ(format, expected) << file;
        expectSame(read, appleDictionary());  // aBigInt2 included: unsigned, not wrapped
    }
}

TEST(PropertyListWrite, BinaryAndXmlRoundTripEveryKind) {
    // Beyond Apple's files (in binary: XML keeps whole seconds): integer widths and extremes,
    // dates before 2001, past 2038 and with fractions, strings beyond the BMP, UIDs.
    const Value more = Value::array(
        {n(255), n(256), n(65536), n(4294967296), n(std::numeric_limits<I>::min()),
         n(std::numeric_limits<I>::max()),
         Value::unsignedInteger(std::numeric_limits<std::uint64_t>::max()), Value::real(0.1),
         Value::real(-1e300), Value::date(-0.25), Value::date(-1234567.875),
         Value::date(63113904000.5), Value::date(1.000001), "\xF0\x9F\x98\x80 caf\u00e9",
         Value::uid(300), Value::boolean(false), n(0), Value::data({})});
    for (auto [format, magic] :
         {std::pair{PropertyListFormat::Binary, "bplist00"}, {PropertyListFormat::XML, "<?xml"}}) {
        const auto bytes = plat::dataFromPropertyList(appleDictionary(), format);
        ASSERT_TRUE(bytes);
        EXPECT_EQ(std::string(bytes->begin(), bytes->end()).rfind(magic, 0), 0u);  // starts so
        expectSame(plat::propertyListFromData(*bytes), appleDictionary());
    }
    expectSame(
        plat::propertyListFromData(*plat::dataFromPropertyList(more, PropertyListFormat::Binary)),
        more);
    // aBigInt2 as Apple writes it: 16 bytes, high half zero; negatives in 8 bytes.
    const Bytes apple = *plat::dataFromPropertyList(appleDictionary(), PropertyListFormat::Binary);
    EXPECT_TRUE(contains(apple, {0x14, 0, 0, 0, 0, 0, 0, 0, 0, 0x80, 0, 0, 0, 0, 0, 0, 0x2c}));
    EXPECT_TRUE(contains(apple, {0x13, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xfb}));
}

TEST(PropertyListWrite, RefusesWhatIsNotAPropertyListWithFoundationsReasons) {
    const Value withNull = Value::dictionary({{"a", Value::array({Value::null()})}});
    const Value loop = Value::array({"x"});
    loop.addObject(Value::dictionary({{"back", loop}}));
    const std::tuple<Value, PropertyListFormat, std::string> cases[] = {
        {Value(), PropertyListFormat::Binary, "NULL"},
        {withNull, PropertyListFormat::Binary, "objects of type 'CFNull'"},
        {withNull, PropertyListFormat::XML, "objects of type 'CFNull'"},
        {Value::array({plat::Color::whiteColor()}), PropertyListFormat::Binary,
         "objects of type 'UIColor'"},
        {loop, PropertyListFormat::Binary, "recursive container references"},
    };
    for (const auto& [value, format, what] : cases) {
        std::string why;
        EXPECT_FALSE(plat::dataFromPropertyList(value, format, &why));
        EXPECT_EQ(why, "Property list invalid for format: " + std::to_string(int(format)) +
                           " (property lists cannot contain " + what + ")");
    }
    loop.removeAllObjects();  // lets the array be freed
    std::string why;
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
    for (std::size_t len = 0; len < binary.size(); ++len)
        EXPECT_TRUE(plat::propertyListFromData(Bytes(binary.begin(), binary.begin() + len)).isNil())
            << "binary prefix " << len;
    for (std::size_t len = 0; len + 20 < xml.size(); len += 37)
        EXPECT_TRUE(plat::propertyListFromData(Bytes(xml.begin(), xml.begin() + len)).isNil())
            << "xml prefix " << len;
    for (const char* text : {"", "garbage", "<plist><dict><key>a</key></plist>",
                             "<plist><string>\xff\xfe</string></plist>", "bplist00"})
        EXPECT_TRUE(plat::propertyListFromData(bytesOf(text)).isNil()) << text;

    const std::pair<const char*, Bytes> cases[] = {
        {"self-reference", bplist({{0xA1, 0, 0, 0, 0}})},
        {"two-object cycle", bplist({{0xA1, 0, 0, 0, 1}, {0xA1, 0, 0, 0, 0}})},
        {"dangling reference", bplist({{0xA1, 0, 0, 0, 1}})},
        {"absurd count", bplist({{0x5f, 0x13, 0x7f, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff}})},
        {"non-ASCII in an ASCII string", bplist({{0x52, 0xc3, 0xa9}})},
        {"NUL in a key", bplist({{0xd1, 0, 0, 0, 1, 0, 0, 0, 2}, {0x52, 'a', 0}, {0x09}})},
        {"XML nesting past the stack", nestedXml(100000)},
    };
    for (const auto& [what, bytes] : cases)
        EXPECT_TRUE(plat::propertyListFromData(bytes).isNil()) << what;
}

// XML nests no deeper than it can be read back; binary, read and written without a stack
// limit, as deep as a file goes.
TEST(PropertyListRead, XmlNestingLimitIsTheSameForReadingAndWritingBinaryHasNone) {
    const std::size_t limit = plat::kMaxPropertyListDepth;
    EXPECT_EQ(depthOf(plat::propertyListFromData(nestedXml(limit))), limit);
    EXPECT_TRUE(plat::propertyListFromData(nestedXml(limit + 1)).isNil());
    Value deep = Value::array();
    for (std::size_t i = 1; i < limit; ++i)
        deep = Value::array({deep});
    EXPECT_TRUE(plat::dataFromPropertyList(deep, PropertyListFormat::XML));
    EXPECT_FALSE(plat::dataFromPropertyList(Value::array({deep}), PropertyListFormat::XML));
    for (std::size_t i = limit; i < 10000; ++i)
        deep = Value::array({deep});
    const auto binary = plat::dataFromPropertyList(deep, PropertyListFormat::Binary);
    ASSERT_TRUE(binary);
    EXPECT_EQ(depthOf(plat::propertyListFromData(*binary)), 10000u);
}

// In place or atomically is the device port's rule (DevicePortTest), passed on unchanged.
TEST(PropertyListFile,
     ReadsOnlyTheRightRootWritesOnlyContainersAsXmlAndSetsAsideOnlyTheUnreadable) {
    testsupport::TestDevice device;
    const plat::DeviceRoot& root = device.process().root();
    device.writePlist("/var/list.plist", Value::array({"x"}));
    const Value settings = Value::dictionary({{"on", Value::boolean(true)}, {"n", n(3)}});
    EXPECT_TRUE(plat::writePropertyListToFile(settings, "/var/s.plist", true));
    EXPECT_TRUE(plat::writePropertyListToFile(root, settings, "/var/t.plist", false));
    for (const char* path : {"/var/s.plist", "/var/t.plist"}) {
        EXPECT_EQ(root.readFile(path)->at(0), '<') << path;
        expectSame(plat::dictionaryWithContentsOfFile(root, path), settings);
    }
    EXPECT_TRUE(plat::arrayWithContentsOfFile(root, "/var/s.plist").isNil());
    EXPECT_EQ(plat::arrayWithContentsOfFile("/var/list.plist"), Value::array({"x"}));
    device.writeText("/var/corrupt.plist", "<plist><dict><key>a</key><true/>");
    for (const char* path : {"/var/list.plist", "/var/missing.plist", "/var", "/var/corrupt.plist"})
        EXPECT_TRUE(plat::dictionaryWithContentsOfFile(path).isNil()) << path;
    EXPECT_FALSE(plat::writePropertyListToFile(Value::dictionary({{"a", Value::null()}}),
                                               "/var/null.plist", true));
    EXPECT_FALSE(plat::writePropertyListToFile(Value("text"), "/var/text.plist", true));
    EXPECT_FALSE(device.exists("/var/null.plist") || device.exists("/var/text.plist"));

    // Data written over a file never replaces what could not be read: a readable file, or none,
    // is replaced in place; an unreadable one is first moved aside byte for byte, with one log
    // line.
    const auto asideFiles = [&] {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(device.host("/var")))
            if (entry.path().filename().string().starts_with("w.plist.unreadable-"))
                names.push_back(entry.path().filename().string());
        return names;
    };
    const Bytes fresh = *plat::dataFromPropertyList(
        Value::dictionary({{"A", Value::boolean(true)}}), PropertyListFormat::Binary);
    device.journal().clear();
    ASSERT_TRUE(plat::writeDataToFile(fresh, "/var/w.plist", false));  // none there
    device.writePlist("/var/w.plist", Value::dictionary({{"B", Value::boolean(true)}}), true);
    ASSERT_TRUE(plat::writeDataToFile(fresh, "/var/w.plist", true));
    EXPECT_TRUE(asideFiles().empty());
    EXPECT_TRUE(device.logLines().empty());

    for (const std::string& content :
         {std::string("<?xml version=\"1.0\"?><plist><dict><key>Keep</key><string>m\xff"
                      "e</string></dict></plist>"),
          std::string("bplist00 truncated"), std::string("[1, 2]")}) {
        device.writeText("/var/w.plist", content);
        device.journal().clear();
        ASSERT_TRUE(plat::writeDataToFile(fresh, "/var/w.plist", false));
        EXPECT_TRUE(device.readPlist("/var/w.plist").objectForKey("A").boolValue());
        const auto aside = asideFiles();
        ASSERT_EQ(aside.size(), 1u) << content;
        EXPECT_EQ(readHostFile(device.host("/var/" + aside[0])), testsupport::bytesOf(content));
        EXPECT_EQ(device.logLines(), std::vector{"Moved the unreadable property list "
                                                 "/var/w.plist aside to /var/" +
                                                 aside[0]});
        std::filesystem::remove(device.host("/var/" + aside[0]));
    }
}

// Files Apple's reader takes that a tree-building reader cannot: shared objects.
TEST(PropertyListWrite, SharedObjectsAreWrittenOnceAndStayShared) {
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

// plistlib, an independent reader, takes our binary output and writes it back as XML, which we
// read again: every value and kind must survive both readers.
TEST(PropertyListPython, PlistlibReadsWhatWeWrite) {
    if (!hasPlistlib()) GTEST_SKIP() << "python3 with plistlib is not available";
    const Value back =
        throughPlistlib(*plat::dataFromPropertyList(appleDictionary(), PropertyListFormat::Binary),
                        "result = plistlib.dumps(plistlib.loads(data), fmt=plistlib.FMT_XML)");
    expectSame(back, appleDictionary());
}

}  // namespace
