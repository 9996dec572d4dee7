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
    return "<" + className() + ": " + address + ">";
}

}  // namespace plat
