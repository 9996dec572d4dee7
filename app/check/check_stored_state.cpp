#include "app/check/check_stored_state.h"

#include <algorithm>
#include <map>
#include <stdexcept>

#include "contract/catalogue.h"
#include "platform/foundation/plist.h"
#include "platform/foundation/value.h"
#include "platform/prefs/list_controller.h"
#include "platform/system/device_root.h"

namespace velto::app {

namespace {

const char* storedName(Stored value) {
    switch (value) {
        case Stored::No:
            return "NO";
        case Stored::Yes:
            return "YES";
        case Stored::Absent:
            break;
    }
    return "absent";
}

}  // namespace

std::size_t StoredState::size() const {
    return static_cast<std::size_t>(
        std::count_if(values.begin(), values.end(), [](Stored v) { return v != Stored::Absent; }));
}

std::string StoredState::describe() const {
    std::string text;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (values[i] == Stored::Absent) continue;
        text += (text.empty() ? "" : ", ") + keys[i].key + "=" + storedName(values[i]);
    }
    return text.empty() ? "nothing stored" : text;
}

std::vector<StoredState> storedStates(const std::set<StoredKey>& keys, std::size_t fullLimit) {
    const std::vector<StoredKey> ordered(keys.begin(), keys.end());
    const std::vector<Stored> choices =
        keys.size() <= fullLimit ? std::vector<Stored>{Stored::Absent, Stored::No, Stored::Yes}
                                 : std::vector<Stored>{Stored::Absent, Stored::Yes};
    std::vector<StoredState> states{StoredState{ordered, {}}};
    for (std::size_t k = 0; k < ordered.size(); ++k) {
        std::vector<StoredState> next;
        for (const StoredState& state : states)
            for (Stored choice : choices) {
                StoredState grown = state;
                grown.values.push_back(choice);
                next.push_back(std::move(grown));
            }
        states = std::move(next);
    }
    std::stable_sort(states.begin(), states.end(), [](const StoredState& a, const StoredState& b) {
        return a.size() < b.size();
    });
    return states;
}

void writeStoredState(const plat::DeviceRoot& root, const StoredState& state,
                      const std::set<std::string>& domains) {
    std::map<std::string, plat::Value> contents;
    for (std::size_t i = 0; i < state.keys.size(); ++i) {
        if (state.values[i] == Stored::Absent) continue;
        plat::Value& dict = contents[state.keys[i].domain];
        if (dict.isNil()) dict = plat::Value::dictionary();
        dict.setValueForKey(state.keys[i].key,
                            plat::Value::boolean(state.values[i] == Stored::Yes));
    }
    for (const std::string& domain : domains) {
        const std::string path = plat::preferencesDomainPath(domain);
        auto found = contents.find(domain);
        if (found == contents.end()) {
            if (root.fileExists(path) && !root.removeItem(path))
                throw std::runtime_error("cannot remove the preferences domain " + domain);
            continue;
        }
        // Most resets find the file as the previous run left it: reading is much cheaper than
        // making a new file.
        auto bytes = plat::dataFromPropertyList(found->second, plat::PropertyListFormat::Binary);
        if (!bytes) throw std::runtime_error("cannot encode the preferences domain " + domain);
        if (root.readFile(path) == bytes) continue;
        if (!root.createDirectory(folders::kPreferences, true) ||
            !root.writeFile(path, *bytes, true))
            throw std::runtime_error("cannot write the preferences domain " + domain);
    }
}

}  // namespace velto::app
