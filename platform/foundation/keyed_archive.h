#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/value.h"

namespace plat {

// +[NSKeyedUnarchiver unarchiveObjectWithData:] for the classes the bundle archives: NSString,
// NSNumber, NSData, NSDate, NSNull, NSArray, NSDictionary (and their mutable kinds), UIImage
// and UIColor. An object of any other class decodes as the first class of its $classes chain
// that is known here. nil for nil or empty data and for anything that is not a well-formed
// archive (Foundation throws there; the bundle treats both the same). Never throws.
Value unarchiveObjectWithData(const Bytes& data);

// +[NSKeyedArchiver archivedDataWithRootObject:] — a binary property list laid out as Apple's
// archiver lays it out. nullopt when something inside cannot be archived: a UID, an object
// other than an image or a colour, an array holding nil, or a container that holds itself.
//
// The model's arrays and dictionaries are always mutable, so there is nothing to tell
// NSArray from NSMutableArray; they are archived as NSArray and NSDictionary, which is also
// what a reader gets back from Foundation's unarchiver unless it asks for mutable copies.
// NSMutableString and NSMutableData follow the Value's flavour.
std::optional<Bytes> archivedDataWithRootObject(const Value& root);

// What a codec may ask of the archive it decodes from.
class ArchiveReading {
  public:
    // A field of the object: one that refers to another object is followed to it.
    virtual Value member(const Value& fields, const std::string& key) = 0;
    // Takes `amount` from what the archive's objects may hold in all (pixels, say); false when
    // that would overdraw it, and the object must not be made.
    virtual bool claim(std::uint64_t amount) = 0;

  protected:
    ~ArchiveReading() = default;
};

// An object's fields as written: scalars stay in the object, objects are archived on their
// own and referred to.
struct ArchivedFields {
    Dictionary scalars;
    Dictionary objects;
};

// How the archiver writes and reads the objects of a class that lives above the value model
// (UIImage, UIColor): registered by the code that defines the class, once, before its objects
// are archived.
struct ArchiveCodec {
    // The class chain written as "$classes"; the first name is the class's own.
    std::vector<std::string> classes;
    // The fields of an object whose className() is the codec's; nullopt when it cannot be
    // archived.
    std::function<std::optional<ArchivedFields>(const Object& object)> encode;
    // The object from its fields; nil when they are malformed, which fails the whole archive.
    std::function<Value(const Value& fields, ArchiveReading& archive)> decode;
};
void registerArchiveCodec(ArchiveCodec codec);

}  // namespace plat
