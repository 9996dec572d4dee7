#pragma once

#include <optional>
#include <string>

#include "platform/foundation/value.h"

namespace plat {

// The binary property list ("bplist00"), read and written directly between bytes and Values.
//
// libplist 2.2 builds one node per reference (an object shared by three hundred keys becomes
// three hundred copies, and a few hundred bytes of doubly shared arrays become gigabytes) and
// recurses once per nesting level, in its parser, its writer and plist_free. Files Apple's
// reader takes therefore either exhaust memory or the stack there. Here an object referred to
// twice is read once and stays one shared Value, a shared container is written once, and
// neither direction recurses, so nesting costs heap, not stack.

// nil for anything Apple's reader refuses (and for what a Value cannot hold: NSNull, sets,
// strings that are not valid text or hold NUL).
Value binaryPropertyListFromData(const std::uint8_t* data, std::size_t size);

// nullopt, with Foundation's reason, when the value is not a property list.
std::optional<Bytes> binaryDataFromPropertyList(const Value& value, std::string* reason);

// Text a property list can carry: strict UTF-8 without NUL.
bool isPropertyListText(const char* s, std::size_t n);

// Foundation's reasons for refusing to write a value, shared by the XML and binary writers so
// that both say the same thing.
inline constexpr const char* kNotTextReason =
    "property lists cannot contain strings that are not UTF-8 or hold NUL characters";
inline constexpr const char* kNotTextKeyReason =
    "property list dictionaries may only have keys which are UTF-8 without NUL";
inline constexpr const char* kRecursiveReason =
    "property lists cannot contain recursive container references";
// The reason for a value no property list can hold (nil, NSNull, any other object, a UID
// above 32 bits, which Apple's reader cannot hold); empty for every other value.
std::string unwritableKindReason(const Value& value);

}  // namespace plat
