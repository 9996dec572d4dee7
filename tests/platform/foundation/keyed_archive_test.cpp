#include "platform/foundation/keyed_archive.h"

#include <gtest/gtest.h>

#include "platform/ui/color.h"
#include "platform/ui/image.h"
#include "tests/platform/foundation/plist_test_support.h"
#include "tests/platform/ui/pictures.h"

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
};

// A class description: the name and its chain up to NSObject.
Value classes(std::initializer_list<const char*> chain) {
    const Value names = Value::array(plat::Array(chain.begin(), chain.end()));
    names.addObject("NSObject");
    return Value::dictionary({{"$classname", *chain.begin()}, {"$classes", names}});
}

// An archive written by hand: the objects after "$null"; root UID 1 unless told (nil: none).
Bytes handArchive(plat::Array objects, Value root = Value::uid(1)) {
    objects.insert(objects.begin(), "$null");
    return *plat::dataFromPropertyList(
        Value::dictionary({{"$archiver", "NSKeyedArchiver"},
                           {"$version", Value::integer(100000)},
                           {"$top", Value::dictionary({{"root", root}})},
                           {"$objects", Value::array(std::move(objects))}}),
        plat::PropertyListFormat::Binary);
}

// An archived object: its fields and the UID of its class description.
Value object(std::initializer_list<std::pair<const std::string, Value>> fields,
             std::uint64_t classUid = 2) {
    Value o = Value::dictionary(fields);
    o.setValueForKey("$class", Value::uid(classUid));
    return o;
}

// An array of UIDs.
Value uids(std::initializer_list<std::uint64_t> numbers, std::size_t copies = 1) {
    plat::Array refs;
    for (std::uint64_t n : numbers)
        refs.insert(refs.end(), copies, Value::uid(n));
    return Value::array(std::move(refs));
}

TEST(KeyedArchiveRoundTrip, EveryKindComesBackAndBadRootsAreRefused) {
    const Value list = Value::array({"x"});
    const Value original =
        Value::array({"caf\u00e9 \xF0\x9F\x98\x80", Value::integer(-42),
                      Value::unsignedInteger(18446744073709551615u), Value::boolean(true),
                      Value::real(0.1), Value::data({0, 1, 254}), Value::date(-86400.25),
                      Value::null(), Value::dictionary({{"$key", "dollar"}}), list, list,
                      Value::mutableString("edit"), Value::mutableData({9})});
    const Value back = plat::unarchiveObjectWithData(*plat::archivedDataWithRootObject(original));
    expectSame(back, original);
    EXPECT_TRUE(back.objectAtIndex(9).identical(back.objectAtIndex(10)));
    EXPECT_FALSE(back.objectAtIndex(0).isMutableFlavour());
    EXPECT_TRUE(back.objectAtIndex(11).isMutableFlavour());
    EXPECT_TRUE(back.objectAtIndex(12).isMutableFlavour());
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
    // Opaque red left half, transparent right half.
    const plat::ImagePtr image = uitest::picture(6, 4, 2, {{0, 0, 3, 4, 1, 0, 0}});
    const auto rgb = plat::Color::colorWithRGBA(0.25, 0.5, 0.75, 1);
    const auto grey = plat::Color::colorWithWhite(0.5, 0.25);
    const Bytes bytes = *plat::archivedDataWithRootObject(
        Value::array({Value(image), Value(image), Value(rgb), Value(grey),
                      Value(plat::Color::colorWithRGBA(0.3, 0.6, 0.9, 0.7))}));
    const Archive archive(bytes);
    const Value items = archive.root().objectForKey("NS.objects");
    EXPECT_EQ(items.objectAtIndex(0), items.objectAtIndex(1));
    const Value stored = archive.at(items.objectAtIndex(0));
    EXPECT_EQ(archive.classOf(stored), classes({"UIImage"}));
    expectSame(stored.objectForKey("UIScale"), Value::real(2));
    EXPECT_TRUE(
        plat::Image::imageWithData(*archive.at(stored.objectForKey("UIImageData")).asData()));
    EXPECT_EQ(archive.classOf(archive.at(items.objectAtIndex(2))), classes({"UIColor"}));
    EXPECT_TRUE(contains(bytes, {0x22, 0x3e, 0x80, 0, 0}));  // 0.25 as a 32-bit real

    const Value back = plat::unarchiveObjectWithData(bytes);
    const auto decoded = back.objectAtIndex(0).as<plat::Image>();
    ASSERT_TRUE(decoded);
    EXPECT_EQ(back.objectAtIndex(1).asObject(), decoded);
    EXPECT_EQ(decoded->scale(), 2);
    // The same size and pixels, alpha included.
    EXPECT_EQ(plat::UIImagePNGRepresentation(decoded.get()),
              plat::UIImagePNGRepresentation(image.get()));
    EXPECT_EQ(*back.objectAtIndex(2).as<plat::Color>(), *rgb);
    EXPECT_EQ(*back.objectAtIndex(3).as<plat::Color>(), *grey);
    const auto rounded = back.objectAtIndex(4).as<plat::Color>();  // through 32-bit reals
    ASSERT_TRUE(rounded && !rounded->isGrey());
    EXPECT_NEAR(rounded->red(), 0.3, 1e-7);
    EXPECT_NEAR(rounded->alpha(), 0.7, 1e-7);
}

TEST(KeyedArchiveRead, ToleratesOtherCodersEncodingsApplesIncluded) {
    // Apple's archive decodes through its class chain.
    expectSame(plat::unarchiveObjectWithData(oracle("apple-keyed-archive.bin")),
               Value("KeyArchive UID Test"));
    auto decode = [](Value object, Value description) {
        return plat::unarchiveObjectWithData(handArchive({object, description}));
    };
    expectSame(decode(object({{"NS.bytes", Value::data(bytesOf("bytes"))}}),
                      classes({"MyString", "NSString"})),
               Value("bytes"));
    expectSame(
        decode(object({{"NS.string", "named"}}), Value::dictionary({{"$classname", "NSString"}})),
        Value("named"));
    for (auto [key, v] : {std::pair{"NS.boolval", Value::boolean(true)},
                          {"NS.intval", Value::integer(-3)},
                          {"NS.dblval", Value::real(1.5)}})
        expectSame(decode(object({{key, v}}), classes({"NSNumber"})), v);
    // A peer's archiver stores dates inline; AppKit's colours only as text.
    expectSame(plat::unarchiveObjectWithData(handArchive({Value::date(5)})), Value::date(5));
    const auto colour =
        decode(object({{"NSRGB", Value::data(bytesOf("1 0.5 0"))}}), classes({"UIColor"}))
            .as<plat::Color>();
    ASSERT_TRUE(colour);
    EXPECT_EQ(*colour, *plat::Color::colorWithRGBA(1, 0.5, 0, 1));
}

// A PNG of a translucent picture claiming 30000x30000 pixels (3.6 GB): its IHDR fields (8-bit
// RGBA, as written for a picture with alpha) and their valid CRC-32, over the real header.
Bytes hugePng() {
    Bytes png = *plat::UIImagePNGRepresentation(
        uitest::picture(1, 1, 1, {{0, 0, 1, 1, 1, 0, 0, 0.5}}).get());
    const std::uint8_t header[] = {0, 0, 0x75, 0x30, 0,    0,    0x75, 0x30, 8,
                                   6, 0, 0,    0,    0x66, 0x27, 0xf8, 0xba};
    std::copy(std::begin(header), std::end(header), png.begin() + 16);
    return png;
}

TEST(KeyedArchiveRead, MalformedArchivesGiveNil) {
    const Value arrayClass = classes({"NSArray"}), dictClass = classes({"NSDictionary"});
    auto arrayOf = [](std::initializer_list<std::uint64_t> refs) {
        return object({{"NS.objects", uids(refs)}});
    };
    const Bytes good = handArchive({arrayOf({3}), arrayClass, "fine"});
    expectSame(plat::unarchiveObjectWithData(good), Value::array({"fine"}));
    Value wrongArchiver = Archive(good).plist, noTop = Archive(good).plist;
    wrongArchiver.setValueForKey("$archiver", "NSArchiver");
    noTop.removeObjectForKey("$top");
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
        {"UID past $objects", handArchive({arrayOf({9}), arrayClass})},
        {"array holds itself", handArchive({arrayOf({1}), arrayClass})},
        {"nil in an array", handArchive({arrayOf({0}), arrayClass})},
        {"member of the wrong kind", handArchive({object({{"NS.objects", "no"}}), arrayClass})},
        {"no known class", handArchive({arrayOf({}), classes({"Mystery"})})},
        {"no $class", handArchive({Value::dictionary({{"NS.objects", Value::array()}})})},
        {"keys and values differ in count",
         handArchive(
             {object({{"NS.keys", uids({3})}, {"NS.objects", Value::array()}}), dictClass, "k"})},
        {"key is not a string",
         handArchive({object({{"NS.keys", uids({3})}, {"NS.objects", uids({3})}}), dictClass,
                      Value::integer(1)})},
        {"image data is not PNG",
         handArchive(
             {object({{"UIImageData", Value::data(bytesOf("GIF89a"))}}), classes({"UIImage"})})},
        {"image too large",
         handArchive({object({{"UIImageData", Value::data(hugePng())}}), classes({"UIImage"})})},
    };
    for (const auto& [what, bytes] : cases)
        EXPECT_TRUE(plat::unarchiveObjectWithData(bytes).isNil()) << what;

    // Arrays nested through UIDs: a sane depth decodes, an absurd one does not; sharing at
    // every level (2^60 paths) is decoded once per object.
    auto chain = [&](std::uint64_t levels, std::size_t width) {
        plat::Array objects;
        for (std::uint64_t i = 1; i <= levels; ++i)
            objects.push_back(
                object({{"NS.objects", uids({i + 1}, i < levels ? width : 0)}}, levels + 1));
        objects.push_back(arrayClass);
        return handArchive(objects);
    };
    EXPECT_EQ(depthOf(plat::unarchiveObjectWithData(chain(100, 1))), 100u);
    EXPECT_TRUE(plat::unarchiveObjectWithData(chain(5000, 1)).isNil());
    EXPECT_EQ(depthOf(plat::unarchiveObjectWithData(chain(60, 2))), 60u);
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
objects = archive['$objects']
assert (archive['$archiver'], archive['$version'], objects[0]) == ('NSKeyedArchiver', 100000, '$null')
def decode(uid):
    o = objects[uid.data]
    if not isinstance(o, dict): return o
    name = objects[o['$class'].data]['$classname']
    if name == 'NSArray': return [decode(u) for u in o['NS.objects']]
    if name == 'NSDictionary': return dict(zip(map(decode, o['NS.keys']), map(decode, o['NS.objects'])))
    if name == 'NSDate': return datetime.datetime(2001, 1, 1) + datetime.timedelta(seconds=o['NS.time'])
    return o['NS.string' if name == 'NSMutableString' else 'NS.data']
result = plistlib.dumps(decode(archive['$top']['root']), fmt=plistlib.FMT_XML)
)");
    expectSame(back, original);
}

}  // namespace
