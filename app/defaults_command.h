#pragma once

#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace velto::app {

// `defaults`, as on a Mac, on a device's preferences: a DOMAIN is a file in
// /var/mobile/Library/Preferences (com.norvale.velto is com.norvale.velto.plist there), or a
// device path beginning with '/'. Files are written as binary property lists, as the
// preferences daemon writes them. Each answers an exit status; messages go to `err`.
struct DefaultsIo {
    std::ostream& out;
    std::ostream& err;
    bool json = false;
};

// Prints the domain, or one key of it, in the property-list text form (or as JSON).
int defaultsRead(const std::filesystem::path& device, const std::string& domain,
                 const std::optional<std::string>& key, DefaultsIo io);
// `arguments` is KEY, then -bool|-int|-float|-string and the VALUE (or just KEY VALUE for a
// string).
int defaultsWrite(const std::filesystem::path& device, const std::string& domain,
                  const std::vector<std::string>& arguments, DefaultsIo io);
// Removes one key, or the whole domain.
int defaultsDelete(const std::filesystem::path& device, const std::string& domain,
                   const std::optional<std::string>& key, DefaultsIo io);

}  // namespace velto::app
