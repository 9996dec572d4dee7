#include "device/app_choice.h"
#include "contract/catalogue.h"

#include <algorithm>
#include <cctype>
#include <vector>

namespace velto::device {

namespace {

void fail(std::string* error, std::string message) {
    if (error) *error = std::move(message);
}

std::vector<std::string> splitCommas(const std::string& text) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (;;) {
        const std::size_t comma = text.find(',', start);
        parts.push_back(text.substr(start, comma - start));
        if (comma == std::string::npos) return parts;
        start = comma + 1;
    }
}

// Bundle identifiers are reverse-DNS names: letters, digits, '-' and '.' only.
bool isBundleIdentifier(const std::string& text) {
    if (text.empty() || text.front() == '.' || text.back() == '.') return false;
    return std::all_of(text.begin(), text.end(),
                       [](unsigned char c) { return std::isalnum(c) || c == '.' || c == '-'; });
}

}  // namespace

AppChoice whatsAppChoice() {
    return {appids::kWhatsApp, "WhatsApp", false};
}
// The bundle looks for this one at the fixed path Applications/biteSMS.app.
AppChoice biteSMSChoice() {
    return {appids::kBiteSMS, "biteSMS", true};
}
AppChoice ringLedgerChoice() {
    return {appids::kRingLedger, "RingLedger", true};
}
AppChoice recentsChoice() {
    return {appids::kRecents, "Recents", true};
}

std::optional<AppChoice> parseAppChoice(const std::string& text, std::string* error) {
    if (text == "whatsapp") return whatsAppChoice();
    if (text == "bitesms") return biteSMSChoice();
    if (text == "ringledger") return ringLedgerChoice();
    if (text == "recents") return recentsChoice();

    const std::vector<std::string> parts = splitCommas(text);
    if (parts.size() > 3) {
        fail(error, "'" + text + "': expected ID[,NAME[,system|user]]");
        return std::nullopt;
    }
    AppChoice spec;
    spec.bundleIdentifier = parts[0];
    if (!isBundleIdentifier(spec.bundleIdentifier)) {
        fail(error, "'" + parts[0] +
                        "' is not a bundle identifier (nor whatsapp, bitesms, "
                        "ringledger or recents)");
        return std::nullopt;
    }
    spec.name = parts.size() > 1 ? parts[1] : "";
    if (spec.name.empty())
        spec.name = spec.bundleIdentifier.substr(spec.bundleIdentifier.rfind('.') + 1);
    if (spec.name.find('/') != std::string::npos) {
        fail(error, "'" + spec.name + "': an application name cannot hold '/'");
        return std::nullopt;
    }
    if (parts.size() > 2) {
        if (parts[2] == "system") {
            spec.system = true;
        } else if (parts[2] != "user") {
            fail(error, "'" + parts[2] + "': the kind of an application is system or user");
            return std::nullopt;
        }
    }
    return spec;
}

std::optional<PackageChoice> parsePackageChoice(const std::string& text, std::string* error) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == text.size()) {
        fail(error, "'" + text + "': expected ID=VERSION");
        return std::nullopt;
    }
    PackageChoice spec{text.substr(0, equals), text.substr(equals + 1)};
    // A newline would end the stanza of the package database early.
    if (spec.identifier.find_first_of(" \n") != std::string::npos ||
        spec.version.find_first_of(" \n") != std::string::npos) {
        fail(error, "'" + text + "': identifiers and versions hold no spaces");
        return std::nullopt;
    }
    return spec;
}

}  // namespace velto::device
