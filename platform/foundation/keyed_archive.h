#pragma once

#include <optional>

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

}  // namespace plat
