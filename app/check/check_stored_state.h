#pragma once

#include <cstddef>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace plat {
class DeviceRoot;
}

namespace velto::app {

// A boolean a switch row stores: its "key" in the preferences domain its "defaults" names.
struct StoredKey {
    std::string domain;
    std::string key;
    auto operator<=>(const StoredKey&) const = default;
};

// What a key holds in one state: nothing stored, NO, or YES. Absent comes first because it
// is the smaller state, and rules may tell absent from NO.
enum class Stored { Absent, No, Yes };

// One combination of stored values for a set of keys.
struct StoredState {
    std::vector<StoredKey> keys;
    std::vector<Stored> values;

    // How many keys hold something: states are tried, and reported, smallest first.
    std::size_t size() const;
    // "VeltoEnabled=YES, PhoneAppEnabled=absent" (only the keys that hold something).
    std::string describe() const;
};

// Every combination over the keys, smallest first. With more keys than `fullLimit` only
// absent and YES are combined, so that the count stays within reach.
std::vector<StoredState> storedStates(const std::set<StoredKey>& keys, std::size_t fullLimit = 4);

// Writes the state's domains as the device keeps them (binary property lists under
// /var/mobile/Library/Preferences); a domain with nothing stored has no file. `domains` are
// every domain any state names, so that files of an earlier state do not linger.
void writeStoredState(const plat::DeviceRoot& root, const StoredState& state,
                      const std::set<std::string>& domains);

}  // namespace velto::app
