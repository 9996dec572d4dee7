#include "app/commands/defaults_command.h"

#include "app/commands/defaults_values.h"
#include "app/exit_status.h"
#include "app/host_files.h"
#include "app/render/json_output.h"
#include "contract/catalogue.h"
#include "platform/foundation/plist.h"
#include "platform/system/host_device_root.h"
#include "platform/system/plist_file.h"

namespace velto::app {

namespace {

constexpr const char* kPreferences = folders::kPreferences;

std::string defaultsDomainPath(const std::string& domain) {
    if (!domain.empty() && domain[0] == '/')
        return domain.size() > 6 && domain.ends_with(".plist") ? domain : domain + ".plist";
    return std::string(kPreferences) + "/" + domain + ".plist";
}

plat::Value readDomain(const plat::DeviceRoot& root, const std::string& domain) {
    const auto bytes = root.readFile(defaultsDomainPath(domain));
    if (!bytes) return plat::Value();
    const plat::Value value = plat::propertyListFromData(*bytes);
    return value.isDictionary() ? value : plat::Value();
}

// Why a domain that read as nothing is not there: missing, or there and unreadable (cut short
// by a killed writer or a full disk, or moved aside by the next writer).
std::string missingDomain(const plat::DeviceRoot& root, const std::string& domain) {
    const std::string path = defaultsDomainPath(domain);
    if (root.status(path)) {
        const auto bytes = root.readFile(path);
        return "the domain " + domain + " is unreadable: " +
               (bytes ? path + " does not hold a property list dictionary" : bytes.error());
    }
    const std::string folder = path.substr(0, path.rfind('/'));
    const std::string aside = path.substr(path.rfind('/') + 1) + ".unreadable-";
    std::string newest;
    for (const std::string& name : root.contentsOfDirectory(folder))
        if (name.starts_with(aside)) newest = name;
    if (!newest.empty())
        return "the domain " + domain + " is unreadable: its file was set aside as " + folder +
               "/" + newest;
    return "the domain " + domain + " does not exist";
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
    return kExitFailed;
}

// "cannot write the domain D: why", or nothing when it was written. Through the one write path
// that sets an unreadable file aside instead of replacing it.
std::optional<std::string> writeDomain(const plat::DeviceRoot& root, const std::string& domain,
                                       const plat::Value& value) {
    const std::string path = defaultsDomainPath(domain);
    const std::string refused = "cannot write the domain " + domain + ": ";
    std::string why;
    const auto bytes = plat::dataFromPropertyList(value, plat::PropertyListFormat::Binary, &why);
    if (!bytes) return refused + why;
    const std::string folder = path.substr(0, path.rfind('/'));
    if (!folder.empty())
        if (const auto made = root.createDirectory(folder, true); !made)
            return refused + made.error();
    if (const auto written = plat::writeDataToFile(root, *bytes, path, true); !written)
        return refused + written.error();
    return std::nullopt;
}

// A domain must name a file: "" would write "Preferences/.plist".
bool unnamed(const std::string& domain) {
    return domain.find_first_not_of(" \t") == std::string::npos;
}

}  // namespace

int defaultsRead(const std::filesystem::path& device, const std::string& domain,
                 const std::optional<std::string>& key, DefaultsIo io) {
    const plat::HostDeviceRoot root(device);
    const plat::Value values = readDomain(root, domain);
    if (values.isNil()) return fail(io, missingDomain(root, domain));
    const plat::Value shownValue = key ? values.objectForKey(*key) : values;
    if (shownValue.isNil())
        return fail(io, "the domain/default pair of (" + domain + ", " + *key + ") does not exist");
    if (printedObjectCount(shownValue) > kMaxPrintedObjects)
        return fail(io, "the domain " + domain + " is too large to print: its shared objects " +
                            "spelled out come to more than " + std::to_string(kMaxPrintedObjects) +
                            " objects");
    if (io.json)
        io.out << jsonText(valueJson(shownValue)) << "\n";
    else
        io.out << shown(shownValue) << "\n";
    return kExitOk;
}

int defaultsWrite(const std::filesystem::path& device, const std::string& domain,
                  const std::vector<std::string>& arguments, DefaultsIo io) {
    if (arguments.size() < 2)
        return fail(io, "expected: defaults write DOMAIN KEY [-TYPE] VALUE (see --help)");
    if (unnamed(domain)) return fail(io, "the domain must have a name");
    const plat::HostDeviceRoot root(device);
    const auto lock = plat::lockForWriting(root, defaultsDomainPath(domain));
    plat::Value values = readDomain(root, domain);
    if (values.isNil()) values = plat::Value::dictionary();
    std::string error;
    const auto value = parseWrittenValue({arguments.begin() + 1, arguments.end()},
                                         values.objectForKey(arguments[0]), error);
    if (!value) return fail(io, error);
    values.setValueForKey(arguments[0], *value);
    if (const auto refused = writeDomain(root, domain, values)) return fail(io, *refused);
    return kExitOk;
}

int defaultsDelete(const std::filesystem::path& device, const std::string& domain,
                   const std::optional<std::string>& key, DefaultsIo io) {
    if (unnamed(domain)) return fail(io, "the domain must have a name");
    const plat::HostDeviceRoot root(device);
    const auto lock = plat::lockForWriting(root, defaultsDomainPath(domain));
    plat::Value values = readDomain(root, domain);
    if (values.isNil()) return fail(io, missingDomain(root, domain));
    if (!key) {
        if (!root.removeItem(defaultsDomainPath(domain)))
            return fail(io, "cannot remove the domain " + domain);
        return kExitOk;
    }
    if (values.objectForKey(*key).isNil())
        return fail(io, "the domain/default pair of (" + domain + ", " + *key + ") does not exist");
    values.removeObjectForKey(*key);
    if (const auto refused = writeDomain(root, domain, values)) return fail(io, *refused);
    return kExitOk;
}

int defaultsReadType(const std::filesystem::path& device, const std::string& domain,
                     const std::string& key, DefaultsIo io) {
    const plat::Value value = readDomain(plat::HostDeviceRoot(device), domain).objectForKey(key);
    if (value.isNil())
        return fail(io, "the domain/default pair of (" + domain + ", " + key + ") does not exist");
    if (io.json)
        io.out << jsonText(nlohmann::json({{"type", defaultsTypeName(value)}})) << "\n";
    else
        io.out << "Type is " << defaultsTypeName(value) << "\n";
    return kExitOk;
}

int defaultsDomains(const std::filesystem::path& device, DefaultsIo io) {
    const plat::HostDeviceRoot root(device);
    std::vector<std::string> domains;
    for (const std::string& name : root.contentsOfDirectory(kPreferences))
        if (name.size() > 6 && name.ends_with(".plist"))
            domains.push_back(name.substr(0, name.size() - 6));
    if (io.json) {
        io.out << jsonText(nlohmann::json(domains)) << "\n";
        return kExitOk;
    }
    for (std::size_t i = 0; i < domains.size(); ++i)
        io.out << (i ? ", " : "") << domains[i];
    io.out << "\n";
    return kExitOk;
}

int defaultsExport(const std::filesystem::path& device, const std::string& domain,
                   const std::string& file, DefaultsIo io) {
    const plat::Value values = readDomain(plat::HostDeviceRoot(device), domain);
    if (values.isNil()) return fail(io, "the domain " + domain + " does not exist");
    std::string why;
    const auto bytes = plat::dataFromPropertyList(values, plat::PropertyListFormat::XML, &why);
    if (!bytes) return fail(io, "cannot export the domain " + domain + ": " + why);
    if (const auto written = writeHostFile(file, *bytes, io.out); !written)
        return fail(io, written.error());
    return kExitOk;
}

int defaultsImport(const std::filesystem::path& device, const std::string& domain,
                   const std::string& file, DefaultsIo io) {
    const auto bytes = readHostFile(file, io.in);
    if (!bytes) return fail(io, bytes.error());
    const plat::Value values = plat::propertyListFromData(*bytes);
    if (!values.isDictionary())
        return fail(io, (file == "-" ? std::string("standard input") : file) +
                            " does not hold a property list dictionary");
    if (unnamed(domain)) return fail(io, "the domain must have a name");
    const plat::HostDeviceRoot root(device);
    const auto lock = plat::lockForWriting(root, defaultsDomainPath(domain));
    if (const auto refused = writeDomain(root, domain, values)) return fail(io, *refused);
    return kExitOk;
}

}  // namespace velto::app
