#include "platform/foundation/keyed_archive.h"

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/plist.h"
#include "platform/ui/color.h"
#include "platform/ui/image.h"

namespace plat {

namespace {

constexpr std::int64_t kArchiveVersion = 100000;
// How deep objects may refer to objects. Keeps decoding and encoding recursion bounded.
constexpr std::size_t kMaxObjectDepth = 512;
// Pixels all the pictures of one archive may declare, and any one side. Pictures decode when
// first drawn, so this bounds what drawing every one would hold (1 GB of ARGB): enough for a
// reply listing thousands of applications with their icons.
constexpr std::uint64_t kMaxArchivePixels = std::uint64_t{1} << 28;
constexpr std::uint32_t kMaxImageSide = 16384;

const std::vector<std::string> kNSArrayClasses{"NSArray", "NSObject"};
const std::vector<std::string> kNSDictionaryClasses{"NSDictionary", "NSObject"};
const std::vector<std::string> kNSMutableStringClasses{"NSMutableString", "NSString", "NSObject"};
const std::vector<std::string> kNSMutableDataClasses{"NSMutableData", "NSData", "NSObject"};
const std::vector<std::string> kNSDateClasses{"NSDate", "NSObject"};
const std::vector<std::string> kNSNullClasses{"NSNull", "NSObject"};
const std::vector<std::string> kUIImageClasses{"UIImage", "NSObject"};
const std::vector<std::string> kUIColorClasses{"UIColor", "NSObject"};

// encodeFloat:forKey: stores a 32-bit real.
Value floatReal(double d) {
    return Value::real(static_cast<float>(d));
}

// AppKit's NSRGB/NSWhite: the components as text, alpha only when not opaque, NUL-terminated.
Value componentText(std::initializer_list<double> components, double alpha) {
    std::string text;
    auto append = [&](double c) {
        char buffer[32];
        std::snprintf(buffer, sizeof buffer, "%.10g", c);
        if (!text.empty()) text += ' ';
        text += buffer;
    };
    for (double c : components)
        append(c);
    if (alpha != 1) append(alpha);
    Bytes bytes(text.begin(), text.end());
    bytes.push_back(0);
    return Value::data(std::move(bytes));
}

// ---------------------------------------------------------------------------------------------
// Archiving.

class Archiver {
  public:
    // UID of the value's object (0 for nil); nullopt when it cannot be archived.
    std::optional<std::uint64_t> encode(const Value& v, std::size_t depth) {
        if (depth > kMaxObjectDepth) return std::nullopt;
        switch (v.type()) {
            case Value::Type::Nil:
                return 0;
            case Value::Type::Uid:
                return std::nullopt;  // not an object
            case Value::Type::Boolean:
            case Value::Type::Integer:
            case Value::Type::Real:
                return inlineObject(v, numberKey(v));
            case Value::Type::String:
                if (v.isMutableFlavour())
                    return wrapped(kNSMutableStringClasses, "NS.string", Value::string(v.str()));
                return inlineString(v.str());
            case Value::Type::Data:
                if (v.isMutableFlavour())
                    return wrapped(kNSMutableDataClasses, "NS.data", Value::data(*v.asData()));
                return inlineData(*v.asData());
            case Value::Type::Date:
                return wrapped(kNSDateClasses, "NS.time", Value::real(*v.asDate()));
            case Value::Type::Null: {
                // NSNull is a singleton: one object however often it is met.
                if (nullUid_) return nullUid_;
                nullUid_ = reserve();
                Dictionary fields;
                fields["$class"] = Value::uid(classUid(kNSNullClasses));
                objects_[*nullUid_] = Value::dictionary(std::move(fields));
                return nullUid_;
            }
            case Value::Type::Array:
                return encodeArray(v, depth);
            case Value::Type::Dictionary:
                return encodeDictionary(v, depth);
            case Value::Type::Object:
                return encodeObject(v);
        }
        return std::nullopt;
    }

    // The archive around the objects encoded so far.
    std::optional<Bytes> finish(std::uint64_t rootUid) {
        Dictionary top;
        top["root"] = Value::uid(rootUid);
        Dictionary archive;
        archive["$archiver"] = Value::string("NSKeyedArchiver");
        archive["$version"] = Value::integer(kArchiveVersion);
        archive["$top"] = Value::dictionary(std::move(top));
        archive["$objects"] = Value::array(std::move(objects_));
        return dataFromPropertyList(Value::dictionary(std::move(archive)),
                                    PropertyListFormat::Binary);
    }

  private:
    // Keys of the inline-object table: a kind letter, then the value. (Built by appending:
    // GCC 12 at -O3 warns falsely about "literal" + std::string.)
    static std::string tagged(char kind, std::string_view body) {
        std::string key(1, kind);
        key.append(body);
        return key;
    }
    static std::string numberKey(const Value& v) {
        if (v.isBoolean()) return tagged('b', v.boolValue() ? "1" : "0");
        if (v.isReal())
            return tagged('r', std::to_string(std::bit_cast<std::uint64_t>(v.doubleValue())));
        if (v.isUnsignedBig()) return tagged('u', std::to_string(v.unsignedValue()));
        return tagged('i', std::to_string(v.integerValue()));
    }

    // The next UID, holding "$null" until its object is filled in: an object is numbered before
    // its children, as Apple's archiver numbers it.
    std::uint64_t reserve() {
        objects_.push_back(Value::string("$null"));
        return objects_.size() - 1;
    }

    // NSString, NSNumber and NSData live directly in $objects; equal ones share a UID.
    std::uint64_t inlineObject(const Value& v, std::string key) {
        auto [it, inserted] = inlineUids_.try_emplace(std::move(key), 0);
        if (inserted) {
            it->second = reserve();
            objects_[it->second] = v;
        }
        return it->second;
    }
    std::uint64_t inlineString(const std::string& s) {
        return inlineObject(Value::string(s), tagged('s', s));
    }
    std::uint64_t inlineData(const Bytes& bytes) {
        return inlineObject(
            Value::data(bytes),
            tagged('d',
                   std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size())));
    }

    // The class description, written once per class, after the first object's children.
    std::uint64_t classUid(const std::vector<std::string>& chain) {
        auto [it, inserted] = classUids_.try_emplace(chain.front(), 0);
        if (inserted) {
            it->second = reserve();
            Array classes;
            for (const std::string& name : chain)
                classes.push_back(Value::string(name));
            Dictionary description;
            description["$classname"] = Value::string(chain.front());
            description["$classes"] = Value::array(std::move(classes));
            objects_[it->second] = Value::dictionary(std::move(description));
        }
        return it->second;
    }

    std::uint64_t wrapped(const std::vector<std::string>& chain, const char* key, Value inner) {
        const std::uint64_t uid = reserve();
        Dictionary fields;
        fields[key] = std::move(inner);
        fields["$class"] = Value::uid(classUid(chain));
        objects_[uid] = Value::dictionary(std::move(fields));
        return uid;
    }

    // Containers and objects are archived once per instance; meeting one again while it is
    // still being archived means it holds itself, which the unarchiver refuses, so we do too.
    std::optional<std::uint64_t> seen(const void* identity) {
        if (active_.count(identity)) return std::nullopt;
        auto it = objectUids_.find(identity);
        if (it != objectUids_.end()) return it->second;
        return 0;
    }

    std::optional<std::uint64_t> encodeArray(const Value& v, std::size_t depth) {
        const Array* items = v.asArray();
        auto known = seen(items);
        if (!known || *known) return known;
        const std::uint64_t uid = reserve();
        objectUids_[items] = uid;
        active_.insert(items);
        Array refs;
        for (const Value& item : *items) {
            auto ref = encode(item, depth + 1);
            if (!ref || *ref == 0) return std::nullopt;  // NSArray cannot hold nil
            refs.push_back(Value::uid(*ref));
        }
        active_.erase(items);
        Dictionary fields;
        fields["NS.objects"] = Value::array(std::move(refs));
        fields["$class"] = Value::uid(classUid(kNSArrayClasses));
        objects_[uid] = Value::dictionary(std::move(fields));
        return uid;
    }

    std::optional<std::uint64_t> encodeDictionary(const Value& v, std::size_t depth) {
        const Dictionary* entries = v.asDictionary();
        auto known = seen(entries);
        if (!known || *known) return known;
        const std::uint64_t uid = reserve();
        objectUids_[entries] = uid;
        active_.insert(entries);
        // All keys, then all values, as NSDictionary's encodeWithCoder: does.
        Array keys, values;
        for (const auto& entry : *entries)
            keys.push_back(Value::uid(inlineString(entry.first)));
        for (const auto& entry : *entries) {
            auto ref = encode(entry.second, depth + 1);
            if (!ref || *ref == 0) return std::nullopt;
            values.push_back(Value::uid(*ref));
        }
        active_.erase(entries);
        Dictionary fields;
        fields["NS.keys"] = Value::array(std::move(keys));
        fields["NS.objects"] = Value::array(std::move(values));
        fields["$class"] = Value::uid(classUid(kNSDictionaryClasses));
        objects_[uid] = Value::dictionary(std::move(fields));
        return uid;
    }

    std::optional<std::uint64_t> encodeObject(const Value& v) {
        const ObjectPtr object = v.asObject();
        auto known = seen(object.get());
        if (!known || *known) return known;
        Dictionary fields;
        std::uint64_t uid = 0;
        if (auto image = v.as<Image>()) {
            const std::optional<Bytes> png = UIImagePNGRepresentation(image.get());
            if (!png) return std::nullopt;
            uid = reserve();
            fields["UIImageData"] = Value::uid(inlineData(*png));
            fields["UIScale"] = floatReal(image->scale());
            fields["$class"] = Value::uid(classUid(kUIImageClasses));
        } else if (auto color = v.as<Color>()) {
            uid = reserve();
            if (color->isGrey()) {
                fields["UIColorComponentCount"] = Value::integer(2);
                fields["UIWhite"] = floatReal(color->red());
                fields["UIAlpha"] = floatReal(color->alpha());
                fields["NSWhite"] = componentText({color->red()}, color->alpha());
                fields["NSColorSpace"] = Value::integer(4);
            } else {
                fields["UIColorComponentCount"] = Value::integer(4);
                fields["UIRed"] = floatReal(color->red());
                fields["UIGreen"] = floatReal(color->green());
                fields["UIBlue"] = floatReal(color->blue());
                fields["UIAlpha"] = floatReal(color->alpha());
                fields["NSRGB"] =
                    componentText({color->red(), color->green(), color->blue()}, color->alpha());
                fields["NSColorSpace"] = Value::integer(2);
            }
            fields["$class"] = Value::uid(classUid(kUIColorClasses));
        } else {
            return std::nullopt;  // no encodeWithCoder: here
        }
        objectUids_[object.get()] = uid;
        objects_[uid] = Value::dictionary(std::move(fields));
        return uid;
    }

    Array objects_{Value::string("$null")};
    std::map<std::string, std::uint64_t> inlineUids_;
    std::map<std::string, std::uint64_t> classUids_;
    std::map<const void*, std::uint64_t> objectUids_;
    std::set<const void*> active_;
    std::optional<std::uint64_t> nullUid_;
};

// ---------------------------------------------------------------------------------------------
// Unarchiving.

enum class Known {
    None,
    String,
    MutableString,
    Number,
    Data,
    MutableData,
    Date,
    Null,
    Array,
    Dictionary,
    Image,
    Color,
};

Known knownClass(const std::string& name) {
    static const std::map<std::string, Known> classes{
        {"NSString", Known::String},
        {"NSMutableString", Known::MutableString},
        {"NSNumber", Known::Number},
        {"NSData", Known::Data},
        {"NSMutableData", Known::MutableData},
        {"NSDate", Known::Date},
        {"NSNull", Known::Null},
        {"NSArray", Known::Array},
        {"NSMutableArray", Known::Array},
        {"NSDictionary", Known::Dictionary},
        {"NSMutableDictionary", Known::Dictionary},
        {"UIImage", Known::Image},
        {"UIColor", Known::Color},
    };
    auto it = classes.find(name);
    return it == classes.end() ? Known::None : it->second;
}

// "r g b [a]" text of NSRGB/NSWhite (NUL-terminated or not).
std::optional<std::vector<double>> parseComponents(const Value& v) {
    const Bytes* bytes = v.asData();
    if (!bytes || bytes->size() > 256) return {};
    std::string text(bytes->begin(), bytes->end());
    text = text.substr(0, text.find('\0'));
    std::vector<double> out;
    const char* p = text.c_str();
    while (*p) {
        char* end = nullptr;
        const double d = std::strtod(p, &end);
        if (end == p) break;
        out.push_back(d);
        p = end;
    }
    return out;
}

class Unarchiver {
  public:
    explicit Unarchiver(const Array& objects)
        : objects_(objects), state_(objects.size(), Unseen), decoded_(objects.size()) {}

    bool failed() const { return failed_; }

    // The object a UID names: nil for UID 0, and nil with failed() for anything malformed.
    Value decodeRef(const Value& ref, std::size_t depth) {
        const auto uid = ref.asUid();
        if (!uid) return fail();
        if (*uid == 0) return Value();
        if (*uid >= objects_.size() || depth > kMaxObjectDepth) return fail();
        switch (state_[*uid]) {
            case Done:
                return decoded_[*uid];
            case Open:
                return fail();  // refers to itself
            default:
                break;
        }
        state_[*uid] = Open;
        Value v = decodeObject(objects_[*uid], depth);
        if (failed_) return Value();
        state_[*uid] = Done;
        decoded_[*uid] = v;
        return v;
    }

  private:
    enum State : std::uint8_t { Unseen, Open, Done };

    Value fail() {
        failed_ = true;
        return Value();
    }

    Value decodeObject(const Value& entry, std::size_t depth) {
        switch (entry.type()) {
            case Value::Type::String:
            case Value::Type::Boolean:
            case Value::Type::Integer:
            case Value::Type::Real:
            case Value::Type::Data:
            case Value::Type::Date:
                return entry;
            case Value::Type::Dictionary:
                break;
            default:
                return fail();
        }
        const Known kind = classOf(entry.objectForKey("$class"));
        switch (kind) {
            case Known::String:
            case Known::MutableString:
                return decodeString(entry, kind, depth);
            case Known::Number:
                return decodeNumber(entry, depth);
            case Known::Data:
            case Known::MutableData: {
                Value data = member(entry, "NS.data", depth);
                if (data.isNil()) data = member(entry, "NS.bytes", depth);
                if (!data.isData()) return fail();
                return kind == Known::MutableData ? Value::mutableData(*data.asData())
                                                  : Value::data(*data.asData());
            }
            case Known::Date: {
                const Value time = member(entry, "NS.time", depth);
                if (!time.isReal() && !time.isInteger()) return fail();
                return Value::date(time.doubleValue());
            }
            case Known::Null:
                return Value::null();
            case Known::Array:
                return decodeArray(entry, depth);
            case Known::Dictionary:
                return decodeDictionary(entry, depth);
            case Known::Image:
                return decodeImage(entry, depth);
            case Known::Color:
                return decodeColor(entry);
            case Known::None:
                break;
        }
        return fail();
    }

    // The nearest known class in the object's class chain, resolved once per class UID.
    Known classOf(const Value& ref) {
        const auto uid = ref.asUid();
        if (!uid || *uid == 0 || *uid >= objects_.size()) return Known::None;
        auto cached = classes_.find(*uid);
        if (cached != classes_.end()) return cached->second;
        Known kind = Known::None;
        const Value& description = objects_[*uid];
        const Value chain = description.objectForKey("$classes");
        if (const Array* names = chain.asArray()) {
            for (const Value& name : *names) {
                if (!name.isString()) break;
                kind = knownClass(name.str());
                if (kind != Known::None) break;
            }
        } else if (chain.isNil()) {
            kind = knownClass(description.objectForKey("$classname").str());
        }
        classes_.emplace(*uid, kind);
        return kind;
    }

    // A field of an object: a UID is followed, anything else is the value itself.
    Value member(const Value& entry, const std::string& key, std::size_t depth) {
        const Value v = entry.objectForKey(key);
        if (v.isUid()) return decodeRef(v, depth + 1);
        if (v.isArray() || v.isDictionary()) return Value();
        return v;
    }

    Value decodeString(const Value& entry, Known kind, std::size_t depth) {
        Value s = member(entry, "NS.string", depth);
        if (s.isNil()) {
            // Nib-style archives carry the UTF-8 bytes instead.
            const Value bytes = member(entry, "NS.bytes", depth);
            s = bytes.isData() ? utf8String(*bytes.asData()) : bytes;
        }
        if (!s.isString()) return fail();
        return kind == Known::MutableString ? Value::mutableString(s.str())
                                            : Value::string(s.str());
    }

    // UTF-8 bytes as a string; nil when they are not UTF-8, which the property-list writer
    // (the one place that checks) refuses.
    static Value utf8String(const Bytes& bytes) {
        Value s = Value::string(std::string(bytes.begin(), bytes.end()));
        return dataFromPropertyList(s, PropertyListFormat::Binary) ? s : Value();
    }

    Value decodeNumber(const Value& entry, std::size_t depth) {
        const Value boolean = member(entry, "NS.boolval", depth);
        if (boolean.isNumber()) return Value::boolean(boolean.boolValue());
        const Value integer = member(entry, "NS.intval", depth);
        if (integer.isInteger()) return integer;
        const Value real = member(entry, "NS.dblval", depth);
        if (real.isReal() || real.isInteger()) return Value::real(real.doubleValue());
        const Value number = member(entry, "NS.number", depth);
        if (number.isNumber()) return number;
        return fail();
    }

    Value decodeArray(const Value& entry, std::size_t depth) {
        const Array* refs = entry.objectForKey("NS.objects").asArray();
        if (!refs) return fail();
        Array items;
        items.reserve(refs->size());
        for (const Value& ref : *refs) {
            Value item = decodeRef(ref, depth + 1);
            if (item.isNil()) return fail();  // an NSArray cannot hold nil
            items.push_back(std::move(item));
        }
        return Value::array(std::move(items));
    }

    Value decodeDictionary(const Value& entry, std::size_t depth) {
        const Array* keys = entry.objectForKey("NS.keys").asArray();
        const Array* values = entry.objectForKey("NS.objects").asArray();
        if (!keys || !values || keys->size() != values->size()) return fail();
        Dictionary entries;
        for (std::size_t i = 0; i < keys->size(); ++i) {
            const Value key = decodeRef((*keys)[i], depth + 1);
            if (!key.isString()) return fail();
            Value value = decodeRef((*values)[i], depth + 1);
            if (value.isNil()) return fail();
            entries.insert_or_assign(key.str(), std::move(value));
        }
        return Value::dictionary(std::move(entries));
    }

    Value decodeImage(const Value& entry, std::size_t depth) {
        const Value png = member(entry, "UIImageData", depth);
        if (!png.isData()) return fail();
        double scale = 1;
        const Value storedScale = entry.objectForKey("UIScale");
        if (!storedScale.isNil()) {
            if (!storedScale.isReal() && !storedScale.isInteger()) return fail();
            scale = storedScale.doubleValue();
            if (!std::isfinite(scale) || scale <= 0 || scale > 16) return fail();
        }
        const auto size = pngPixelSize(*png.asData());
        if (!size || size->first <= 0 || size->second <= 0 ||
            static_cast<std::uint32_t>(size->first) > kMaxImageSide ||
            static_cast<std::uint32_t>(size->second) > kMaxImageSide)
            return fail();
        const std::uint64_t pixels =
            static_cast<std::uint64_t>(size->first) * static_cast<std::uint64_t>(size->second);
        if (pixels > kMaxArchivePixels - pixels_) return fail();
        pixels_ += pixels;
        ImagePtr image = Image::imageWithPngDeferred(*png.asData(), scale);
        if (!image) return fail();
        return Value(image);
    }

    Value decodeColor(const Value& entry) {
        auto component = [&](const char* key, double fallback) -> std::optional<double> {
            const Value v = entry.objectForKey(key);
            if (v.isNil()) return fallback;
            if (!v.isReal() && !v.isInteger()) return std::nullopt;
            if (!std::isfinite(v.doubleValue())) return std::nullopt;
            return v.doubleValue();
        };
        const bool hasRGB = !entry.objectForKey("UIRed").isNil();
        const bool hasWhite = !entry.objectForKey("UIWhite").isNil();
        const std::int64_t count = entry.objectForKey("UIColorComponentCount").integerValue();
        const auto alpha = component("UIAlpha", 1);
        if (!alpha) return fail();
        if (hasWhite && (count == 2 || !hasRGB)) {
            const auto white = component("UIWhite", 0);
            if (!white) return fail();
            return Value(Color::colorWithWhite(*white, *alpha));
        }
        if (hasRGB) {
            const auto r = component("UIRed", 0), g = component("UIGreen", 0),
                       b = component("UIBlue", 0);
            if (!r || !g || !b) return fail();
            return Value(Color::colorWithRGBA(*r, *g, *b, *alpha));
        }
        // Only the AppKit-compatible text.
        if (auto rgb = parseComponents(entry.objectForKey("NSRGB")); rgb && rgb->size() >= 3)
            return Value(Color::colorWithRGBA((*rgb)[0], (*rgb)[1], (*rgb)[2],
                                              rgb->size() > 3 ? (*rgb)[3] : 1));
        if (auto white = parseComponents(entry.objectForKey("NSWhite")); white && !white->empty())
            return Value(Color::colorWithWhite((*white)[0], white->size() > 1 ? (*white)[1] : 1));
        return fail();
    }

    const Array& objects_;
    std::vector<State> state_;
    std::vector<Value> decoded_;
    std::map<std::uint64_t, Known> classes_;
    std::uint64_t pixels_ = 0;
    bool failed_ = false;
};

Value unarchive(const Bytes& data) {
    if (data.empty()) return Value();
    const Value archive = propertyListFromData(data);
    if (archive.objectForKey("$archiver").str() != "NSKeyedArchiver") return Value();
    const Value version = archive.objectForKey("$version");
    if (!version.isInteger() || version.integerValue() != kArchiveVersion) return Value();
    const Array* objects = archive.objectForKey("$objects").asArray();
    const Value root = archive.objectForKey("$top").objectForKey("root");
    if (!objects || objects->empty() || !root.isUid()) return Value();
    Unarchiver unarchiver(*objects);
    Value decoded = unarchiver.decodeRef(root, 0);
    return unarchiver.failed() ? Value() : decoded;
}

}  // namespace

Value unarchiveObjectWithData(const Bytes& data) {
    try {
        return unarchive(data);
    } catch (const std::bad_alloc&) {
        return Value();  // out of memory: as unreadable as any other bad archive
    } catch (const std::length_error&) {
        return Value();  // a count past what a container can hold: the same
    }
}

std::optional<Bytes> archivedDataWithRootObject(const Value& root) {
    try {
        Archiver archiver;
        const auto rootUid = archiver.encode(root, 0);
        if (!rootUid) return std::nullopt;
        return archiver.finish(*rootUid);
    } catch (const std::bad_alloc&) {
        return std::nullopt;  // too large to write, as Foundation's archiver would fail too
    } catch (const std::length_error&) {
        return std::nullopt;
    }
}

}  // namespace plat
