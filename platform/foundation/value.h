#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/foundation/object.h"

namespace plat {

class Value;
using Array = std::vector<Value>;
using Dictionary = std::map<std::string, Value>;
using Bytes = std::vector<std::uint8_t>;

// Seconds since 2001-01-01 00:00:00 UTC (NSDate's reference date).
struct Date {
    double sinceReferenceDate = 0;
    friend bool operator==(const Date&, const Date&) = default;
};

// A keyed-archive object reference (CF$UID).
struct Uid {
    std::uint64_t value = 0;
    friend bool operator==(const Uid&, const Uid&) = default;
};

// The object model of Foundation values as the bundle sees them: nil, NSNull, NSNumber
// (boolean, integer, real, kept distinct), NSString, NSData, NSDate, NSArray, NSDictionary,
// keyed-archive UIDs, and any other object.
//
// Containers have reference semantics, as Objective-C objects do: copying a Value that holds an
// array or dictionary copies the reference, so a mutation through one copy is seen through
// every other. deepCopy() makes an independent container (mutableCopy/initWithDictionary:).
//
// Messages to nil, or to a Value of the wrong kind, answer 0/false/nil and change nothing, so
// code written for Objective-C's nil messaging reads the same here.
class Value {
  public:
    enum class Type {
        Nil,         // no object
        Null,        // NSNull
        Boolean,     // NSNumber from a BOOL (CFBoolean)
        Integer,     // NSNumber holding an integer; see isUnsignedBig()
        Real,        // NSNumber holding a double
        String,      // NSString, UTF-8 inside
        Data,        // NSData
        Date,        // NSDate
        Array,       // NSMutableArray
        Dictionary,  // NSMutableDictionary with string keys
        Uid,         // CF$UID of keyed archives
        Object,      // anything else (images, colours, cells, specifiers...)
    };

    Value() = default;  // nil
    Value(std::nullptr_t) {}
    // A property list read from a file may nest tens of thousands of levels; releasing it must
    // not take a stack frame per level, so the last owner of a container unlinks its children
    // into a worklist instead of letting the destructors recurse.
    ~Value() = default;
    Value(const Value&) = default;
    Value(Value&&) noexcept = default;
    Value& operator=(const Value& other);
    Value& operator=(Value&& other) noexcept;
    Value(const char* s);     // NSString
    Value(std::string s);     // NSString
    Value(ObjectPtr object);  // the object, or nil for a null pointer
    template <class T, class = std::enable_if_t<std::is_base_of_v<Object, T>>>
    Value(std::shared_ptr<T> object) : Value(std::static_pointer_cast<Object>(std::move(object))) {}

    static Value null();
    static Value boolean(bool b);
    static Value integer(std::int64_t i);
    // Integers above INT64_MAX stay unsigned (as a 16-byte integer in binary plists);
    // smaller ones become ordinary signed integers.
    static Value unsignedInteger(std::uint64_t u);
    static Value real(double d);
    static Value string(std::string s);
    static Value mutableString(std::string s);  // archived as NSMutableString
    static Value data(Bytes bytes);
    static Value mutableData(Bytes bytes);  // archived as NSMutableData
    static Value date(double sinceReferenceDate);
    static Value array(Array items = {});
    static Value array(std::initializer_list<Value> items);
    static Value dictionary(Dictionary entries = {});
    static Value dictionary(std::initializer_list<std::pair<const std::string, Value>> entries);
    static Value uid(std::uint64_t u);
    static Value object(ObjectPtr object);

    Type type() const { return type_; }
    bool isNil() const { return type_ == Type::Nil; }
    bool isNull() const { return type_ == Type::Null; }
    bool isBoolean() const { return type_ == Type::Boolean; }
    bool isInteger() const { return type_ == Type::Integer; }
    bool isReal() const { return type_ == Type::Real; }
    bool isNumber() const { return isBoolean() || isInteger() || isReal(); }
    bool isString() const { return type_ == Type::String; }
    bool isData() const { return type_ == Type::Data; }
    bool isDate() const { return type_ == Type::Date; }
    bool isArray() const { return type_ == Type::Array; }
    bool isDictionary() const { return type_ == Type::Dictionary; }
    bool isUid() const { return type_ == Type::Uid; }
    bool isObject() const { return type_ == Type::Object; }
    // True for an Integer that only fits unsigned 64-bit (above INT64_MAX).
    bool isUnsignedBig() const;
    // NSMutableString / NSMutableData flavour (only affects archiving).
    bool isMutableFlavour() const { return mutableFlavour_; }

    // Foundation's boolValue: numbers are true when non-zero, strings follow NSString's rules,
    // every other kind (and nil) is false.
    bool boolValue() const;
    // NSNumber/NSString integerValue and doubleValue; 0 for other kinds.
    std::int64_t integerValue() const;
    std::uint64_t unsignedValue() const;
    double doubleValue() const;

    // The string, or nullptr when this is not a string. The string lives inside this Value,
    // so asking a temporary is refused at compile time.
    const std::string* asString() const&;
    const std::string* asString() const&& = delete;
    // The string, or "" when this is not a string.
    std::string str() const;
    const Bytes* asData() const;
    std::optional<double> asDate() const;
    std::optional<std::uint64_t> asUid() const;
    // The live container (shared with every copy of this Value), or nullptr.
    Array* asArray() const;
    Dictionary* asDictionary() const;
    ObjectPtr asObject() const;
    template <class T>
    std::shared_ptr<T> as() const {
        return std::dynamic_pointer_cast<T>(asObject());
    }

    // NSDictionary/NSArray messages (nil-safe).
    std::size_t count() const;
    Value objectForKey(const std::string& key) const;
    // setValue:forKey: semantics: a nil value removes the key. No-op unless a dictionary.
    void setValueForKey(const std::string& key, Value value) const;
    void removeObjectForKey(const std::string& key) const;
    void removeAllObjects() const;
    // Raises RangeError past the end (NSRangeException), as NSArray does.
    Value objectAtIndex(std::size_t index) const;
    void addObject(Value value) const;
    void insertObjectAtIndex(Value value, std::size_t index) const;
    void removeObjectAtIndex(std::size_t index) const;

    // An independent copy: containers are copied recursively; objects are shared.
    Value deepCopy() const;

    // Whether NSPropertyListSerialization would accept this (no nil, NSNull or other objects
    // anywhere inside; UIDs are accepted as the serialiser does for keyed archives).
    bool isPropertyList() const;

    // isEqual:. Numbers compare by value across integer/real (as NSNumber does) but a boolean
    // equals only a boolean; containers compare deeply; objects by identity.
    friend bool operator==(const Value& a, const Value& b);
    // Same object (pointer equality for containers and objects; value equality otherwise).
    bool identical(const Value& other) const;

    // What %@ prints: strings as they are, nil as "(null)", containers in the OpenStep style
    // of NSDictionary/NSArray description.
    std::string description() const;

  private:
    using Storage =
        std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string,
                     std::shared_ptr<const Bytes>, Date, std::shared_ptr<Array>,
                     std::shared_ptr<Dictionary>, Uid, ObjectPtr>;
    Value(Type type, Storage storage) : type_(type), storage_(std::move(storage)) {}

    Type type_ = Type::Nil;
    Storage storage_;
    bool mutableFlavour_ = false;
};

// The name of a Value kind, for messages ("string", "dictionary", ...).
const char* typeName(Value::Type type);

}  // namespace plat
