#include "platform/foundation/keyed_archive.h"

#include <cairo.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "platform/foundation/plist.h"
#include "platform/ui/color.h"
#include "platform/ui/image.h"
#include "tests/platform/foundation/plist_test_support.h"

namespace {

using plat::Bytes;
using plat::Value;
using namespace plisttest;

// The archive as a property list, and the object a UID names in it.
struct Archive {
    Value plist;
    explicit Archive(const Bytes& bytes) : plist(plat::propertyListFromData(bytes)) {}
    Value objects() const { return plist.objectForKey("$objects"); }
    Value at(const Value& uid) const {
        return objects().objectAtIndex(static_cast<std::size_t>(*uid.asUid()));
    }
    Value root() const { return at(plist.objectForKey("$top").objectForKey("root")); }
    Value classOf(const Value& object) const { return at(object.objectForKey("$class")); }
};

Value classDescription(std::initializer_list<const char*> chain) {
    Value classes = Value::array();
    for (const char* name : chain)
        classes.addObject(name);
    return Value::dictionary({{"$classname", *chain.begin()}, {"$classes", classes}});
}

// An archive written by hand: the objects after "$null", root UID 1 unless told (nil: no root).
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

// Gives a PNG new dimensions in its header, with a matching checksum.
void setPngSize(Bytes& png, std::uint32_t width, std::uint32_t height) {
    for (auto [at, v] : {std::pair{16, width}, {20, height}})
        for (int i = 0; i < 4; ++i)
            png[at + i] = static_cast<std::uint8_t>(v >> (24 - 8 * i));
    std::uint32_t crc = 0xffffffffu;
    for (std::size_t i = 12; i < 29; ++i) {  // chunk type and the 13 bytes of IHDR
        crc ^= png[i];
        for (int k = 0; k < 8; ++k)
            crc = (crc >> 1) ^ (0xedb88320u & (0u - (crc & 1)));
    }
    crc ^= 0xffffffffu;
    for (int i = 0; i < 4; ++i)
        png[29 + i] = static_cast<std::uint8_t>(crc >> (24 - 8 * i));
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
    const Bytes bytes = oracle("apple-keyed-archive.bin");
    const Archive archive(bytes);
    EXPECT_EQ(archive.plist.objectForKey("$archiver").str(), "NSKeyedArchiver");
    EXPECT_EQ(archive.plist.objectForKey("$version").integerValue(), 100000);
    EXPECT_EQ(archive.plist.objectForKey("$top").objectForKey("root"), Value::uid(1));
    EXPECT_EQ(
        archive.classOf(archive.root()).objectForKey("$classes"),
        classDescription({"OC_BuiltinPythonUnicode", "OC_PythonUnicode", "NSString", "NSObject"})
            .objectForKey("$classes"));
    const Value decoded = plat::unarchiveObjectWithData(bytes);
    EXPECT_TRUE(decoded.isString());
    EXPECT_FALSE(decoded.isMutableFlavour());
    EXPECT_EQ(decoded.str(), "KeyArchive UID Test");
}

TEST(KeyedArchiveWrite, LayoutIsApplesArchiversLayout) {
    const Value list = Value::array({"a", Value::integer(7)});
    const Value root = Value::dictionary({{"first", list},
                                          {"second", Value::array({"a"})},
                                          {"shared", list},
                                          {"when", Value::date(12.5)},
                                          {"none", Value::null()},
                                          {"text", Value::mutableString("m")},
                                          {"bytes", Value::mutableData({1, 2})}});
    const Archive archive(*plat::archivedDataWithRootObject(root));
    EXPECT_EQ(archive.plist.objectForKey("$archiver").str(), "NSKeyedArchiver");
    EXPECT_TRUE(archive.plist.objectForKey("$version").isInteger());
    EXPECT_EQ(archive.plist.objectForKey("$version").integerValue(), 100000);
    EXPECT_EQ(archive.plist.objectForKey("$top"), Value::dictionary({{"root", Value::uid(1)}}));
    EXPECT_EQ(archive.objects().objectAtIndex(0).str(), "$null");

    // The root is numbered first, its keys before its values, its class after all of them.
    const Value top = archive.root();
    const Value keys = top.objectForKey("NS.keys"), values = top.objectForKey("NS.objects");
    ASSERT_EQ(keys.count(), 7u);
    ASSERT_EQ(values.count(), 7u);
    EXPECT_EQ(*keys.objectAtIndex(0).asUid(), 2u);
    EXPECT_LT(*keys.objectAtIndex(6).asUid(), *values.objectAtIndex(0).asUid());
    EXPECT_EQ(archive.at(keys.objectAtIndex(0)).str(), "bytes");
    EXPECT_EQ(archive.classOf(top), classDescription({"NSDictionary", "NSObject"}));
    EXPECT_EQ(*top.objectForKey("$class").asUid() + 1, archive.objects().count());

    // One object per instance, one description per class, one UID per equal string.
    auto value = [&](const char* key) {
        for (std::size_t i = 0; i < keys.count(); ++i)
            if (archive.at(keys.objectAtIndex(i)).str() == key) return values.objectAtIndex(i);
        return Value();
    };
    EXPECT_EQ(value("first"), value("shared"));
    const Value first = archive.at(value("first")), second = archive.at(value("second"));
    EXPECT_EQ(first.objectForKey("$class"), second.objectForKey("$class"));
    EXPECT_EQ(archive.classOf(first), classDescription({"NSArray", "NSObject"}));
    EXPECT_EQ(first.objectForKey("NS.objects").objectAtIndex(0),
              second.objectForKey("NS.objects").objectAtIndex(0));
    EXPECT_TRUE(archive.at(first.objectForKey("NS.objects").objectAtIndex(1)).isInteger());

    const Value date = archive.at(value("when"));
    EXPECT_EQ(date.objectForKey("NS.time"), Value::real(12.5));
    EXPECT_EQ(archive.classOf(date), classDescription({"NSDate", "NSObject"}));
    const Value null = archive.at(value("none"));
    EXPECT_EQ(null.count(), 1u);
    EXPECT_EQ(archive.classOf(null), classDescription({"NSNull", "NSObject"}));
    const Value text = archive.at(value("text"));
    EXPECT_EQ(text.objectForKey("NS.string").str(), "m");
    EXPECT_EQ(archive.classOf(text), classDescription({"NSMutableString", "NSString", "NSObject"}));
    const Value bytes = archive.at(value("bytes"));
    EXPECT_EQ(bytes.objectForKey("NS.data"), Value::data({1, 2}));
    EXPECT_EQ(archive.classOf(bytes), classDescription({"NSMutableData", "NSData", "NSObject"}));
}

TEST(KeyedArchiveRoundTrip, EveryClassComesBackWithItsKind) {
    const Value original = Value::dictionary({
        {"string", "caf\u00e9 \xF0\x9F\x98\x80"},
        {"mutable", Value::mutableString("edit me")},
        {"int", Value::integer(-42)},
        {"big", Value::unsignedInteger(UINT64_C(18446744073709551615))},
        {"bool", Value::boolean(true)},
        {"real", Value::real(0.1)},
        {"data", Value::data({0, 1, 254})},
        {"mutableData", Value::mutableData({9})},
        {"date", Value::date(-86400.25)},
        {"null", Value::null()},
        {"empty", Value::array()},
        {"nested", Value::array({Value::dictionary({{"$key", "dollar"}}), Value::dictionary()})},
    });
    const Value back = plat::unarchiveObjectWithData(*plat::archivedDataWithRootObject(original));
    EXPECT_EQ(back, original);
    EXPECT_TRUE(back.objectForKey("mutable").isMutableFlavour());
    EXPECT_FALSE(back.objectForKey("string").isMutableFlavour());
    EXPECT_TRUE(back.objectForKey("mutableData").isMutableFlavour());
    EXPECT_TRUE(back.objectForKey("bool").isBoolean());
    EXPECT_TRUE(back.objectForKey("real").isReal());
    EXPECT_TRUE(back.objectForKey("big").isUnsignedBig());
    EXPECT_TRUE(back.objectForKey("null").isNull());
    for (const Value& plain : {Value("alone"), Value::integer(3), Value::null()})
        EXPECT_EQ(plat::unarchiveObjectWithData(*plat::archivedDataWithRootObject(plain)), plain);
    EXPECT_TRUE(plat::unarchiveObjectWithData(*plat::archivedDataWithRootObject(Value())).isNil());

    // Shared objects stay shared.
    const Value list = Value::array({"x"});
    const Value pair = plat::unarchiveObjectWithData(
        *plat::archivedDataWithRootObject(Value::array({list, list})));
    EXPECT_TRUE(pair.objectAtIndex(0).identical(pair.objectAtIndex(1)));

    // Nothing to archive: a UID, an unknown object, nil in an array, a container in itself.
    struct Thing : plat::Object {
        std::string className() const override { return "Thing"; }
    };
    EXPECT_FALSE(plat::archivedDataWithRootObject(Value::uid(1)));
    EXPECT_FALSE(plat::archivedDataWithRootObject(Value(std::make_shared<Thing>())));
    EXPECT_FALSE(plat::archivedDataWithRootObject(Value::array({Value()})));
    const Value loop = Value::array();
    loop.addObject(Value::dictionary({{"back", loop}}));
    EXPECT_FALSE(plat::archivedDataWithRootObject(loop));
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
    const Value storedImage = archive.at(items.objectAtIndex(0));
    EXPECT_EQ(items.objectAtIndex(0), items.objectAtIndex(1));
    EXPECT_EQ(archive.classOf(storedImage), classDescription({"UIImage", "NSObject"}));
    EXPECT_EQ(storedImage.objectForKey("UIScale"), Value::real(2));
    const Value png = archive.at(storedImage.objectForKey("UIImageData"));
    ASSERT_TRUE(png.isData());
    EXPECT_TRUE(plat::Image::imageWithData(*png.asData()));
    const Value rgb = archive.at(items.objectAtIndex(2));
    EXPECT_EQ(archive.classOf(rgb), classDescription({"UIColor", "NSObject"}));
    EXPECT_EQ(rgb.objectForKey("UIColorComponentCount"), Value::integer(4));
    EXPECT_EQ(rgb.objectForKey("NSColorSpace"), Value::integer(2));
    EXPECT_EQ(rgb.objectForKey("UIGreen"), Value::real(0.5));
    EXPECT_EQ(rgb.objectForKey("NSRGB"), Value::data(bytesOf(std::string("0.25 0.5 0.75", 14))));
    const Value grey = archive.at(items.objectAtIndex(3));
    EXPECT_EQ(grey.objectForKey("UIColorComponentCount"), Value::integer(2));
    EXPECT_EQ(grey.objectForKey("NSColorSpace"), Value::integer(4));
    EXPECT_EQ(grey.objectForKey("NSWhite"), Value::data(bytesOf(std::string("0.5 0.25", 9))));
    // 32-bit reals in the binary plist, as encodeFloat:forKey: writes them.
    EXPECT_TRUE(contains(bytes, {0x22, 0x3e, 0x80, 0, 0}));  // 0.25f

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
            EXPECT_EQ(decoded->pixel(x, y), image->pixel(x, y)) << x << "," << y;
    EXPECT_EQ(*back.objectAtIndex(2).as<plat::Color>(),
              *plat::Color::colorWithRGBA(0.25, 0.5, 0.75, 1));
    EXPECT_EQ(*back.objectAtIndex(3).as<plat::Color>(), *plat::Color::colorWithWhite(0.5, 0.25));
    const auto rounded = back.objectAtIndex(4).as<plat::Color>();
    ASSERT_TRUE(rounded);
    EXPECT_NEAR(rounded->red(), 0.3, 1e-7);
    EXPECT_NEAR(rounded->alpha(), 0.7, 1e-7);
    EXPECT_FALSE(rounded->isGrey());
}

TEST(KeyedArchiveRead, ToleratesOtherCodersEncodings) {
    const Value string = Value::dictionary({{"$class", Value::uid(2)}});
    string.setValueForKey("NS.bytes", Value::data(bytesOf("bytes")));
    EXPECT_EQ(plat::unarchiveObjectWithData(
                  handArchive({string, classDescription({"MyString", "NSString", "NSObject"})})),
              Value("bytes"));
    const Value named = Value::dictionary({{"$class", Value::uid(2)}, {"NS.string", "named"}});
    EXPECT_EQ(plat::unarchiveObjectWithData(
                  handArchive({named, Value::dictionary({{"$classname", "NSString"}})})),
              Value("named"));
    auto number = [](const char* key, Value v) {
        const Value n = plat::unarchiveObjectWithData(
            handArchive({Value::dictionary({{"$class", Value::uid(2)}, {key, v}}),
                         classDescription({"NSNumber", "NSValue", "NSObject"})}));
        return n;
    };
    EXPECT_TRUE(number("NS.boolval", Value::boolean(true)).isBoolean());
    EXPECT_EQ(number("NS.intval", Value::integer(-3)), Value::integer(-3));
    EXPECT_TRUE(number("NS.dblval", Value::real(1.5)).isReal());
    // A peer's archiver stores dates inline.
    EXPECT_EQ(plat::unarchiveObjectWithData(handArchive({Value::date(5)})), Value::date(5));
    const Value appKitColour =
        Value::dictionary({{"$class", Value::uid(2)}, {"NSRGB", Value::data(bytesOf("1 0.5 0"))}});
    const auto colour = plat::unarchiveObjectWithData(
                            handArchive({appKitColour, classDescription({"UIColor", "NSObject"})}))
                            .as<plat::Color>();
    ASSERT_TRUE(colour);
    EXPECT_EQ(*colour, *plat::Color::colorWithRGBA(1, 0.5, 0, 1));
}

TEST(KeyedArchiveRead, MalformedArchivesGiveNil) {
    const Value arrayClass = classDescription({"NSArray", "NSObject"});
    auto arrayOf = [](std::initializer_list<Value> uids, std::uint64_t classUid = 2) {
        return Value::dictionary(
            {{"$class", Value::uid(classUid)}, {"NS.objects", Value::array(uids)}});
    };
    const Bytes good = handArchive({arrayOf({Value::uid(3)}), arrayClass, "fine"});
    ASSERT_EQ(plat::unarchiveObjectWithData(good), Value::array({"fine"}));

    const std::vector<std::pair<const char*, Bytes>> cases = {
        {"empty", {}},
        {"not a plist", bytesOf("NSKeyedArchiver")},
        {"not an archive",
         *plat::dataFromPropertyList(Value::array({"$null"}), plat::PropertyListFormat::Binary)},
        {"root is not a UID", handArchive({"x"}, Value::integer(1))},
        {"no root", handArchive({"x"}, Value())},
        {"UID past $objects", handArchive({arrayOf({Value::uid(9)}), arrayClass})},
        {"array holds itself", handArchive({arrayOf({Value::uid(1)}), arrayClass})},
        {"two arrays hold each other",
         handArchive({arrayOf({Value::uid(3)}), arrayClass, arrayOf({Value::uid(1)})})},
        {"nil in an array", handArchive({arrayOf({Value::uid(0)}), arrayClass})},
        {"member of the wrong kind",
         handArchive(
             {Value::dictionary({{"$class", Value::uid(2)}, {"NS.objects", "no"}}), arrayClass})},
        {"no known class", handArchive({arrayOf({}), classDescription({"Mystery", "NSObject"})})},
        {"no $class", handArchive({Value::dictionary({{"NS.objects", Value::array()}})})},
        {"class is not a description", handArchive({arrayOf({}), "NSArray"})},
        {"keys and values differ in count",
         handArchive({Value::dictionary({{"$class", Value::uid(2)},
                                         {"NS.keys", Value::array({Value::uid(3)})},
                                         {"NS.objects", Value::array()}}),
                      classDescription({"NSDictionary", "NSObject"}), "k"})},
        {"key is not a string",
         handArchive({Value::dictionary({{"$class", Value::uid(2)},
                                         {"NS.keys", Value::array({Value::uid(3)})},
                                         {"NS.objects", Value::array({Value::uid(3)})}}),
                      classDescription({"NSDictionary", "NSObject"}), Value::integer(1)})},
        {"image data is not PNG",
         handArchive({Value::dictionary({{"$class", Value::uid(2)},
                                         {"UIImageData", Value::data(bytesOf("GIF89a"))}}),
                      classDescription({"UIImage", "NSObject"})})},
    };
    for (const auto& [what, bytes] : cases)
        EXPECT_TRUE(plat::unarchiveObjectWithData(bytes).isNil()) << what;

    // Other wrappers around good objects.
    Value wrong = Archive(good).plist;
    wrong.setValueForKey("$archiver", "NSArchiver");
    EXPECT_TRUE(plat::unarchiveObjectWithData(
                    *plat::dataFromPropertyList(wrong, plat::PropertyListFormat::Binary))
                    .isNil());
    wrong = Archive(good).plist;
    wrong.removeObjectForKey("$top");
    EXPECT_TRUE(plat::unarchiveObjectWithData(
                    *plat::dataFromPropertyList(wrong, plat::PropertyListFormat::XML))
                    .isNil());

    // A small PNG whose header promises a 30000 x 30000 canvas (3.6 GB of pixels); an
    // honest one decodes.
    Bytes huge = *plat::UIImagePNGRepresentation(picture(1).get());
    auto imageArchive = [&](const Bytes& png) {
        return handArchive(
            {Value::dictionary({{"$class", Value::uid(2)}, {"UIImageData", Value::data(png)}}),
             classDescription({"UIImage", "NSObject"})});
    };
    EXPECT_TRUE(plat::unarchiveObjectWithData(imageArchive(huge)).as<plat::Image>());
    setPngSize(huge, 30000, 30000);
    EXPECT_TRUE(plat::unarchiveObjectWithData(imageArchive(huge)).isNil());

    // Arrays nested through UIDs: a sane depth decodes, an absurd one does not; sharing at
    // every level (2^60 paths) is decoded once per object.
    auto chain = [&](std::size_t levels, bool twice) {
        Value objects = Value::array({"$null", arrayClass});
        for (std::size_t i = 0; i < levels; ++i) {
            const Value next = Value::uid(i + 3);
            objects.addObject(i + 1 < levels
                                  ? (twice ? arrayOf({next, next}, 1) : arrayOf({next}, 1))
                                  : arrayOf({}, 1));
        }
        return *plat::dataFromPropertyList(
            Value::dictionary({{"$archiver", "NSKeyedArchiver"},
                               {"$version", Value::integer(100000)},
                               {"$top", Value::dictionary({{"root", Value::uid(2)}})},
                               {"$objects", objects}}),
            plat::PropertyListFormat::Binary);
    };
    EXPECT_EQ(depthOf(plat::unarchiveObjectWithData(chain(100, false))), 100u);
    EXPECT_TRUE(plat::unarchiveObjectWithData(chain(5000, false)).isNil());
    EXPECT_EQ(depthOf(plat::unarchiveObjectWithData(chain(60, true))), 60u);
}

}  // namespace

namespace {

// plistlib reads our archive and follows its UIDs on its own; what it finds, written back as a
// plain property list, must be what we archived.
TEST(KeyedArchivePython, PlistlibFollowsOurArchive) {
    if (std::system("python3 -c 'import plistlib' >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "python3 with plistlib is not available";
    const Value list = Value::array({"x", Value::boolean(false)});
    const Value original = Value::dictionary({
        {"records", Value::array({list, list, Value::dictionary({{"n", Value::integer(-7)}})})},
        {"name", Value::mutableString("M\u00e4ssig")},
        {"bytes", Value::mutableData({1, 2, 3})},
        {"big", Value::unsignedInteger(UINT64_C(9223372036854775852))},
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
    EXPECT_EQ(back, original);
    EXPECT_TRUE(back.objectForKey("big").isUnsignedBig());
    EXPECT_TRUE(back.objectForKey("records").objectAtIndex(0).objectAtIndex(1).isBoolean());
}

}  // namespace
