#pragma once

#include <optional>
#include <string>

namespace velto::device {

// One application to install on a device. System applications live in /Applications, user
// applications in a bundle container with a data container beside it.
struct AppChoice {
    std::string bundleIdentifier;
    std::string name;
    bool system = false;

    friend bool operator==(const AppChoice&, const AppChoice&) = default;
};

// The applications the bundle's rules single out, by short name.
AppChoice whatsAppChoice();
AppChoice biteSMSChoice();
AppChoice ringLedgerChoice();
AppChoice recentsChoice();

// Reads "whatsapp", "bitesms", "ringledger", "recents", or "ID[,NAME[,system|user]]". Without a
// name the last component of the identifier stands in; without a kind it is a user app.
// nullopt, with a message, when the text is not one of these.
std::optional<AppChoice> parseAppChoice(const std::string& text, std::string* error = nullptr);

// A package of the device's dpkg database, from "ID=VERSION".
struct PackageChoice {
    std::string identifier;
    std::string version;
};
std::optional<PackageChoice> parsePackageChoice(const std::string& text,
                                                std::string* error = nullptr);

}  // namespace velto::device
