#pragma once

#include <string>

#include "platform/foundation/value.h"

namespace velto::app {

// Where a property list that does not parse breaks, for a developer to find it: "line 12,
// column 7: <what is wrong>" for one in XML; a binary list has no lines, so its byte offset
// when it is cut short, or only that it is binary.
std::string plistBreak(const plat::Bytes& bytes);

}  // namespace velto::app
