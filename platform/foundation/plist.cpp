#include "platform/foundation/plist.h"

#include "platform/foundation/bplist_bytes.h"
#include "platform/foundation/plist_binary.h"

#include <plist/plist.h>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>
#include <vector>

namespace plat {

namespace {

using bplist::appendBigEndian;
using bplist::kHeaderSize;
using bplist::kTrailerSize;
using bplist::readBigEndian;

struct NodeFree {
    void operator()(void* node) const { plist_free(node); }
};
using NodePtr = std::unique_ptr<void, NodeFree>;

// ---------------------------------------------------------------------------------------------
// Guards run before libplist sees the bytes.
//
// libplist 2.2 builds a separate node for every reference to a binary object and recurses once
// per nesting level, both while parsing and in plist_free. So a few hundred bytes whose arrays
// each refer twice to the next one grow into gigabytes, and a long chain of one-element arrays
// (binary) or a deeply nested XML document overflows the stack. These checks bound both before
// any node exists.

// Counts element nesting in an XML document, tag by tag, erring on the deep side (anything
// opened is counted, whatever its name; only "</" closes). Linear in the input.
bool xmlNestingIsBounded(const std::uint8_t* data, std::size_t size) {
    // <plist> and one spare level above the containers themselves.
    constexpr std::size_t kMaxElements = kMaxPropertyListDepth + 2;
    std::size_t depth = 0;
    for (std::size_t i = 0; i < size; ++i) {
        if (data[i] != '<') continue;
        const auto* end = static_cast<const std::uint8_t*>(std::memchr(data + i, '>', size - i));
        if (!end) break;
        const std::size_t close = static_cast<std::size_t>(end - data);
        if (i + 1 < size && data[i + 1] == '/') {
            if (depth > 0) --depth;
        } else if (i + 1 < size && (data[i + 1] == '!' || data[i + 1] == '?')) {
            // Declarations, comments, CDATA: nothing opens.
        } else if (data[close - 1] != '/') {
            if (++depth > kMaxElements) return false;
        }
        i = close;
    }
    return true;
}

// ---------------------------------------------------------------------------------------------
// Exact values through libplist's public interface.
//
// libplist 2.2 keeps dates as a double and 16-byte integers with their width, and writes both
// faithfully, but its setters and getters lose them: plist_get/set_date_val speak int32 seconds
// and microseconds (truncated, sign dropped below one second, nothing past 2069), and
// plist_new_uint always makes an 8-byte integer, which Apple's reader takes as negative above
// INT64_MAX. So such nodes are made by parsing a one-object binary plist, and read by
// serialising the lone node and taking its object bytes.

NodePtr parseSingleObject(const Bytes& object) {
    Bytes file{'b', 'p', 'l', 'i', 's', 't', '0', '0'};
    file.insert(file.end(), object.begin(), object.end());
    const std::uint64_t tableOffset = file.size();
    file.push_back(static_cast<std::uint8_t>(kHeaderSize));  // object 0 lies after the header
    file.insert(file.end(), 6, 0);
    file.push_back(1);  // offset size
    file.push_back(1);  // reference size
    appendBigEndian(file, 1, 8);
    appendBigEndian(file, 0, 8);
    appendBigEndian(file, tableOffset, 8);
    plist_t node = nullptr;
    plist_from_bin(reinterpret_cast<const char*>(file.data()),
                   static_cast<std::uint32_t>(file.size()), &node);
    return NodePtr(node);
}

plist_t newSixteenByteInteger(std::uint64_t value) {
    Bytes object{0x14};
    appendBigEndian(object, 0, 8);
    appendBigEndian(object, value, 8);
    return parseSingleObject(object).release();
}

plist_t newDate(double sinceReferenceDate) {
    Bytes object{0x33};
    appendBigEndian(object, std::bit_cast<std::uint64_t>(sinceReferenceDate), 8);
    return parseSingleObject(object).release();
}

// The marker and payload libplist writes for one scalar node (followed by its one-entry offset
// table).
Bytes loneObjectBytes(plist_t node) {
    char* out = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(node, &out, &length);
    Bytes object;
    if (out && length > kHeaderSize + kTrailerSize)
        object.assign(reinterpret_cast<std::uint8_t*>(out) + kHeaderSize,
                      reinterpret_cast<std::uint8_t*>(out) + length - kTrailerSize);
    if (out) plist_to_bin_free(out);
    return object;
}

// ---------------------------------------------------------------------------------------------
// libplist nodes to Values.

class NodeReader {
  public:
    explicit NodeReader(bool xml) : xml_(xml) {}

    // nil when the node or anything inside it cannot be a Foundation value.
    Value read(plist_t node, std::size_t depth) {
        switch (plist_get_node_type(node)) {
            case PLIST_BOOLEAN: {
                std::uint8_t b = 0;
                plist_get_bool_val(node, &b);
                return Value::boolean(b != 0);
            }
            case PLIST_UINT:
                return readInteger(node);
            case PLIST_REAL: {
                double d = 0;
                plist_get_real_val(node, &d);
                return Value::real(d);
            }
            case PLIST_KEY:
            case PLIST_STRING: {
                std::uint64_t length = 0;
                const char* s = plist_get_string_ptr(node, &length);
                if (!s || !isPropertyListText(s, length)) return Value();
                return Value::string(std::string(s, length));
            }
            case PLIST_DATA: {
                std::uint64_t length = 0;
                const char* p = plist_get_data_ptr(node, &length);
                const auto* bytes = reinterpret_cast<const std::uint8_t*>(p);
                return Value::data(p ? Bytes(bytes, bytes + length) : Bytes());
            }
            case PLIST_DATE:
                return readDate(node);
            case PLIST_UID: {
                std::uint64_t u = 0;
                plist_get_uid_val(node, &u);
                return Value::uid(u);
            }
            case PLIST_ARRAY:
                return depth < kMaxPropertyListDepth ? readArray(node, depth) : Value();
            case PLIST_DICT:
                return depth < kMaxPropertyListDepth ? readDict(node, depth) : Value();
            default:
                return Value();
        }
    }

  private:
    static Value readInteger(plist_t node) {
        std::uint64_t u = 0;
        plist_get_uint_val(node, &u);
        if (u <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
            return Value::integer(static_cast<std::int64_t>(u));
        // Above INT64_MAX: a 16-byte integer is the unsigned value, an 8-byte one is negative.
        const Bytes object = loneObjectBytes(node);
        if (!object.empty() && object[0] == 0x14) return Value::unsignedInteger(u);
        return Value::integer(static_cast<std::int64_t>(u));
    }

    static Value readDate(plist_t node) {
        const Bytes object = loneObjectBytes(node);
        if (object.size() >= 9 && object[0] == 0x33)
            return Value::date(std::bit_cast<double>(readBigEndian(object.data() + 1, 8)));
        std::int32_t sec = 0, usec = 0;
        plist_get_date_val(node, &sec, &usec);
        return Value::date(sec + (sec < 0 ? -usec : usec) / 1e6);
    }

    Value readArray(plist_t node, std::size_t depth) {
        const std::uint32_t n = plist_array_get_size(node);
        Array items;
        items.reserve(n);
        // libplist 2.2 may find an item by index by walking the children from the front (arrays
        // it parsed carry no index table), which makes a big object table quadratic to read by
        // index; its iterator steps from item to item.
        plist_array_iter iter = nullptr;
        plist_array_new_iter(node, &iter);
        bool ok = iter != nullptr || n == 0;
        for (std::uint32_t i = 0; ok && i < n; ++i) {
            plist_t child = nullptr;
            plist_array_next_item(node, iter, &child);
            Value item = child ? read(child, depth + 1) : Value();
            if (item.isNil())
                ok = false;
            else
                items.push_back(std::move(item));
        }
        std::free(iter);
        if (!ok) return Value();
        return Value::array(std::move(items));
    }

    Value readDict(plist_t node, std::size_t depth) {
        Dictionary entries;
        bool ok = true;
        plist_dict_iter iter = nullptr;
        plist_dict_new_iter(node, &iter);
        if (!iter) return Value();
        for (;;) {
            char* key = nullptr;
            plist_t item = nullptr;
            plist_dict_next_item(node, iter, &key, &item);
            std::unique_ptr<char, decltype(&std::free)> keyOwner(key, &std::free);
            if (!item) break;
            if (!key || !isPropertyListText(key, std::strlen(key))) {
                ok = false;
                break;
            }
            Value value = read(item, depth + 1);
            if (value.isNil()) {
                ok = false;
                break;
            }
            entries.insert_or_assign(key, std::move(value));
        }
        std::free(iter);
        if (!ok) return Value();
        // XML has no UID element; CF writes {CF$UID = n} and reads it back as a UID.
        if (xml_ && entries.size() == 1) {
            const Value& uid = entries.begin()->second;
            if (entries.begin()->first == "CF$UID" && uid.isInteger() && !uid.isUnsignedBig() &&
                uid.integerValue() >= 0 && uid.integerValue() <= 0xFFFFFFFFLL)
                return Value::uid(static_cast<std::uint64_t>(uid.integerValue()));
        }
        return Value::dictionary(std::move(entries));
    }

    bool xml_;
};

// ---------------------------------------------------------------------------------------------
// Values to libplist nodes, validating as CF does before it writes anything.

class NodeWriter {
  public:
    // nullptr with reason() set when the value is not a property list.
    plist_t write(const Value& v, std::size_t depth) {
        if (!spend()) return nullptr;
        switch (v.type()) {
            case Value::Type::Nil:
            case Value::Type::Null:
            case Value::Type::Object:
                return fail(unwritableKindReason(v));
            case Value::Type::Boolean:
                return plist_new_bool(v.boolValue() ? 1 : 0);
            case Value::Type::Integer:
                if (v.isUnsignedBig()) return checked(newSixteenByteInteger(v.unsignedValue()));
                // Two's complement in 64 bits: libplist writes anything from 2^32 up, negative
                // numbers included, as an 8-byte integer, which is how Apple's writer has them.
                return plist_new_uint(static_cast<std::uint64_t>(v.integerValue()));
            case Value::Type::Real:
                return plist_new_real(v.doubleValue());
            case Value::Type::String: {
                const std::string& s = *v.asString();
                if (!isPropertyListText(s.data(), s.size())) return fail(kNotTextReason);
                return plist_new_string(s.c_str());
            }
            case Value::Type::Data: {
                const Bytes& b = *v.asData();
                return plist_new_data(reinterpret_cast<const char*>(b.data()), b.size());
            }
            case Value::Type::Date:
                return checked(newDate(*v.asDate()));
            case Value::Type::Uid:
                // libplist would truncate a UID above 32 bits.
                if (std::string why = unwritableKindReason(v); !why.empty()) return fail(why);
                return plist_new_uid(*v.asUid());
            case Value::Type::Array:
                return writeArray(v, depth);
            case Value::Type::Dictionary:
                return writeDict(v, depth);
        }
        return fail("property lists cannot contain unknown objects");
    }

    const std::string& reason() const { return reason_; }

  private:
    plist_t fail(std::string reason) {
        if (reason_.empty()) reason_ = std::move(reason);
        return nullptr;
    }
    plist_t checked(plist_t node) { return node ? node : fail("out of memory"); }

    // XML has no references, so a shared object is written out at every place it is used; a
    // few hundred bytes of binary that share doubly at each level would come out as
    // exabytes. About as many elements as the largest file we read back may hold.
    bool spend() {
        if (++nodes_ <= kMaxXmlNodes) return true;
        fail("property lists written as XML cannot hold more than " + std::to_string(kMaxXmlNodes) +
             " objects");
        return false;
    }
    static constexpr std::size_t kMaxXmlNodes = std::size_t{1} << 22;
    std::size_t nodes_ = 0;

    // Enters a container; false (with the reason) for a container that holds itself or nests
    // past what we read back.
    bool enter(const void* container, std::size_t depth) {
        if (std::find(path_.begin(), path_.end(), container) != path_.end()) {
            fail(kRecursiveReason);
            return false;
        }
        if (depth >= kMaxPropertyListDepth) {
            fail("property lists cannot nest deeper than " + std::to_string(kMaxPropertyListDepth) +
                 " levels");
            return false;
        }
        path_.push_back(container);
        return true;
    }

    plist_t writeArray(const Value& v, std::size_t depth) {
        const Array* items = v.asArray();
        if (!enter(items, depth)) return nullptr;
        NodePtr node(plist_new_array());
        for (const Value& item : *items) {
            plist_t child = write(item, depth + 1);
            if (!child) return nullptr;
            plist_array_append_item(node.get(), child);
        }
        path_.pop_back();
        return node.release();
    }

    plist_t writeDict(const Value& v, std::size_t depth) {
        const Dictionary* entries = v.asDictionary();
        if (!enter(entries, depth)) return nullptr;
        NodePtr node(plist_new_dict());
        for (const auto& [key, item] : *entries) {
            if (!isPropertyListText(key.data(), key.size())) return fail(kNotTextKeyReason);
            plist_t child = write(item, depth + 1);
            if (!child) return nullptr;
            plist_dict_set_item(node.get(), key.c_str(), child);
        }
        path_.pop_back();
        return node.release();
    }

    std::vector<const void*> path_;
    std::string reason_;
};

Value parse(const Bytes& bytes, PropertyListFormat* format) {
    if (bytes.empty() || bytes.size() > std::numeric_limits<std::uint32_t>::max()) return Value();
    if (bytes.size() >= 6 && std::memcmp(bytes.data(), "bplist", 6) == 0) {
        Value value = binaryPropertyListFromData(bytes.data(), bytes.size());
        if (!value.isNil() && format) *format = PropertyListFormat::Binary;
        return value;
    }
    // XML stays with libplist, whose parser recurses per element: the nesting guard keeps it,
    // the converter and plist_free far from the stack's end.
    if (!xmlNestingIsBounded(bytes.data(), bytes.size())) return Value();
    plist_t root = nullptr;
    plist_from_xml(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::uint32_t>(bytes.size()), &root);
    if (!root) return Value();
    NodePtr owner(root);
    Value value = NodeReader(true).read(root, 0);
    if (!value.isNil() && format) *format = PropertyListFormat::XML;
    return value;
}

}  // namespace

Value propertyListFromData(const Bytes& bytes, PropertyListFormat* format) {
    try {
        return parse(bytes, format);
    } catch (const std::bad_alloc&) {
        // Out of memory on a huge document: nil, as for any other unreadable data.
        return Value();
    } catch (const std::length_error&) {
        return Value();
    }
}

std::optional<Bytes> dataFromPropertyList(const Value& value, PropertyListFormat format,
                                          std::string* errorDescription) {
    auto failWith = [&](std::string text) -> std::optional<Bytes> {
        if (errorDescription) *errorDescription = std::move(text);
        return std::nullopt;
    };
    if (format == PropertyListFormat::OpenStep)
        return failWith(
            "Property list format kCFPropertyListOpenStepFormat not supported for "
            "writing");
    if (format != PropertyListFormat::XML && format != PropertyListFormat::Binary)
        return failWith("Unknown format option");
    try {
        if (format == PropertyListFormat::Binary) {
            std::string reason;
            auto bytes = binaryDataFromPropertyList(value, &reason);
            if (!bytes) return failWith("Property list invalid for format: 200 (" + reason + ")");
            return bytes;
        }
        NodeWriter writer;
        NodePtr root(writer.write(value, 0));
        if (!root)
            return failWith(
                "Property list invalid for format: " + std::to_string(static_cast<int>(format)) +
                " (" + writer.reason() + ")");
        char* out = nullptr;
        std::uint32_t length = 0;
        if (format == PropertyListFormat::Binary)
            plist_to_bin(root.get(), &out, &length);
        else
            plist_to_xml(root.get(), &out, &length);
        if (!out) return failWith("Property list could not be written");
        Bytes bytes(reinterpret_cast<std::uint8_t*>(out),
                    reinterpret_cast<std::uint8_t*>(out) + length);
        if (format == PropertyListFormat::Binary)
            plist_to_bin_free(out);
        else
            plist_to_xml_free(out);
        return bytes;
    } catch (const std::bad_alloc&) {
        return failWith("Property list could not be written: out of memory");
    } catch (const std::length_error&) {
        return failWith("Property list could not be written: too large");
    }
}

}  // namespace plat
