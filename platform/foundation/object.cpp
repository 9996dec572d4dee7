#include "platform/foundation/object.h"

#include <algorithm>
#include <cstdio>

namespace plat {

bool Object::isKindOf(const std::string& name) const {
    const auto chain = classChain();
    return std::find(chain.begin(), chain.end(), name) != chain.end();
}

std::string Object::description() const {
    char address[32];
    std::snprintf(address, sizeof address, "%p", static_cast<const void*>(this));
    // Appended rather than `"<" + className()`, which GCC 12 at -O3 takes for an overlapping copy.
    std::string out(1, '<');
    out += className();
    out += ": ";
    out += address;
    out += '>';
    return out;
}

}  // namespace plat
