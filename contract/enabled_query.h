#pragma once

#include <string>

namespace velto {

// The preferences folder, built as every page builds it: "/var/mobile/" joined with
// "Library/Preferences".
std::string preferencesFolder();
// The path of a settings file of that folder.
std::string settingsFilePathFor(const std::string& fileName);

// One boolean of a settings file, read afresh from disk on every call: a fresh dictionary is
// made from the file, the key's object answers its boolean value, and the dictionary is
// emptied before it is dropped. A missing file, key or unreadable file reads as false.
bool enabledQuery(const std::string& key, const std::string& settingsFileName);

}  // namespace velto
