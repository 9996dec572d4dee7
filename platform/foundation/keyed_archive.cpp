#include "platform/foundation/keyed_archive.h"

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/plist.h"

namespace plat {

namespace {

constexpr std::int64_t kArchiveVersion = 100000;
// How deep objects may refer to objects. Keeps decoding and encoding recursion bounded.
constexpr std::size_t kMaxObjectDepth = 512;
// What the objects of one archive may claim in all (pixels, for pictures that decode when
// first drawn: 1 GB of ARGB, enough for a reply listing thousands of applications with their
// icons).
constexpr std::uint64_t kMaxArchiveClaims = std::uint64_t{1} << 28;

const std::vector<std::string> kNSArrayClasses{"NSArray", "NSObject"};
const std::vector<std::string> kNSDictionaryClasses{"NSDictionary", "NSObject"};
const std::vector<std::string> kNSMutableStringClasses{"NSMutableString", "NSString", "NSObject"};
const std::vector<std::string> kNSMutableDataClasses{"NSMutableData", "NSData", "NSObject"};
const std::vector<std::string> kNSDateClasses{"NSDate", "NSObject"};
const std::vector<std::string> kNSNullClasses{"NSNull", "NSObject"};

// The codecs of the classes above the value model, by class name. Codecs are never removed,
// so a pointer to one stays good for the life of the program.
struct CodecRegistry {
    std::mutex mutex;
    std::map<std::string, std::shared_ptr<const ArchiveCodec>> byName;
};

CodecRegistry& codecs() {
    static CodecRegistry registry;
    return registry;
}

const ArchiveCodec* codecNamed(const std::string& name) {
    CodecRegistry& registry = codecs();
    std::lock_guard lock(registry.mutex);
    const auto found = registry.byName.find(name);
    return found == registry.byName.end() ? nullptr : found->second.get();
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
                return encodeObject(v, depth);
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

    std::optional<std::uint64_t> encodeObject(const Value& v, std::size_t depth) {
        const ObjectPtr object = v.asObject();
        auto known = seen(object.get());
        if (!known || *known) return known;
        const ArchiveCodec* codec = codecNamed(object->className());
        if (!codec) return std::nullopt;  // no encodeWithCoder: here
        auto written = codec->encode(*object);
        if (!written) return std::nullopt;
        const std::uint64_t uid = reserve();
        Dictionary fields = std::move(written->scalars);
        for (const auto& [key, member] : written->objects) {
            const auto ref = encode(member, depth + 1);
            if (!ref) return std::nullopt;
            fields[key] = Value::uid(*ref);
        }
        fields["$class"] = Value::uid(classUid(codec->classes));
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
    Codec,  // a class registered from above
};

struct ClassKind {
    Known known = Known::None;
    const ArchiveCodec* codec = nullptr;
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
    };
    auto it = classes.find(name);
    return it == classes.end() ? Known::None : it->second;
}

ClassKind classKind(const std::string& name) {
    if (const Known known = knownClass(name); known != Known::None) return {known, nullptr};
    if (const ArchiveCodec* codec = codecNamed(name)) return {Known::Codec, codec};
    return {};
}

class Unarchiver final : public ArchiveReading {
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
        const ClassKind found = classOf(entry.objectForKey("$class"));
        const Known kind = found.known;
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
            case Known::Codec: {
                const std::size_t outer = depth_;
                depth_ = depth;
                Value made = found.codec->decode(entry, *this);
                depth_ = outer;
                if (made.isNil()) return fail();
                return made;
            }
            case Known::None:
                break;
        }
        return fail();
    }

    // The nearest known class in the object's class chain, resolved once per class UID.
    ClassKind classOf(const Value& ref) {
        const auto uid = ref.asUid();
        if (!uid || *uid == 0 || *uid >= objects_.size()) return {};
        auto cached = classes_.find(*uid);
        if (cached != classes_.end()) return cached->second;
        ClassKind kind;
        const Value& description = objects_[*uid];
        const Value chain = description.objectForKey("$classes");
        if (const Array* names = chain.asArray()) {
            for (const Value& name : *names) {
                if (!name.isString()) break;
                kind = classKind(name.str());
                if (kind.known != Known::None) break;
            }
        } else if (chain.isNil()) {
            kind = classKind(description.objectForKey("$classname").str());
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

    Value member(const Value& fields, const std::string& key) override {
        return member(fields, key, depth_);
    }

    bool claim(std::uint64_t amount) override {
        if (amount > kMaxArchiveClaims - claimed_) return false;
        claimed_ += amount;
        return true;
    }

    const Array& objects_;
    std::vector<State> state_;
    std::vector<Value> decoded_;
    std::map<std::uint64_t, ClassKind> classes_;
    std::uint64_t claimed_ = 0;
    std::size_t depth_ = 0;  // of the object a codec is decoding
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

void registerArchiveCodec(ArchiveCodec codec) {
    CodecRegistry& registry = codecs();
    const std::string name = codec.classes.empty() ? std::string() : codec.classes.front();
    std::lock_guard lock(registry.mutex);
    registry.byName.emplace(name, std::make_shared<const ArchiveCodec>(std::move(codec)));
}

}  // namespace plat
