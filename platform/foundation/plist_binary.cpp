#include "platform/foundation/plist_binary.h"

#include "platform/foundation/bplist_bytes.h"
#include "platform/foundation/utf8.h"

#include <bit>
#include <cstring>
#include <limits>
#include <unordered_map>
#include <vector>

namespace plat {

namespace {

using bplist::appendBigEndian;
using bplist::kHeaderSize;
using bplist::kTrailerSize;
using bplist::readBigEndian;

std::size_t widthFor(std::uint64_t v) {
    if (v <= 0xFF) return 1;
    if (v <= 0xFFFF) return 2;
    if (v <= 0xFFFFFFFFu) return 4;
    return 8;
}

bool isContainerMarker(std::uint8_t marker) {
    const unsigned kind = marker >> 4;
    return kind == 0xA || kind == 0xD;
}

// ---------------------------------------------------------------------------------------------

class Reader {
  public:
    Reader(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    Value read() {
        if (size_ < kHeaderSize + kTrailerSize + 1 || std::memcmp(data_, "bplist00", 8) != 0)
            return Value();
        const std::uint8_t* trailer = data_ + size_ - kTrailerSize;
        offsetSize_ = trailer[6];
        refSize_ = trailer[7];
        count_ = readBigEndian(trailer + 8, 8);
        const std::uint64_t top = readBigEndian(trailer + 16, 8);
        tableOffset_ = readBigEndian(trailer + 24, 8);
        if (offsetSize_ < 1 || offsetSize_ > 8 || refSize_ < 1 || refSize_ > 8) return Value();
        if (count_ == 0 || top >= count_) return Value();
        if (tableOffset_ <= kHeaderSize || tableOffset_ >= size_ - kTrailerSize) return Value();
        const std::uint64_t tableBytes = size_ - kTrailerSize - tableOffset_;
        if (tableBytes / offsetSize_ < count_) return Value();
        if (refSize_ < 8 && count_ > (std::uint64_t{1} << (8 * refSize_))) return Value();
        table_ = data_ + tableOffset_;
        state_.assign(count_, kUnseen);
        values_.resize(count_);
        return walk(top);
    }

  private:
    enum : std::uint8_t { kUnseen, kOpen, kDone };

    struct Frame {
        std::uint64_t object;
        bool dict;
        std::uint64_t refs;  // where the (value) references start
        std::uint64_t n;
        std::uint64_t next = 0;
        Array items;
        std::vector<std::string> keys;
        Dictionary entries;
    };

    bool offsetOf(std::uint64_t object, std::uint64_t& offset) const {
        offset = readBigEndian(table_ + object * offsetSize_, offsetSize_);
        return offset >= kHeaderSize && offset < tableOffset_;
    }

    std::uint64_t ref(std::uint64_t at) const { return readBigEndian(data_ + at, refSize_); }

    // The object's count (low nibble, or the integer after the marker) and where its payload
    // begins.
    bool countOf(std::uint64_t& pos, std::uint8_t marker, std::uint64_t& n) const {
        n = marker & 0x0F;
        if (n != 0x0F) return true;
        if (pos >= tableOffset_ || (data_[pos] & 0xF0) != 0x10) return false;
        const std::size_t width = std::size_t{1} << (data_[pos] & 0x0F);
        if (width > 8 || tableOffset_ - pos - 1 < width) return false;
        n = readBigEndian(data_ + pos + 1, width);
        pos += 1 + width;
        return true;
    }

    bool fits(std::uint64_t pos, std::uint64_t n, std::uint64_t unit) const {
        return pos <= tableOffset_ && n <= (tableOffset_ - pos) / unit;
    }

    Value scalar(std::uint64_t object) {
        if (state_[object] == kDone) return values_[object];
        std::uint64_t pos;
        if (!offsetOf(object, pos)) return Value();
        Value v = decodeScalar(pos);
        if (!v.isNil()) {
            state_[object] = kDone;
            values_[object] = v;
        }
        return v;
    }

    Value decodeScalar(std::uint64_t pos) {
        const std::uint8_t marker = data_[pos++];
        const unsigned kind = marker >> 4;
        const unsigned low = marker & 0x0F;
        switch (kind) {
            case 0x0:
                if (marker == 0x08) return Value::boolean(false);
                if (marker == 0x09) return Value::boolean(true);
                return Value();  // null and fill hold no Foundation value
            case 0x1: {
                if (low > 4) return Value();
                const std::size_t width = std::size_t{1} << low;
                if (!fits(pos, width, 1)) return Value();
                if (width < 16) {
                    const std::uint64_t u = readBigEndian(data_ + pos, width);
                    return Value::integer(static_cast<std::int64_t>(u));
                }
                const std::uint64_t high = readBigEndian(data_ + pos, 8);
                const std::uint64_t u = readBigEndian(data_ + pos + 8, 8);
                if (high == 0)
                    return u > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())
                               ? Value::unsignedInteger(u)
                               : Value::integer(static_cast<std::int64_t>(u));
                if (high == ~std::uint64_t{0} && (u >> 63) != 0)
                    return Value::integer(static_cast<std::int64_t>(u));
                return Value();
            }
            case 0x2:
                if (low == 2 && fits(pos, 4, 1))
                    return Value::real(std::bit_cast<float>(
                        static_cast<std::uint32_t>(readBigEndian(data_ + pos, 4))));
                if (low == 3 && fits(pos, 8, 1))
                    return Value::real(std::bit_cast<double>(readBigEndian(data_ + pos, 8)));
                return Value();
            case 0x3:
                if (marker != 0x33 || !fits(pos, 8, 1)) return Value();
                return Value::date(std::bit_cast<double>(readBigEndian(data_ + pos, 8)));
            case 0x4: {
                std::uint64_t n;
                if (!countOf(pos, marker, n) || !fits(pos, n, 1)) return Value();
                return Value::data(Bytes(data_ + pos, data_ + pos + n));
            }
            case 0x5: {
                std::uint64_t n;
                if (!countOf(pos, marker, n) || !fits(pos, n, 1)) return Value();
                const auto* p = data_ + pos;
                for (std::uint64_t i = 0; i < n; ++i)
                    if (p[i] == 0 || p[i] >= 0x80) return Value();
                return Value::string(std::string(reinterpret_cast<const char*>(p), n));
            }
            case 0x6: {
                std::uint64_t n;
                if (!countOf(pos, marker, n) || !fits(pos, n, 2)) return Value();
                std::string s;
                s.reserve(n);
                for (std::uint64_t i = 0; i < n; ++i) {
                    std::uint32_t unit =
                        static_cast<std::uint32_t>(readBigEndian(data_ + pos + 2 * i, 2));
                    if (unit == 0) return Value();
                    if (unit >= 0xD800 && unit <= 0xDBFF) {
                        if (i + 1 >= n) return Value();
                        const auto second =
                            static_cast<std::uint32_t>(readBigEndian(data_ + pos + 2 * i + 2, 2));
                        if (second < 0xDC00 || second > 0xDFFF) return Value();
                        unit = 0x10000 + ((unit - 0xD800) << 10) + (second - 0xDC00);
                        ++i;
                    } else if (unit >= 0xDC00 && unit <= 0xDFFF) {
                        return Value();
                    }
                    appendUtf8(static_cast<char32_t>(unit), s);
                }
                return Value::string(std::move(s));
            }
            case 0x8: {
                const std::size_t width = low + 1;
                if (width > 8 || !fits(pos, width, 1)) return Value();
                const std::uint64_t u = readBigEndian(data_ + pos, width);
                if (u > 0xFFFFFFFFu) return Value();
                return Value::uid(u);
            }
            default:
                return Value();  // sets and unknown markers
        }
    }

    // Opens a container's frame; false when its table entry or layout is corrupt.
    bool open(std::uint64_t object) {
        std::uint64_t pos;
        if (!offsetOf(object, pos)) return false;
        const std::uint8_t marker = data_[pos++];
        std::uint64_t n;
        if (!countOf(pos, marker, n)) return false;
        const bool dict = (marker >> 4) == 0xD;
        if (!fits(pos, n, refSize_) || (dict && !fits(pos, 2 * n, refSize_))) return false;
        Frame frame{object, dict, dict ? pos + n * refSize_ : pos, n, 0, {}, {}, {}};
        if (dict) {
            frame.keys.reserve(n);
            for (std::uint64_t i = 0; i < n; ++i) {
                const std::uint64_t keyObject = ref(pos + i * refSize_);
                if (keyObject >= count_) return false;
                const Value key = scalar(keyObject);
                const std::string* text = key.asString();
                if (!text) return false;
                frame.keys.push_back(*text);
            }
        } else {
            frame.items.reserve(n);
        }
        state_[object] = kOpen;
        stack_.push_back(std::move(frame));
        return true;
    }

    bool isContainer(std::uint64_t object) const {
        std::uint64_t pos;
        return offsetOf(object, pos) && isContainerMarker(data_[pos]);
    }

    static void add(Frame& frame, Value v) {
        if (frame.dict)
            frame.entries.insert_or_assign(frame.keys[frame.next], std::move(v));
        else
            frame.items.push_back(std::move(v));
        ++frame.next;
    }

    Value walk(std::uint64_t top) {
        if (!isContainer(top)) return scalar(top);
        if (!open(top)) return Value();
        while (!stack_.empty()) {
            Frame& frame = stack_.back();
            if (frame.next < frame.n) {
                const std::uint64_t child = ref(frame.refs + frame.next * refSize_);
                if (child >= count_ || state_[child] == kOpen) return Value();  // dangling, cycle
                if (state_[child] == kDone) {
                    add(frame, values_[child]);
                } else if (isContainer(child)) {
                    if (!open(child)) return Value();
                } else {
                    Value v = scalar(child);
                    if (v.isNil()) return Value();
                    add(frame, std::move(v));
                }
                continue;
            }
            Value done = frame.dict ? Value::dictionary(std::move(frame.entries))
                                    : Value::array(std::move(frame.items));
            state_[frame.object] = kDone;
            values_[frame.object] = done;
            stack_.pop_back();
            if (stack_.empty()) return done;
            add(stack_.back(), std::move(done));
        }
        return Value();
    }

    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t offsetSize_ = 0;
    std::size_t refSize_ = 0;
    std::uint64_t count_ = 0;
    std::uint64_t tableOffset_ = 0;
    const std::uint8_t* table_ = nullptr;
    std::vector<std::uint8_t> state_;
    std::vector<Value> values_;
    std::vector<Frame> stack_;
};

// ---------------------------------------------------------------------------------------------

class Writer {
  public:
    std::optional<Bytes> write(const Value& root, std::string* reason) {
        if (!collect(root)) {
            if (reason) *reason = reason_;
            return std::nullopt;
        }
        return encode();
    }

  private:
    // One object of the file: a value, or a dictionary key (a string).
    struct Entry {
        const Value* value;
        const std::string* key;
        std::size_t refs = 0;  // into refs_, for containers
        std::size_t n = 0;
    };
    enum : std::uint8_t { kAssigned, kOpen, kDone };

    bool fail(std::string text) {
        if (reason_.empty()) reason_ = std::move(text);
        return false;
    }

    // The object number for a value, made on first sight. Containers are one object per
    // container (shared stays shared); strings one per text.
    bool indexOf(const Value& v, std::uint64_t& index) {
        switch (v.type()) {
            case Value::Type::Nil:
            case Value::Type::Null:
            case Value::Type::Object:
                return fail(unwritableKindReason(v));
            case Value::Type::Array:
            case Value::Type::Dictionary: {
                const void* p = v.isArray() ? static_cast<const void*>(v.asArray())
                                            : static_cast<const void*>(v.asDictionary());
                auto [it, made] = containers_.try_emplace(p, entries_.size());
                if (made) {
                    entries_.push_back({&v, nullptr});
                    state_.push_back(kAssigned);
                }
                index = it->second;
                return true;
            }
            case Value::Type::String:
                return stringIndex(*v.asString(), &v, nullptr, index);
            case Value::Type::Uid:
                if (std::string why = unwritableKindReason(v); !why.empty()) return fail(why);
                break;
            default:
                break;
        }
        index = entries_.size();
        entries_.push_back({&v, nullptr});
        state_.push_back(kDone);
        return true;
    }

    bool stringIndex(const std::string& s, const Value* v, const std::string* key,
                     std::uint64_t& index) {
        auto [it, made] = strings_.try_emplace(std::string_view(s), entries_.size());
        if (made) {
            if (!isPropertyListText(s.data(), s.size()))
                return fail(key ? kNotTextKeyReason : kNotTextReason);
            entries_.push_back({v, key});
            state_.push_back(kDone);
        }
        index = it->second;
        return true;
    }

    // Numbers every object in depth-first order without recursing, and refuses a container
    // that holds itself.
    bool collect(const Value& root) {
        std::uint64_t top;
        if (!indexOf(root, top)) return false;
        if (state_[top] != kAssigned) return true;
        struct Frame {
            std::uint64_t index;
            std::size_t next;
        };
        std::vector<Frame> stack;
        auto expand = [&](std::uint64_t index) {
            state_[index] = kOpen;
            const Value& v = *entries_[index].value;
            const std::size_t start = refs_.size();
            if (const Array* items = v.asArray()) {
                for (const Value& item : *items) {
                    std::uint64_t child;
                    if (!indexOf(item, child)) return false;
                    refs_.push_back(child);
                }
            } else {
                const Dictionary& dict = *v.asDictionary();
                refs_.resize(start + 2 * dict.size());
                std::size_t i = 0;
                for (const auto& [key, item] : dict) {
                    std::uint64_t k, child;
                    if (!stringIndex(key, nullptr, &key, k) || !indexOf(item, child)) return false;
                    refs_[start + i] = k;
                    refs_[start + dict.size() + i] = child;
                    ++i;
                }
            }
            entries_[index].refs = start;
            entries_[index].n = refs_.size() - start;
            stack.push_back({index, start});
            return true;
        };
        if (!expand(top)) return false;
        while (!stack.empty()) {
            Frame& frame = stack.back();
            const Entry& entry = entries_[frame.index];
            if (frame.next < entry.refs + entry.n) {
                const std::uint64_t child = refs_[frame.next++];
                if (state_[child] == kOpen) return fail(kRecursiveReason);
                if (state_[child] == kAssigned && !expand(child)) return false;
                continue;
            }
            state_[frame.index] = kDone;
            stack.pop_back();
        }
        return true;
    }

    void appendCount(std::uint8_t kind, std::uint64_t n) {
        if (n < 15) {
            out_.push_back(static_cast<std::uint8_t>((kind << 4) | n));
            return;
        }
        out_.push_back(static_cast<std::uint8_t>((kind << 4) | 0x0F));
        const std::size_t width = widthFor(n);
        out_.push_back(static_cast<std::uint8_t>(0x10 | std::countr_zero(width)));
        appendBigEndian(out_, n, width);
    }

    void appendString(const std::string& s) {
        bool ascii = true;
        for (char c : s)
            if (static_cast<unsigned char>(c) >= 0x80) ascii = false;
        if (ascii) {
            appendCount(0x5, s.size());
            out_.insert(out_.end(), s.begin(), s.end());
            return;
        }
        std::vector<std::uint16_t> units;
        units.reserve(s.size());
        const auto* p = reinterpret_cast<const unsigned char*>(s.data());
        for (std::size_t i = 0; i < s.size();) {
            std::uint32_t cp;
            const unsigned c = p[i];
            if (c < 0x80)
                cp = c, i += 1;
            else if (c < 0xE0)
                cp = ((c & 0x1F) << 6) | (p[i + 1] & 0x3F), i += 2;
            else if (c < 0xF0)
                cp = ((c & 0x0F) << 12) | ((p[i + 1] & 0x3F) << 6) | (p[i + 2] & 0x3F), i += 3;
            else
                cp = ((c & 0x07) << 18) | ((p[i + 1] & 0x3F) << 12) | ((p[i + 2] & 0x3F) << 6) |
                     (p[i + 3] & 0x3F),
                i += 4;
            if (cp >= 0x10000) {
                cp -= 0x10000;
                units.push_back(static_cast<std::uint16_t>(0xD800 + (cp >> 10)));
                units.push_back(static_cast<std::uint16_t>(0xDC00 + (cp & 0x3FF)));
            } else {
                units.push_back(static_cast<std::uint16_t>(cp));
            }
        }
        appendCount(0x6, units.size());
        for (std::uint16_t u : units)
            appendBigEndian(out_, u, 2);
    }

    void appendScalar(const Value& v) {
        switch (v.type()) {
            case Value::Type::Boolean:
                out_.push_back(v.boolValue() ? 0x09 : 0x08);
                return;
            case Value::Type::Integer: {
                if (v.isUnsignedBig()) {
                    out_.push_back(0x14);
                    appendBigEndian(out_, 0, 8);
                    appendBigEndian(out_, v.unsignedValue(), 8);
                    return;
                }
                const std::int64_t i = v.integerValue();
                // Negative numbers take all 8 bytes, as Apple's writer has them.
                const std::size_t width = i < 0 ? 8 : widthFor(static_cast<std::uint64_t>(i));
                out_.push_back(static_cast<std::uint8_t>(0x10 | std::countr_zero(width)));
                appendBigEndian(out_, static_cast<std::uint64_t>(i), width);
                return;
            }
            case Value::Type::Real: {
                // A value a float holds exactly takes 4 bytes (CGFloat fields of archives).
                const double d = v.doubleValue();
                const auto f = static_cast<float>(d);
                if (static_cast<double>(f) == d || d != d) {
                    out_.push_back(0x22);
                    appendBigEndian(out_, std::bit_cast<std::uint32_t>(f), 4);
                } else {
                    out_.push_back(0x23);
                    appendBigEndian(out_, std::bit_cast<std::uint64_t>(d), 8);
                }
                return;
            }
            case Value::Type::Date:
                out_.push_back(0x33);
                appendBigEndian(out_, std::bit_cast<std::uint64_t>(*v.asDate()), 8);
                return;
            case Value::Type::Data: {
                const Bytes& b = *v.asData();
                appendCount(0x4, b.size());
                out_.insert(out_.end(), b.begin(), b.end());
                return;
            }
            case Value::Type::Uid: {
                const std::uint64_t u = *v.asUid();
                const std::size_t width = widthFor(u);
                out_.push_back(static_cast<std::uint8_t>(0x80 | (width - 1)));
                appendBigEndian(out_, u, width);
                return;
            }
            default:
                return;
        }
    }

    Bytes encode() {
        const std::uint64_t count = entries_.size();
        const std::size_t refSize = widthFor(count - 1);
        out_.reserve(64 + count * 16);
        out_.assign({'b', 'p', 'l', 'i', 's', 't', '0', '0'});
        std::vector<std::uint64_t> offsets(count);
        for (std::uint64_t i = 0; i < count; ++i) {
            offsets[i] = out_.size();
            const Entry& e = entries_[i];
            if (e.key) {
                appendString(*e.key);
            } else if (e.value->isString()) {
                appendString(*e.value->asString());
            } else if (e.value->isArray() || e.value->isDictionary()) {
                const bool dict = e.value->isDictionary();
                appendCount(dict ? 0xD : 0xA, dict ? e.n / 2 : e.n);
                for (std::size_t r = 0; r < e.n; ++r)
                    appendBigEndian(out_, refs_[e.refs + r], refSize);
            } else {
                appendScalar(*e.value);
            }
        }
        const std::uint64_t tableOffset = out_.size();
        const std::size_t offsetSize = widthFor(tableOffset);
        for (std::uint64_t offset : offsets)
            appendBigEndian(out_, offset, offsetSize);
        out_.insert(out_.end(), 6, 0);
        out_.push_back(static_cast<std::uint8_t>(offsetSize));
        out_.push_back(static_cast<std::uint8_t>(refSize));
        appendBigEndian(out_, count, 8);
        appendBigEndian(out_, 0, 8);  // the root is numbered first
        appendBigEndian(out_, tableOffset, 8);
        return std::move(out_);
    }

    std::vector<Entry> entries_;
    std::vector<std::uint8_t> state_;
    std::vector<std::uint64_t> refs_;
    std::unordered_map<const void*, std::uint64_t> containers_;
    std::unordered_map<std::string_view, std::uint64_t> strings_;
    std::string reason_;
    Bytes out_;
};

}  // namespace

std::string unwritableKindReason(const Value& value) {
    switch (value.type()) {
        case Value::Type::Nil:
            return "property lists cannot contain NULL";
        case Value::Type::Null:
            return "property lists cannot contain objects of type 'CFNull'";
        case Value::Type::Object:
            return "property lists cannot contain objects of type '" +
                   value.asObject()->className() + "'";
        case Value::Type::Uid:
            if (*value.asUid() > 0xFFFFFFFFu)
                return "property lists cannot contain UIDs above 4294967295";
            return {};
        default:
            return {};
    }
}

bool isPropertyListText(const char* s, std::size_t n) {
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

Value binaryPropertyListFromData(const std::uint8_t* data, std::size_t size) {
    return Reader(data, size).read();
}

std::optional<Bytes> binaryDataFromPropertyList(const Value& value, std::string* reason) {
    return Writer().write(value, reason);
}

}  // namespace plat
