#pragma once

#include <filesystem>
#include <iostream>
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
    std::istream& in = std::cin;  // what `import DOMAIN -` reads
};

// Prints the domain, or one key of it, in the property-list text form (or as JSON).
int defaultsRead(const std::filesystem::path& device, const std::string& domain,
                 const std::optional<std::string>& key, DefaultsIo io);
// `arguments` is KEY and what parseWrittenValue() reads: a VALUE, a type and a VALUE, or an
// array or dictionary.
int defaultsWrite(const std::filesystem::path& device, const std::string& domain,
                  const std::vector<std::string>& arguments, DefaultsIo io);
// Removes one key, or the whole domain.
int defaultsDelete(const std::filesystem::path& device, const std::string& domain,
                   const std::optional<std::string>& key, DefaultsIo io);

// "Type is boolean" and so on, for one key.
int defaultsReadType(const std::filesystem::path& device, const std::string& domain,
                     const std::string& key, DefaultsIo io);
// The domains in the preferences folder, comma-separated (a JSON array with --json).
int defaultsDomains(const std::filesystem::path& device, DefaultsIo io);
// The domain as an XML property list into FILE ("-": standard output).
int defaultsExport(const std::filesystem::path& device, const std::string& domain,
                   const std::string& file, DefaultsIo io);
// Replaces the domain with the dictionary in FILE ("-": standard input), XML or binary.
int defaultsImport(const std::filesystem::path& device, const std::string& domain,
                   const std::string& file, DefaultsIo io);

}  // namespace velto::app
