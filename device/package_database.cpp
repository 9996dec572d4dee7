#include "device/package_database.h"

#include <sstream>

#include "platform/system/device_root.h"

namespace velto::device {

namespace {

struct Stanza {
    std::string package, status, version;
};

std::vector<Stanza> readStanzas(const std::string& text) {
    std::vector<Stanza> stanzas;
    Stanza current;
    std::istringstream in(text);
    std::string line;
    auto flush = [&] {
        if (!current.package.empty()) stanzas.push_back(current);
        current = {};
    };
    while (std::getline(in, line)) {
        if (line.empty()) {
            flush();
            continue;
        }
        const std::size_t colon = line.find(':');
        // Continuation lines (descriptions) start with a space and carry nothing we read.
        if (colon == std::string::npos || line[0] == ' ') continue;
        std::string value = line.substr(colon + 1);
        value.erase(0, value.find_first_not_of(' '));
        const std::string field = line.substr(0, colon);
        if (field == "Package")
            current.package = value;
        else if (field == "Status")
            current.status = value;
        else if (field == "Version")
            current.version = value;
    }
    flush();
    return stanzas;
}

}  // namespace

bool writePackageDatabase(const plat::DeviceRoot& root,
                          const std::vector<PackageChoice>& packages) {
    std::ostringstream out;
    for (const PackageChoice& package : packages) {
        out << "Package: " << package.identifier << "\n"
            << "Status: install ok installed\n"
            << "Priority: optional\n"
            << "Section: Tweaks\n"
            << "Architecture: iphoneos-arm\n"
            << "Version: " << package.version << "\n"
            << "Description: " << package.identifier << "\n\n";
    }
    const std::string text = out.str();
    return root.createDirectory("/var/lib/dpkg", true) &&
           root.writeFile(kPackageDatabase, plat::Bytes(text.begin(), text.end()), true);
}

std::optional<std::string> installedPackageVersion(const plat::DeviceRoot& root,
                                                   const std::string& identifier) {
    const auto bytes = root.readFile(kPackageDatabase);
    if (!bytes) return std::nullopt;
    for (const Stanza& stanza : readStanzas(std::string(bytes->begin(), bytes->end()))) {
        if (stanza.package != identifier) continue;
        // "install ok installed"; half-installed or removed packages have no usable version.
        if (stanza.status.size() < 9 ||
            stanza.status.compare(stanza.status.size() - 9, 9, "installed") != 0 ||
            stanza.status.find("not-installed") != std::string::npos)
            return std::nullopt;
        return stanza.version;
    }
    return std::nullopt;
}

}  // namespace velto::device
