#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "platform/foundation/value.h"

namespace plat {

// NSPropertyListFormat.
enum class PropertyListFormat { OpenStep = 1, XML = 100, Binary = 200 };

// How deep containers may nest in an XML property list we read or write. libplist's XML parser,
// our converters and plist_free recurse per level; binary property lists are read and written
// without recursion and have no such limit.
inline constexpr std::size_t kMaxPropertyListDepth = 512;

// NSPropertyListSerialization propertyListWithData:options:format:error: — an XML or binary
// property list, whichever the bytes hold. nil for anything that is not a well-formed property
// list; never throws. Integers above INT64_MAX (16-byte integers) stay unsigned; other 8-byte
// integers are signed, as Apple's reader has them. *format, when given, says what was read.
Value propertyListFromData(const Bytes& bytes, PropertyListFormat* format = nullptr);

// NSPropertyListSerialization dataFromPropertyList:format:errorDescription: — binary
// ("bplist00") or XML. nullopt when the value is not a property list (nil, NSNull or another
// object anywhere inside, a container holding itself), with Foundation's description of why.
// OpenStep is read-only, as on the platform.
std::optional<Bytes> dataFromPropertyList(const Value& value, PropertyListFormat format,
                                          std::string* errorDescription = nullptr);

}  // namespace plat
