#include "app/defaults_command.h"

#include <cerrno>
#include <cstdlib>

#include "app/batch_run.h"
#include "app/json_output.h"
#include "platform/foundation/plist.h"
#include "platform/foundation/plist_file.h"
#include "platform/system/device_root.h"

namespace velto::app {

namespace {

std::string domainPath(const std::string& domain) {
    if (!domain.empty() && domain[0] == '/')
        return domain.size() > 6 && domain.ends_with(".plist") ? domain : domain + ".plist";
    return "/var/mobile/Library/Preferences/" + domain + ".plist";
}

plat::Value readDomain(const plat::DeviceRoot& root, const std::string& domain) {
    const auto bytes = root.readFile(domainPath(domain));
    if (!bytes) return plat::Value();
    const plat::Value value = plat::propertyListFromData(*bytes);
    return value.isDictionary() ? value : plat::Value();
}

std::string lower(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

std::optional<plat::Value> parseTyped(const std::string& type, const std::string& text,
                                      std::string& error) {
    if (type == "-bool" || type == "-boolean") {
        const std::string word = lower(text);
        if (word == "true" || word == "yes" || word == "1") return plat::Value::boolean(true);
        if (word == "false" || word == "no" || word == "0") return plat::Value::boolean(false);
        error = "'" + text + "' is not a boolean (true, false, yes, no, 1, 0)";
        return std::nullopt;
    }
    if (type == "-int" || type == "-integer") {
        char* end = nullptr;
        errno = 0;
        const long long number = std::strtoll(text.c_str(), &end, 10);
        if (text.empty() || *end != '\0' || errno == ERANGE) {
            error = "'" + text + "' is not an integer";
            return std::nullopt;
        }
        return plat::Value::integer(number);
    }
    if (type == "-float") {
        char* end = nullptr;
        const double number = std::strtod(text.c_str(), &end);
        if (text.empty() || *end != '\0') {
            error = "'" + text + "' is not a number";
            return std::nullopt;
        }
        return plat::Value::real(number);
    }
    if (type == "-string") return plat::Value::string(text);
    error = "unknown type " + type + " (use -bool, -int, -float or -string)";
    return std::nullopt;
}

// What `defaults read` prints for a single value: scalars bare, containers in the text form.
std::string shown(const plat::Value& value) {
    return value.description();
}

int fail(DefaultsIo& io, const std::string& message) {
    if (io.json)
        io.err << jsonText(errorLine(message)) << "\n";
    else
        io.err << "defaults: " << message << "\n";
    return kExitTrouble;
}

bool writeDomain(const plat::DeviceRoot& root, const std::string& domain,
                 const plat::Value& value) {
    // Through the one write path that sets an unreadable file aside instead of replacing it.
    const std::string path = domainPath(domain);
    const auto bytes = plat::dataFromPropertyList(value, plat::PropertyListFormat::Binary);
    if (!bytes) return false;
    const std::string folder = path.substr(0, path.rfind('/'));
    if (!folder.empty() && !root.createDirectory(folder, true)) return false;
    return plat::writeDataToFile(root, *bytes, path, true);
}

}  // namespace

int defaultsRead(const std::filesystem::path& device, const std::string& domain,
                 const std::optional<std::string>& key, DefaultsIo io) {
    const plat::DeviceRoot root(device);
    const plat::Value values = readDomain(root, domain);
    if (values.isNil()) return fail(io, "the domain " + domain + " does not exist");
    const plat::Value shownValue = key ? values.objectForKey(*key) : values;
    if (shownValue.isNil())
        return fail(io, "the domain/default pair of (" + domain + ", " + *key + ") does not exist");
    if (io.json)
        io.out << jsonText(valueJson(shownValue)) << "\n";
    else
        io.out << shown(shownValue) << "\n";
    return kExitOk;
}

int defaultsWrite(const std::filesystem::path& device, const std::string& domain,
                  const std::vector<std::string>& arguments, DefaultsIo io) {
    std::optional<plat::Value> value;
    std::string error;
    if (arguments.size() == 2 && (arguments[1].empty() || arguments[1][0] != '-'))
        value = plat::Value::string(arguments[1]);
    else if (arguments.size() == 3)
        value = parseTyped(arguments[1], arguments[2], error);
    else
        error = "expected: defaults write DOMAIN KEY -bool|-int|-float|-string VALUE";
    if (!value) return fail(io, error);

    const plat::DeviceRoot root(device);
    plat::Value values = readDomain(root, domain);
    if (values.isNil()) values = plat::Value::dictionary();
    values.setValueForKey(arguments[0], *value);
    if (!writeDomain(root, domain, values)) return fail(io, "cannot write the domain " + domain);
    return kExitOk;
}

int defaultsDelete(const std::filesystem::path& device, const std::string& domain,
                   const std::optional<std::string>& key, DefaultsIo io) {
    const plat::DeviceRoot root(device);
    const plat::Value values = readDomain(root, domain);
    if (values.isNil()) return fail(io, "the domain " + domain + " does not exist");
    if (!key) {
        if (!root.removeItem(domainPath(domain)))
            return fail(io, "cannot remove the domain " + domain);
        return kExitOk;
    }
    if (values.objectForKey(*key).isNil())
        return fail(io, "the domain/default pair of (" + domain + ", " + *key + ") does not exist");
    values.removeObjectForKey(*key);
    if (!writeDomain(root, domain, values)) return fail(io, "cannot write the domain " + domain);
    return kExitOk;
}

}  // namespace velto::app
