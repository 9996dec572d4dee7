#pragma once

namespace plat {

// The name of a process-wide slot together with the type of what it holds, so that a slot is
// always reached through its one constant: a misspelt constant or a wrong type does not
// compile, where a misspelt string would silently make a new, empty slot.
template <class T>
struct SlotKey {
    const char* name;
};

}  // namespace plat
