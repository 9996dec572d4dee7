#include "platform/foundation/value.h"

#include <cmath>
#include <cstdio>
#include <ctime>
#include <limits>
#include <set>

#include "platform/foundation/errors.h"
#include "platform/foundation/strings.h"

namespace plat {

namespace {

constexpr double kUnixToReference = 978307200.0;  // 2001-01-01 in Unix time

std::string formatReal(double d) {
    if (std::isnan(d)) return "nan";
    if (std::isinf(d)) return d > 0 ? "inf" : "-inf";
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.17g", d);
    // Prefer the shortest form that reads back to the same double, as NSNumber prints.
    for (int precision = 1; precision <= 17; ++precision) {
        char shorter[64];
        std::snprintf(shorter, sizeof shorter, "%.*g", precision, d);
        if (std::strtod(shorter, nullptr) == d) return shorter;
    }
    return buffer;
}

bool needsQuotes(const std::string& s) {
    if (s.empty()) return true;
    for (unsigned char c : s) {
        if (!(std::isalnum(c) || c == '_' || c == '.' || c == '$' || c == '/' || c == ':'))
            return true;
    }
    return false;
}

std::string quoted(const std::string& s) {
    if (!needsQuotes(s)) return s;
    std::string out = "\"";
    for (char c : s) {
        if (c == '"' || c == '\\') out += '\\';
        if (c == '\n') {
            out += "\\n";
            continue;
        }
        out += c;
    }
    return out + "\"";
}

void describe(const Value& v, int indent, std::string& out, std::set<const void*>& active);

void describeNested(const Value& v, int indent, std::string& out, std::set<const void*>& active) {
    if (v.isArray() || v.isDictionary() || v.isData()) {
        describe(v, indent, out, active);
        return;
    }
    // Inside a container an element's description is quoted when it needs it, not only a
    // string's: NSNull shows as "<null>", a date and a negative number in quotes too. Data keeps
    // its bare <hex> form.
    out += quoted(v.isString() ? *v.asString() : v.description());
}

void describe(const Value& v, int indent, std::string& out, std::set<const void*>& active) {
    const std::string pad(indent * 4, ' ');
    const std::string inner((indent + 1) * 4, ' ');
    switch (v.type()) {
        case Value::Type::Nil:
            out += "(null)";
            return;
        case Value::Type::Null:
            out += "<null>";
            return;
        case Value::Type::Boolean:
            out += v.boolValue() ? "1" : "0";
            return;
        case Value::Type::Integer:
            out += v.isUnsignedBig() ? std::to_string(v.unsignedValue())
                                     : std::to_string(v.integerValue());
            return;
        case Value::Type::Real:
            out += formatReal(v.doubleValue());
            return;
        case Value::Type::String:
            out += *v.asString();
            return;
        case Value::Type::Data: {
            out += "<";
            const Bytes& bytes = *v.asData();
            for (std::size_t i = 0; i < bytes.size(); ++i) {
                if (i && i % 4 == 0) out += ' ';
                char hex[3];
                std::snprintf(hex, sizeof hex, "%02x", bytes[i]);
                out += hex;
            }
            out += ">";
            return;
        }
        case Value::Type::Date: {
            const double unix = *v.asDate() + kUnixToReference;
            std::time_t t = static_cast<std::time_t>(std::floor(unix));
            std::tm tm{};
            gmtime_r(&t, &tm);
            char buffer[64];
            std::strftime(buffer, sizeof buffer, "%Y-%m-%d %H:%M:%S +0000", &tm);
            out += buffer;
            return;
        }
        case Value::Type::Uid:
            out += "<CFKeyedArchiverUID>{value = " + std::to_string(*v.asUid()) + "}";
            return;
        case Value::Type::Object:
            out += v.asObject()->description();
            return;
        case Value::Type::Array: {
            if (!active.insert(v.asArray()).second) {
                out += "(...)";
                return;
            }
            out += "(\n";
            const Array& items = *v.asArray();
            for (std::size_t i = 0; i < items.size(); ++i) {
                out += inner;
                describeNested(items[i], indent + 1, out, active);
                out += i + 1 < items.size() ? ",\n" : "\n";
            }
            out += pad + ")";
            active.erase(v.asArray());
            return;
        }
        case Value::Type::Dictionary: {
            if (!active.insert(v.asDictionary()).second) {
                out += "{...}";
                return;
            }
            out += "{\n";
            for (const auto& [key, item] : *v.asDictionary()) {
                out += inner + quoted(key) + " = ";
                describeNested(item, indent + 1, out, active);
                out += ";\n";
            }
            out += pad + "}";
            active.erase(v.asDictionary());
            return;
        }
    }
}

bool numbersEqual(const Value& a, const Value& b) {
    if (a.isBoolean() || b.isBoolean())
        return a.isBoolean() && b.isBoolean() && a.boolValue() == b.boolValue();
    if (a.isReal() || b.isReal()) return a.doubleValue() == b.doubleValue();
    if (a.isUnsignedBig() || b.isUnsignedBig())
        return a.isUnsignedBig() && b.isUnsignedBig() && a.unsignedValue() == b.unsignedValue();
    return a.integerValue() == b.integerValue();
}

}  // namespace

Value::Value(const char* s) : Value(Type::String, std::string(s ? s : "")) {
    if (!s) *this = Value();
}
Value::Value(std::string s) : Value(Type::String, std::move(s)) {}

Value& Value::operator=(const Value& other) {
    Value copy(other);
    return *this = std::move(copy);
}

Value& Value::operator=(Value&& other) noexcept {
    if (this == &other) return *this;
    // `other` may live inside what this Value owns; the old contents outlive the move.
    Value old(std::move(*this));
    type_ = other.type_;
    storage_ = std::move(other.storage_);
    mutableFlavour_ = other.mutableFlavour_;
    return *this;
}

namespace {

// The values the outermost container teardown on this thread still has to release.
thread_local std::vector<Value>* tLeftToRelease = nullptr;

// Containers are allocated through this allocator so that their teardown is a loop, not a
// recursion: a list nested ten thousand deep would otherwise take ten thousand nested
// destructor frames. The shared pointer calls destroy() only once the last owner lets go, after
// its own synchronisation, so the children are moved out of a container no one else can see.
template <class T>
struct ContainerAllocator {
    using value_type = T;
    ContainerAllocator() = default;
    template <class U>
    ContainerAllocator(const ContainerAllocator<U>&) noexcept {}
    T* allocate(std::size_t n) { return std::allocator<T>().allocate(n); }
    void deallocate(T* p, std::size_t n) noexcept { std::allocator<T>().deallocate(p, n); }
    template <class U>
    void destroy(U* p) noexcept {
        std::vector<Value> own;
        const bool outermost = tLeftToRelease == nullptr;
        if (outermost) tLeftToRelease = &own;
        moveNestedOut(*p);
        p->~U();
        if (!outermost) return;
        while (!own.empty()) {
            Value next = std::move(own.back());
            own.pop_back();
        }  // `next` ends here; a container it owned alone comes back through destroy()
        tLeftToRelease = nullptr;
    }
    template <class U>
    friend bool operator==(const ContainerAllocator&, const ContainerAllocator<U>&) {
        return true;
    }

  private:
    static void keep(Value& child) {
        if (child.isArray() || child.isDictionary()) tLeftToRelease->push_back(std::move(child));
    }
    static void moveNestedOut(Array& items) {
        for (Value& child : items)
            keep(child);
    }
    static void moveNestedOut(Dictionary& entries) {
        for (auto& entry : entries)
            keep(entry.second);
    }
};

}  // namespace

Value::Value(ObjectPtr object) {
    if (object) {
        type_ = Type::Object;
        storage_ = std::move(object);
    }
}

Value Value::null() {
    return Value(Type::Null, std::monostate{});
}
Value Value::boolean(bool b) {
    return Value(Type::Boolean, b);
}
Value Value::integer(std::int64_t i) {
    return Value(Type::Integer, i);
}
Value Value::unsignedInteger(std::uint64_t u) {
    if (u <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
        return integer(static_cast<std::int64_t>(u));
    return Value(Type::Integer, u);
}
Value Value::real(double d) {
    return Value(Type::Real, d);
}
Value Value::string(std::string s) {
    return Value(Type::String, std::move(s));
}
Value Value::mutableString(std::string s) {
    Value v = string(std::move(s));
    v.mutableFlavour_ = true;
    return v;
}
Value Value::data(Bytes bytes) {
    return Value(Type::Data, std::make_shared<const Bytes>(std::move(bytes)));
}
Value Value::mutableData(Bytes bytes) {
    Value v = data(std::move(bytes));
    v.mutableFlavour_ = true;
    return v;
}
Value Value::date(double sinceReferenceDate) {
    return Value(Type::Date, Date{sinceReferenceDate});
}
Value Value::array(Array items) {
    return Value(Type::Array,
                 std::allocate_shared<Array>(ContainerAllocator<Array>(), std::move(items)));
}
Value Value::array(std::initializer_list<Value> items) {
    return array(Array(items));
}
Value Value::dictionary(Dictionary entries) {
    return Value(Type::Dictionary, std::allocate_shared<Dictionary>(
                                       ContainerAllocator<Dictionary>(), std::move(entries)));
}
Value Value::dictionary(std::initializer_list<std::pair<const std::string, Value>> entries) {
    Dictionary d;
    for (const auto& [key, value] : entries) {
        if (!value.isNil()) d[key] = value;
    }
    return dictionary(std::move(d));
}
Value Value::uid(std::uint64_t u) {
    return Value(Type::Uid, Uid{u});
}
Value Value::object(ObjectPtr object) {
    return Value(std::move(object));
}

bool Value::isUnsignedBig() const {
    return std::holds_alternative<std::uint64_t>(storage_);
}

bool Value::boolValue() const {
    switch (type_) {
        case Type::Boolean:
            return std::get<bool>(storage_);
        case Type::Integer:
            return isUnsignedBig() ? std::get<std::uint64_t>(storage_) != 0
                                   : std::get<std::int64_t>(storage_) != 0;
        case Type::Real:
            return std::get<double>(storage_) != 0.0;
        case Type::String:
            return nsStringBoolValue(std::get<std::string>(storage_));
        default:
            return false;
    }
}

std::int64_t Value::integerValue() const {
    switch (type_) {
        case Type::Boolean:
            return std::get<bool>(storage_) ? 1 : 0;
        case Type::Integer:
            return isUnsignedBig() ? static_cast<std::int64_t>(std::get<std::uint64_t>(storage_))
                                   : std::get<std::int64_t>(storage_);
        case Type::Real: {
            const double d = std::get<double>(storage_);
            if (std::isnan(d)) return 0;
            if (d >= 9.2233720368547758e18) return std::numeric_limits<std::int64_t>::max();
            if (d <= -9.2233720368547758e18) return std::numeric_limits<std::int64_t>::min();
            return static_cast<std::int64_t>(d);
        }
        case Type::String:
            return std::strtoll(std::get<std::string>(storage_).c_str(), nullptr, 10);
        default:
            return 0;
    }
}

std::uint64_t Value::unsignedValue() const {
    if (isUnsignedBig()) return std::get<std::uint64_t>(storage_);
    return static_cast<std::uint64_t>(integerValue());
}

double Value::doubleValue() const {
    switch (type_) {
        case Type::Boolean:
            return std::get<bool>(storage_) ? 1.0 : 0.0;
        case Type::Integer:
            return isUnsignedBig() ? static_cast<double>(std::get<std::uint64_t>(storage_))
                                   : static_cast<double>(std::get<std::int64_t>(storage_));
        case Type::Real:
            return std::get<double>(storage_);
        case Type::String:
            return std::strtod(std::get<std::string>(storage_).c_str(), nullptr);
        default:
            return 0.0;
    }
}

const std::string* Value::asString() const& {
    return std::get_if<std::string>(&storage_);
}
std::string Value::str() const {
    const std::string* s = asString();
    return s ? *s : std::string();
}
const Bytes* Value::asData() const {
    auto* p = std::get_if<std::shared_ptr<const Bytes>>(&storage_);
    return p ? p->get() : nullptr;
}
std::optional<double> Value::asDate() const {
    if (auto* d = std::get_if<Date>(&storage_)) return d->sinceReferenceDate;
    return std::nullopt;
}
std::optional<std::uint64_t> Value::asUid() const {
    if (auto* u = std::get_if<Uid>(&storage_)) return u->value;
    return std::nullopt;
}
Array* Value::asArray() const {
    auto* p = std::get_if<std::shared_ptr<Array>>(&storage_);
    return p ? p->get() : nullptr;
}
Dictionary* Value::asDictionary() const {
    auto* p = std::get_if<std::shared_ptr<Dictionary>>(&storage_);
    return p ? p->get() : nullptr;
}
ObjectPtr Value::asObject() const {
    auto* p = std::get_if<ObjectPtr>(&storage_);
    return p ? *p : nullptr;
}

std::size_t Value::count() const {
    if (auto* a = asArray()) return a->size();
    if (auto* d = asDictionary()) return d->size();
    return 0;
}

Value Value::objectForKey(const std::string& key) const {
    if (auto* d = asDictionary()) {
        auto it = d->find(key);
        if (it != d->end()) return it->second;
    }
    return Value();
}

void Value::setValueForKey(const std::string& key, Value value) const {
    if (auto* d = asDictionary()) {
        if (value.isNil())
            d->erase(key);
        else
            (*d)[key] = std::move(value);
    }
}

void Value::removeObjectForKey(const std::string& key) const {
    if (auto* d = asDictionary()) d->erase(key);
}

void Value::removeAllObjects() const {
    if (auto* d = asDictionary()) d->clear();
    if (auto* a = asArray()) a->clear();
}

Value Value::objectAtIndex(std::size_t index) const {
    Array* a = asArray();
    if (!a) return Value();
    if (index >= a->size())
        throw RangeError("-[__NSArrayM objectAtIndex:]: index " + std::to_string(index) +
                         " beyond bounds [0 .. " + std::to_string(a->size()) + ")");
    return (*a)[index];
}

void Value::addObject(Value value) const {
    if (auto* a = asArray()) a->push_back(std::move(value));
}

void Value::insertObjectAtIndex(Value value, std::size_t index) const {
    Array* a = asArray();
    if (!a) return;
    if (index > a->size())
        throw RangeError("-[__NSArrayM insertObject:atIndex:]: index " + std::to_string(index) +
                         " beyond bounds [0 .. " + std::to_string(a->size()) + "]");
    a->insert(a->begin() + static_cast<std::ptrdiff_t>(index), std::move(value));
}

void Value::removeObjectAtIndex(std::size_t index) const {
    Array* a = asArray();
    if (!a) return;
    if (index >= a->size())
        throw RangeError("-[__NSArrayM removeObjectAtIndex:]: index " + std::to_string(index) +
                         " beyond bounds [0 .. " + std::to_string(a->size()) + ")");
    a->erase(a->begin() + static_cast<std::ptrdiff_t>(index));
}

Value Value::deepCopy() const {
    if (auto* a = asArray()) {
        Array copy;
        copy.reserve(a->size());
        for (const Value& item : *a)
            copy.push_back(item.deepCopy());
        return array(std::move(copy));
    }
    if (auto* d = asDictionary()) {
        Dictionary copy;
        for (const auto& [key, item] : *d)
            copy.emplace(key, item.deepCopy());
        return dictionary(std::move(copy));
    }
    return *this;
}

namespace {
// One container being walked by isPropertyList; a worklist instead of recursion, since files
// may nest deeper than the stack would allow.
struct PlistFrame {
    const void* id;
    const Array* array = nullptr;
    std::size_t index = 0;
    const Dictionary* dictionary = nullptr;
    Dictionary::const_iterator entry{};

    const Value* next() {
        if (array) return index < array->size() ? &(*array)[index++] : nullptr;
        if (entry == dictionary->end()) return nullptr;
        return &(entry++)->second;
    }
};
}  // namespace

bool Value::isPropertyList() const {
    std::set<const void*> active;  // containers on the current path: a cycle is no plist
    std::vector<PlistFrame> stack;
    auto enter = [&](const Value& v) {
        switch (v.type()) {
            case Type::Nil:
            case Type::Null:
            case Type::Object:
                return false;
            case Type::Array:
                if (!v.asArray()) return true;
                if (!active.insert(v.asArray()).second) return false;
                stack.push_back(PlistFrame{v.asArray(), v.asArray()});
                return true;
            case Type::Dictionary: {
                const Dictionary* d = v.asDictionary();
                if (!d) return true;
                if (!active.insert(d).second) return false;
                stack.push_back(PlistFrame{d, nullptr, 0, d, d->begin()});
                return true;
            }
            default:
                return true;
        }
    };
    if (!enter(*this)) return false;
    while (!stack.empty()) {
        const Value* child = stack.back().next();
        if (!child) {
            active.erase(stack.back().id);
            stack.pop_back();
        } else if (!enter(*child)) {
            return false;
        }
    }
    return true;
}

bool operator==(const Value& a, const Value& b) {
    if (a.isNumber() && b.isNumber()) return numbersEqual(a, b);
    if (a.type() != b.type()) return false;
    switch (a.type()) {
        case Value::Type::Nil:
        case Value::Type::Null:
            return true;
        case Value::Type::String:
            return *a.asString() == *b.asString();
        case Value::Type::Data:
            return *a.asData() == *b.asData();
        case Value::Type::Date:
            return *a.asDate() == *b.asDate();
        case Value::Type::Uid:
            return *a.asUid() == *b.asUid();
        case Value::Type::Object:
            return a.asObject() == b.asObject();
        case Value::Type::Array:
            return a.asArray() == b.asArray() || *a.asArray() == *b.asArray();
        case Value::Type::Dictionary:
            return a.asDictionary() == b.asDictionary() || *a.asDictionary() == *b.asDictionary();
        default:
            return false;
    }
}

bool Value::identical(const Value& other) const {
    if (type_ != other.type_) return false;
    if (auto* a = asArray()) return a == other.asArray();
    if (auto* d = asDictionary()) return d == other.asDictionary();
    if (isObject()) return asObject() == other.asObject();
    return *this == other;
}

std::string Value::description() const {
    std::string out;
    std::set<const void*> active;
    describe(*this, 0, out, active);
    return out;
}

const char* typeName(Value::Type type) {
    switch (type) {
        case Value::Type::Nil:
            return "nil";
        case Value::Type::Null:
            return "null";
        case Value::Type::Boolean:
            return "boolean";
        case Value::Type::Integer:
            return "integer";
        case Value::Type::Real:
            return "real";
        case Value::Type::String:
            return "string";
        case Value::Type::Data:
            return "data";
        case Value::Type::Date:
            return "date";
        case Value::Type::Array:
            return "array";
        case Value::Type::Dictionary:
            return "dictionary";
        case Value::Type::Uid:
            return "uid";
        case Value::Type::Object:
            return "object";
    }
    return "unknown";
}

}  // namespace plat
