#include "platform/foundation/keyed_archive.h"

#include <cairo.h>
#include <gtest/gtest.h>

#include "platform/foundation/plist.h"
#include "platform/ui/color.h"
#include "platform/ui/image.h"
#include "tests/platform/foundation/plist_test_support.h"

namespace {

using plat::Bytes;
using plat::Value;
using namespace plisttest;

// An archive seen as the property list it is; at() follows a UID into $objects.
struct Archive {
    Value plist;
    explicit Archive(const Bytes& bytes) : plist(plat::propertyListFromData(bytes)) {}
    Value at(const Value& uid) const {
        return plist.objectForKey("$objects").objectAtIndex(static_cast<std::size_t>(*uid.asUid()));
    }
    Value root() const { return at(plist.objectForKey("$top").objectForKey("root")); }
    Value classOf(const Value& object) const { return at(object.objectForKey("$class")); }
    // The UID stored for a key of an archived dictionary.
    Value member(const Value& dict, const std::string& key) const {
        const Value keys = dict.objectForKey("NS.keys");
        for (std::size_t i = 0; i < keys.count(); ++i)
            if (at(keys.objectAtIndex(i)).str() == key)
                return dict.objectForKey("NS.objects").objectAtIndex(i);
        return Value();
    }
};

Value classes(std::initializer_list<const char*> chain) {
    Value names = Value::array();
    for (const char* name : chain)
        names.addObject(name);
    return Value::dictionary({{"$classname", *chain.begin()}, {"$classes", names}});
}

// An archive written by hand: the objects after "$null"; root UID 1 unless told (nil: none).
Bytes handArchive(std::initializer_list<Value> objects, Value root = Value::uid(1)) {
    Value all = Value::array({"$null"});
    for (const Value& o : objects)
        all.addObject(o);
    const Value top = Value::dictionary();
    top.setValueForKey("root", root);
    return *plat::dataFromPropertyList(Value::dictionary({{"$archiver", "NSKeyedArchiver"},
                                                          {"$version", Value::integer(100000)},
                                                          {"$top", top},
                                                          {"$objects", all}}),
                                       plat::PropertyListFormat::Binary);
}

// An archived object: its fields and the UID of its class description.
Value object(std::uint64_t classUid,
             std::initializer_list<std::pair<const std::string, Value>> fields) {
    Value o = Value::dictionary(fields);
    o.setValueForKey("$class", Value::uid(classUid));
    return o;
}

// A 6x4 picture: opaque red left half, opaque blue top right, transparent elsewhere.
plat::ImagePtr picture(double scale) {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 6, 4);
    cairo_t* cr = cairo_create(surface);
    cairo_set_source_rgb(cr, 1, 0, 0);
    cairo_rectangle(cr, 0, 0, 3, 4);
    cairo_fill(cr);
    cairo_set_source_rgb(cr, 0, 0, 1);
    cairo_rectangle(cr, 3, 0, 3, 2);
    cairo_fill(cr);
    cairo_destroy(cr);
    return plat::Image::adopt(surface, scale);
}

TEST(KeyedArchiveOracle, AppleArchiveDecodesThroughItsClassChain) {
    const Archive archive(oracle("apple-keyed-archive.bin"));
    EXPECT_EQ(archive.plist.objectForKey("$top").objectForKey("root"), Value::uid(1));
    EXPECT_EQ(archive.classOf(archive.root()).objectForKey("$classes"),
              classes({"OC_BuiltinPythonUnicode", "OC_PythonUnicode", "NSString", "NSObject"})
                  .objectForKey("$classes"));
    expectSame(plat::unarchiveObjectWithData(oracle("apple-keyed-archive.bin")),
               Value("KeyArchive UID Test"));
}

TEST(KeyedArchiveWrite, LayoutIsApplesArchiversLayout) {
    const Value list = Value::array({"a", Value::integer(7)});
    const Archive archive(*plat::archivedDataWithRootObject(
        Value::dictionary({{"first", list},
                           {"second", Value::array({"a"})},
                           {"shared", list},
                           {"when", Value::date(12.5)},
                           {"none", Value::null()},
                           {"text", Value::mutableString("m")},
                           {"bytes", Value::mutableData({1, 2})}})));
    expectSame(archive.plist.objectForKey("$archiver"), Value("NSKeyedArchiver"));
    expectSame(archive.plist.objectForKey("$version"), Value::integer(100000));
    expectSame(archive.plist.objectForKey("$top"), Value::dictionary({{"root", Value::uid(1)}}));
    EXPECT_EQ(archive.at(Value::uid(0)).str(), "$null");

    // The root is numbered first, its keys before its values, its class after all of them.
    const Value top = archive.root();
    const Value keys = top.objectForKey("NS.keys"), values = top.objectForKey("NS.objects");
    ASSERT_EQ(values.count(), 7u);
    EXPECT_EQ(keys.objectAtIndex(0), Value::uid(2));
    EXPECT_EQ(archive.at(keys.objectAtIndex(0)).str(), "bytes");
    EXPECT_LT(*keys.objectAtIndex(6).asUid(), *values.objectAtIndex(0).asUid());
    EXPECT_EQ(archive.classOf(top), classes({"NSDictionary", "NSObject"}));
    EXPECT_EQ(*top.objectForKey("$class").asUid() + 1,
              archive.plist.objectForKey("$objects").count());

    // One object per instance, one description per class, one UID per equal string.
    EXPECT_EQ(archive.member(top, "first"), archive.member(top, "shared"));
    const Value first = archive.at(archive.member(top, "first"));
    const Value second = archive.at(archive.member(top, "second"));
    EXPECT_EQ(first.objectForKey("$class"), second.objectForKey("$class"));
    EXPECT_EQ(archive.classOf(first), classes({"NSArray", "NSObject"}));
    EXPECT_EQ(first.objectForKey("NS.objects").objectAtIndex(0),
              second.objectForKey("NS.objects").objectAtIndex(0));

    const std::pair<const char*, Value> wrapped[] = {
        {"when", Value::dictionary({{"NS.time", Value::real(12.5)}})},
        {"none", Value::dictionary()},
        {"text", Value::dictionary({{"NS.string", "m"}})},
        {"bytes", Value::dictionary({{"NS.data", Value::data({1, 2})}})},
    };
    const Value expectedClasses[] = {classes({"NSDate", "NSObject"}),
                                     classes({"NSNull", "NSObject"}),
                                     classes({"NSMutableString", "NSString", "NSObject"}),
                                     classes({"NSMutableData", "NSData", "NSObject"})};
    for (std::size_t i = 0; i < std::size(wrapped); ++i) {
        const Value stored = archive.at(archive.member(top, wrapped[i].first)).deepCopy();
        EXPECT_EQ(archive.classOf(stored), expectedClasses[i]) << wrapped[i].first;
        stored.removeObjectForKey("$class");
        expectSame(stored, wrapped[i].second);
    }
}

TEST(KeyedArchiveRoundTrip, EveryKindComesBackAndBadRootsAreRefused) {
    const Value list = Value::array({"x"});
    const Value original = Value::dictionary({
        {"string", "caf\u00e9 \xF0\x9F\x98\x80"},
        {"int", Value::integer(-42)},
        {"big", Value::unsignedInteger(18446744073709551615u)},
        {"bool", Value::boolean(true)},
        {"real", Value::real(0.1)},
        {"data", Value::data({0, 1, 254})},
        {"date", Value::date(-86400.25)},
        {"null", Value::null()},
        {"nested", Value::array({Value::dictionary({{"$key", "dollar"}}), list, list})},
        {"mutable", Value::mutableString("edit")},
        {"mutableData", Value::mutableData({9})},
    });
    const Value back = plat::unarchiveObjectWithData(*plat::archivedDataWithRootObject(original));
    expectSame(back, original);
    EXPECT_TRUE(back.objectForKey("mutable").isMutableFlavour());
    EXPECT_TRUE(back.objectForKey("mutableData").isMutableFlavour());
    EXPECT_FALSE(back.objectForKey("string").isMutableFlavour());
    const Value nested = back.objectForKey("nested");
    EXPECT_TRUE(nested.objectAtIndex(1).identical(nested.objectAtIndex(2)));
    for (const Value& plain : {Value("alone"), Value::integer(3), Value::null(), Value()})
        expectSame(plat::unarchiveObjectWithData(*plat::archivedDataWithRootObject(plain)), plain);

    struct Thing : plat::Object {
        std::string className() const override { return "Thing"; }
    };
    const Value loop = Value::array();
    loop.addObject(Value::dictionary({{"back", loop}}));
    for (const Value& bad :
         {Value::uid(1), Value(std::make_shared<Thing>()), Value::array({Value()}), loop})
        EXPECT_FALSE(plat::archivedDataWithRootObject(bad)) << bad.description();
    loop.removeAllObjects();
}

TEST(KeyedArchiveRoundTrip, ImagesAndColours) {
    const plat::ImagePtr image = picture(2);
    const Bytes bytes = *plat::archivedDataWithRootObject(Value::array(
        {Value(image), Value(image), Value(plat::Color::colorWithRGBA(0.25, 0.5, 0.75, 1)),
         Value(plat::Color::colorWithWhite(0.5, 0.25)),
         Value(plat::Color::colorWithRGBA(0.3, 0.6, 0.9, 0.7))}));
    const Archive archive(bytes);
    const Value items = archive.root().objectForKey("NS.objects");
    EXPECT_EQ(items.objectAtIndex(0), items.objectAtIndex(1));
    const Value stored = archive.at(items.objectAtIndex(0));
    EXPECT_EQ(archive.classOf(stored), classes({"UIImage", "NSObject"}));
    expectSame(stored.objectForKey("UIScale"), Value::real(2));
    EXPECT_TRUE(
        plat::Image::imageWithData(*archive.at(stored.objectForKey("UIImageData")).asData()));
    const Value rgb = archive.at(items.objectAtIndex(2)), grey = archive.at(items.objectAtIndex(3));
    EXPECT_EQ(archive.classOf(rgb), classes({"UIColor", "NSObject"}));
    for (auto [key, v] : {std::pair{"UIColorComponentCount", Value::integer(4)},
                          {"NSColorSpace", Value::integer(2)},
                          {"UIGreen", Value::real(0.5)},
                          {"NSRGB", Value::data(bytesOf(std::string("0.25 0.5 0.75", 14)))}})
        expectSame(rgb.objectForKey(key), v);
    for (auto [key, v] : {std::pair{"UIColorComponentCount", Value::integer(2)},
                          {"NSColorSpace", Value::integer(4)},
                          {"UIWhite", Value::real(0.5)},
                          {"NSWhite", Value::data(bytesOf(std::string("0.5 0.25", 9)))}})
        expectSame(grey.objectForKey(key), v);
    EXPECT_TRUE(contains(bytes, {0x22, 0x3e, 0x80, 0, 0}));  // 0.25 as a 32-bit real

    const Value back = plat::unarchiveObjectWithData(bytes);
    ASSERT_EQ(back.count(), 5u);
    const auto decoded = back.objectAtIndex(0).as<plat::Image>();
    ASSERT_TRUE(decoded);
    EXPECT_EQ(back.objectAtIndex(1).asObject(), decoded);
    EXPECT_EQ(decoded->scale(), 2);
    ASSERT_EQ(decoded->pixelWidth(), 6);
    ASSERT_EQ(decoded->pixelHeight(), 4);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 6; ++x)
            EXPECT_EQ(decoded->pixel(x, y), image->pixel(x, y));
    EXPECT_EQ(*back.objectAtIndex(2).as<plat::Color>(),
              *plat::Color::colorWithRGBA(0.25, 0.5, 0.75, 1));
    EXPECT_EQ(*back.objectAtIndex(3).as<plat::Color>(), *plat::Color::colorWithWhite(0.5, 0.25));
    const auto rounded = back.objectAtIndex(4).as<plat::Color>();
    ASSERT_TRUE(rounded && !rounded->isGrey());
    EXPECT_NEAR(rounded->red(), 0.3, 1e-7);
    EXPECT_NEAR(rounded->alpha(), 0.7, 1e-7);
}

TEST(KeyedArchiveRead, ToleratesOtherCodersEncodings) {
    auto decode = [](std::initializer_list<Value> objects) {
        return plat::unarchiveObjectWithData(handArchive(objects));
    };
    const Value bytes = object(2, {{"NS.bytes", Value::data(bytesOf("bytes"))}});
    expectSame(decode({bytes, classes({"MyString", "NSString", "NSObject"})}), Value("bytes"));
    const Value named = object(2, {{"NS.string", "named"}});
    expectSame(decode({named, Value::dictionary({{"$classname", "NSString"}})}), Value("named"));
    for (auto [key, v] : {std::pair{"NS.boolval", Value::boolean(true)},
                          {"NS.intval", Value::integer(-3)},
                          {"NS.dblval", Value::real(1.5)}})
        expectSame(decode({object(2, {{key, v}}), classes({"NSNumber", "NSObject"})}), v);
    // A peer's archiver stores dates inline; AppKit's colours only as text.
    expectSame(decode({Value::date(5)}), Value::date(5));
    const Value rgb = object(2, {{"NSRGB", Value::data(bytesOf("1 0.5 0"))}});
    const auto colour = decode({rgb, classes({"UIColor", "NSObject"})}).as<plat::Color>();
    ASSERT_TRUE(colour);
    EXPECT_EQ(*colour, *plat::Color::colorWithRGBA(1, 0.5, 0, 1));
}

// Gives a PNG new dimensions in its header, with a matching checksum.
void setPngSize(Bytes& png, std::uint32_t width, std::uint32_t height) {
    auto put = [&](std::size_t at, std::uint32_t v) {
        for (int i = 0; i < 4; ++i)
            png[at + i] = static_cast<std::uint8_t>(v >> (24 - 8 * i));
    };
    put(16, width);
    put(20, height);
    std::uint32_t crc = 0xffffffffu;
    for (std::size_t i = 12; i < 29; ++i) {  // the chunk type and the 13 bytes of IHDR
        crc ^= png[i];
        for (int k = 0; k < 8; ++k)
            crc = (crc >> 1) ^ (0xedb88320u & (0u - (crc & 1)));
    }
    put(29, ~crc);
}

TEST(KeyedArchiveRead, MalformedArchivesGiveNil) {
    const Value arrayClass = classes({"NSArray", "NSObject"});
    const Value dictClass = classes({"NSDictionary", "NSObject"});
    auto arrayOf = [](std::initializer_list<Value> uids) {
        return object(2, {{"NS.objects", Value::array(uids)}});
    };
    const Bytes good = handArchive({arrayOf({Value::uid(3)}), arrayClass, "fine"});
    expectSame(plat::unarchiveObjectWithData(good), Value::array({"fine"}));
    Value wrongArchiver = Archive(good).plist, noTop = Archive(good).plist;
    wrongArchiver.setValueForKey("$archiver", "NSArchiver");
    noTop.removeObjectForKey("$top");
    Bytes hugePng = *plat::UIImagePNGRepresentation(picture(1).get());
    setPngSize(hugePng, 30000, 30000);  // 3.6 GB of pixels promised by a small file

    const std::pair<const char*, Bytes> cases[] = {
        {"empty", {}},
        {"not a plist", bytesOf("NSKeyedArchiver")},
        {"not an archive",
         *plat::dataFromPropertyList(Value::array({"$null"}), plat::PropertyListFormat::Binary)},
        {"wrong $archiver",
         *plat::dataFromPropertyList(wrongArchiver, plat::PropertyListFormat::XML)},
        {"no $top", *plat::dataFromPropertyList(noTop, plat::PropertyListFormat::Binary)},
        {"root is not a UID", handArchive({"x"}, Value::integer(1))},
        {"no root", handArchive({"x"}, Value())},
        {"UID past $objects", handArchive({arrayOf({Value::uid(9)}), arrayClass})},
        {"array holds itself", handArchive({arrayOf({Value::uid(1)}), arrayClass})},
        {"nil in an array", handArchive({arrayOf({Value::uid(0)}), arrayClass})},
        {"member of the wrong kind", handArchive({object(2, {{"NS.objects", "no"}}), arrayClass})},
        {"no known class", handArchive({arrayOf({}), classes({"Mystery", "NSObject"})})},
        {"no $class", handArchive({Value::dictionary({{"NS.objects", Value::array()}})})},
        {"keys and values differ in count",
         handArchive({object(2, {{"NS.keys", Value::array({Value::uid(3)})},
                                 {"NS.objects", Value::array()}}),
                      dictClass, "k"})},
        {"key is not a string",
         handArchive({object(2, {{"NS.keys", Value::array({Value::uid(3)})},
                                 {"NS.objects", Value::array({Value::uid(3)})}}),
                      dictClass, Value::integer(1)})},
        {"image data is not PNG",
         handArchive({object(2, {{"UIImageData", Value::data(bytesOf("GIF89a"))}}),
                      classes({"UIImage", "NSObject"})})},
        {"image too large", handArchive({object(2, {{"UIImageData", Value::data(hugePng)}}),
                                         classes({"UIImage", "NSObject"})})},
    };
    for (const auto& [what, bytes] : cases)
        EXPECT_TRUE(plat::unarchiveObjectWithData(bytes).isNil()) << what;

    // Arrays nested through UIDs: a sane depth decodes, an absurd one does not; sharing at
    // every level (2^60 paths) is decoded once per object.
    auto chain = [&](std::size_t levels, bool twice) {
        Value objects = Value::array({"$null", arrayClass});
        for (std::size_t i = 0; i < levels; ++i) {
            const Value next = Value::uid(i + 3), none = Value::array();
            const Value refs = i + 1 == levels ? none : Value::array({next});
            if (twice && i + 1 < levels) refs.addObject(next);
            objects.addObject(Value::dictionary({{"$class", Value::uid(1)}, {"NS.objects", refs}}));
        }
        Value archive = Archive(good).plist;
        archive.setValueForKey("$objects", objects);
        archive.setValueForKey("$top", Value::dictionary({{"root", Value::uid(2)}}));
        return *plat::dataFromPropertyList(archive, plat::PropertyListFormat::Binary);
    };
    EXPECT_EQ(depthOf(plat::unarchiveObjectWithData(chain(100, false))), 100u);
    EXPECT_TRUE(plat::unarchiveObjectWithData(chain(5000, false)).isNil());
    EXPECT_EQ(depthOf(plat::unarchiveObjectWithData(chain(60, true))), 60u);
}

// plistlib reads our archive and follows its UIDs on its own; what it finds, written back as a
// plain property list, must be what we archived.
TEST(KeyedArchivePython, PlistlibFollowsOurArchive) {
    if (!hasPlistlib()) GTEST_SKIP() << "python3 with plistlib is not available";
    const Value list = Value::array({"x", Value::boolean(false)});
    const Value original = Value::dictionary({
        {"records", Value::array({list, list, Value::dictionary({{"n", Value::integer(-7)}})})},
        {"name", Value::mutableString("M\u00e4ssig")},
        {"bytes", Value::mutableData({1, 2, 3})},
        {"big", Value::unsignedInteger(9223372036854775852u)},
        {"real", Value::real(0.5)},
        {"when", Value::date(3600)},
    });
    const Value back = throughPlistlib(*plat::archivedDataWithRootObject(original), R"(
archive = plistlib.loads(data)
assert archive['$archiver'] == 'NSKeyedArchiver' and archive['$version'] == 100000
objects = archive['$objects']
assert objects[0] == '$null'
def decode(uid):
    o = objects[uid.data]
    if not isinstance(o, dict):
        return o
    name = objects[o['$class'].data]['$classname']
    if name == 'NSArray':
        return [decode(u) for u in o['NS.objects']]
    if name == 'NSDictionary':
        return {decode(k): decode(v) for k, v in zip(o['NS.keys'], o['NS.objects'])}
    if name == 'NSDate':
        return datetime.datetime(2001, 1, 1) + datetime.timedelta(seconds=o['NS.time'])
    return o['NS.string' if name == 'NSMutableString' else 'NS.data']
result = plistlib.dumps(decode(archive['$top']['root']), fmt=plistlib.FMT_XML)
)");
    expectSame(back, original);
}

}  // namespace
