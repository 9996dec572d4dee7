#include "platform/foundation/plist.h"

#include <plist/plist.h>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

namespace plat {

namespace {

constexpr std::size_t kTrailerSize = 32;
constexpr std::size_t kHeaderSize = 8;

struct NodeFree {
    void operator()(void* node) const { plist_free(node); }
};
using NodePtr = std::unique_ptr<void, NodeFree>;

std::uint64_t readBigEndian(const std::uint8_t* p, std::size_t width) {
    std::uint64_t v = 0;
    for (std::size_t i = 0; i < width; ++i)
        v = (v << 8) | p[i];
    return v;
}

void appendBigEndian(Bytes& out, std::uint64_t v, std::size_t width) {
    for (std::size_t i = width; i-- > 0;)
        out.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}

// Text libplist can carry: strict UTF-8 (no overlong forms, no surrogates, nothing above
// U+10FFFF; NSString holds UTF-16, so bytes that are not UTF-8 cannot have come from one) and no
// NUL, since libplist keeps strings NUL-terminated and would cut them short.
bool isPlistText(const char* s, std::size_t n) {
    const auto* p = reinterpret_cast<const unsigned char*>(s);
    std::size_t i = 0;
    while (i < n) {
        const unsigned c = p[i];
        if (c == 0) return false;
        if (c < 0x80) {
            ++i;
            continue;
        }
        std::size_t extra;
        unsigned min;
        std::uint32_t cp;
        if ((c & 0xE0) == 0xC0) {
            extra = 1, min = 0x80, cp = c & 0x1F;
        } else if ((c & 0xF0) == 0xE0) {
            extra = 2, min = 0x800, cp = c & 0x0F;
        } else if ((c & 0xF8) == 0xF0) {
            extra = 3, min = 0x10000, cp = c & 0x07;
        } else {
            return false;
        }
        if (n - i <= extra) return false;
        for (std::size_t k = 1; k <= extra; ++k) {
            if ((p[i + k] & 0xC0) != 0x80) return false;
            cp = (cp << 6) | (p[i + k] & 0x3F);
        }
        if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return false;
        i += extra + 1;
    }
    return true;
}

// ---------------------------------------------------------------------------------------------
// Guards run before libplist sees the bytes.
//
// libplist 2.2 builds a separate node for every reference to a binary object and recurses once
// per nesting level, both while parsing and in plist_free. So a few hundred bytes whose arrays
// each refer twice to the next one grow into gigabytes, and a long chain of one-element arrays
// (binary) or a deeply nested XML document overflows the stack. These checks bound both before
// any node exists.

// Walks the object graph of a binary plist and answers whether the tree libplist would build
// stays within kMaxPropertyListDepth and about the size of the file. Containers are followed;
// of the other objects only strings are looked into. Table layouts Apple's reader calls
// corrupt are refused here as well.
bool binaryGraphIsBounded(const std::uint8_t* data, std::size_t size) {
    if (size < kHeaderSize + kTrailerSize + 1) return false;
    const std::uint8_t* trailer = data + size - kTrailerSize;
    const std::size_t offsetSize = trailer[6];
    const std::size_t refSize = trailer[7];
    const std::uint64_t count = readBigEndian(trailer + 8, 8);
    const std::uint64_t top = readBigEndian(trailer + 16, 8);
    const std::uint64_t tableOffset = readBigEndian(trailer + 24, 8);
    if (offsetSize < 1 || offsetSize > 8 || refSize < 1 || refSize > 8) return false;
    if (count == 0 || top >= count) return false;
    if (tableOffset <= kHeaderSize || tableOffset >= size - kTrailerSize) return false;
    const std::uint64_t tableBytes = size - kTrailerSize - tableOffset;
    if (tableBytes % offsetSize != 0 || tableBytes / offsetSize != count) return false;
    if (refSize < 8 && count > (std::uint64_t{1} << (8 * refSize))) return false;

    const std::uint8_t* table = data + tableOffset;
    auto offsetOf = [&](std::uint64_t object) {
        return readBigEndian(table + object * offsetSize, offsetSize);
    };
    for (std::uint64_t i = 0; i < count; ++i) {
        const std::uint64_t offset = offsetOf(i);
        if (offset < kHeaderSize || offset >= tableOffset) return false;
    }

    // Where an object's references start and how many there are (0 for non-containers).
    struct Refs {
        std::uint64_t start = 0;
        std::uint64_t count = 0;
    };
    auto refsOf = [&](std::uint64_t object, Refs& refs) {
        std::uint64_t pos = offsetOf(object);
        const std::uint8_t marker = data[pos++];
        const unsigned kind = marker >> 4;
        refs = {};
        const bool container = kind == 0xA || kind == 0xB || kind == 0xC || kind == 0xD;
        const bool text = kind == 0x5 || kind == 0x6;
        if (!container && !text) return true;
        std::uint64_t n = marker & 0x0F;
        if (n == 0x0F) {
            if (pos >= tableOffset || (data[pos] & 0xF0) != 0x10) return false;
            const std::size_t width = std::size_t{1} << (data[pos] & 0x0F);
            if (width > 8 || tableOffset - pos - 1 < width) return false;
            n = readBigEndian(data + pos + 1, width);
            pos += 1 + width;
        }
        if (kind == 0x5) {
            // libplist takes any bytes here; Apple's reader insists on ASCII. A NUL would trip
            // libplist's assertions on dictionary keys (it keeps strings NUL-terminated), so it
            // is refused too.
            if (n > tableOffset - pos) return false;
            return std::all_of(data + pos, data + pos + n,
                               [](std::uint8_t c) { return c != 0 && c < 0x80; });
        }
        if (kind == 0x6) {
            if (n > (tableOffset - pos) / 2) return false;
            for (std::uint64_t i = 0; i < n; ++i)
                if (data[pos + 2 * i] == 0 && data[pos + 2 * i + 1] == 0) return false;
            return true;
        }
        const std::uint64_t available = (tableOffset - pos) / refSize;
        if (kind == 0xD ? n > available / 2 : n > available) return false;
        refs = {pos, kind == 0xD ? 2 * n : n};
        return true;
    };

    const std::uint64_t maxNodes = size + (1u << 16);
    enum : std::uint8_t { Unseen, Open, Done };
    std::vector<std::uint8_t> state(count, Unseen);
    std::vector<std::uint64_t> nodes(count, 0);
    std::vector<std::uint32_t> height(count, 0);

    struct Frame {
        std::uint64_t object;
        Refs refs;
        std::uint64_t next = 0;
        std::uint64_t nodes = 1;
        std::uint32_t height = 0;
    };
    std::vector<Frame> stack;
    auto open = [&](std::uint64_t object) {
        Frame frame{object, {}};
        if (!refsOf(object, frame.refs)) return false;
        state[object] = Open;
        stack.push_back(frame);
        return stack.size() <= kMaxPropertyListDepth + 1;
    };
    if (!open(top)) return false;
    while (!stack.empty()) {
        Frame& frame = stack.back();
        if (frame.next < frame.refs.count) {
            const std::uint64_t child =
                readBigEndian(data + frame.refs.start + frame.next * refSize, refSize);
            ++frame.next;
            if (child >= count || state[child] == Open) return false;  // dangling or a cycle
            if (state[child] == Unseen) {
                if (!open(child)) return false;
                continue;
            }
            frame.nodes += nodes[child];
            frame.height = std::max(frame.height, height[child] + 1);
            if (frame.nodes > maxNodes) return false;
            continue;
        }
        const Frame done = frame;
        stack.pop_back();
        state[done.object] = Done;
        nodes[done.object] = done.nodes;
        height[done.object] = done.height;
        if (done.height > kMaxPropertyListDepth) return false;
        if (!stack.empty()) {
            Frame& parent = stack.back();
            parent.nodes += done.nodes;
            parent.height = std::max(parent.height, done.height + 1);
            if (parent.nodes > maxNodes) return false;
        }
    }
    return true;
}

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
                if (!s || !isPlistText(s, length)) return Value();
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
            if (!key || !isPlistText(key, std::strlen(key))) {
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
        switch (v.type()) {
            case Value::Type::Nil:
                return fail("property lists cannot contain NULL");
            case Value::Type::Null:
                return fail("property lists cannot contain objects of type 'CFNull'");
            case Value::Type::Object:
                return fail("property lists cannot contain objects of type '" +
                            v.asObject()->className() + "'");
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
                if (!isPlistText(s.data(), s.size()))
                    return fail(
                        "property lists cannot contain strings that are not UTF-8 or "
                        "hold NUL characters");
                return plist_new_string(s.c_str());
            }
            case Value::Type::Data: {
                const Bytes& b = *v.asData();
                return plist_new_data(reinterpret_cast<const char*>(b.data()), b.size());
            }
            case Value::Type::Date:
                return checked(newDate(*v.asDate()));
            case Value::Type::Uid:
                // A UID is at most 32 bits in Apple's reader; libplist would truncate more.
                if (*v.asUid() > 0xFFFFFFFFu)
                    return fail("property lists cannot contain UIDs above 4294967295");
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

    // Enters a container; false (with the reason) for a container that holds itself or nests
    // past what we read back.
    bool enter(const void* container, std::size_t depth) {
        if (std::find(path_.begin(), path_.end(), container) != path_.end()) {
            fail("property lists cannot contain recursive container references");
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
            if (!isPlistText(key.data(), key.size()))
                return fail(
                    "property list dictionaries may only have keys which are UTF-8 without NUL");
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
    const char* raw = reinterpret_cast<const char*>(bytes.data());
    const auto length = static_cast<std::uint32_t>(bytes.size());
    const bool binary = plist_is_binary(raw, length) != 0;
    if (binary ? !binaryGraphIsBounded(bytes.data(), bytes.size())
               : !xmlNestingIsBounded(bytes.data(), bytes.size()))
        return Value();

    plist_t root = nullptr;
    if (binary)
        plist_from_bin(raw, length, &root);
    else
        plist_from_xml(raw, length, &root);
    if (!root) return Value();
    NodePtr owner(root);
    Value value = NodeReader(!binary).read(root, 0);
    if (!value.isNil() && format)
        *format = binary ? PropertyListFormat::Binary : PropertyListFormat::XML;
    return value;
}

}  // namespace

Value propertyListFromData(const Bytes& bytes, PropertyListFormat* format) {
    try {
        return parse(bytes, format);
    } catch (...) {
        // Out of memory on a huge document: nil, as for any other unreadable data.
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
    } catch (...) {
        return failWith("Property list could not be written");
    }
}

}  // namespace plat
