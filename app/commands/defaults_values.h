#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/value.h"

namespace velto::app {

// The value `defaults write DOMAIN KEY ...` stores, from what follows KEY:
//   VALUE                         a string
//   -bool|-int|-float|-string|-data|-date VALUE
//   -array ITEM...  -array-add ITEM...   an array, or items appended to the stored one
//   -dict KEY ITEM...  -dict-add KEY ITEM...   a dictionary, or entries added to the stored one
// where an ITEM is VALUE or a type and VALUE. `stored` is what the key holds now (nil when
// absent). nullopt, with `error` saying why, for anything else.
std::optional<plat::Value> parseWrittenValue(const std::vector<std::string>& words,
                                             const plat::Value& stored, std::string& error);

// What `defaults read-type` names a value: boolean, integer, float, string, data, date, array,
// dictionary.
std::string defaultsTypeName(const plat::Value& value);

// The most objects a printed value may come to. A binary property list stores an object once
// however often it is used, but text and JSON spell it out at every use: a few hundred bytes
// that share doubly at each level print as exabytes. The same bound as XML output.
inline constexpr std::uint64_t kMaxPrintedObjects = std::uint64_t{1} << 22;

// How many objects the value comes to once every shared object is spelled out at each of its
// uses, counting no further than `limit` + 1. Linear in the stored objects.
std::uint64_t printedObjectCount(const plat::Value& value,
                                 std::uint64_t limit = kMaxPrintedObjects);

}  // namespace velto::app
