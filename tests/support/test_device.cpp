#include "tests/support/test_device.h"

#include <fstream>
#include <stdexcept>

#include <stdlib.h>

#include "platform/foundation/plist.h"
#include "platform/system/host_device_root.h"

namespace testsupport {

TestDevice::TestDevice() {
    std::string folder = (std::filesystem::temp_directory_path() / "velto-device-XXXXXX").string();
    if (!::mkdtemp(folder.data())) throw std::runtime_error("no temporary device root: " + folder);
    root_ = folder;
    plat::Process::Options options;
    options.echoLog = false;
    process_ = std::make_unique<plat::Process>(root_, options);
    scope_ = std::make_unique<plat::ProcessScope>(*process_);
}

TestDevice::~TestDevice() {
    scope_.reset();
    process_.reset();
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
}

std::filesystem::path TestDevice::host(const std::string& devicePath) const {
    auto resolved = plat::HostDeviceRoot(root_).resolve(devicePath);
    if (!resolved) throw std::invalid_argument("path escapes the device root: " + devicePath);
    return *resolved;
}

void TestDevice::writeText(const std::string& devicePath, const std::string& text) const {
    const auto path = host(devicePath);
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

void TestDevice::writePlist(const std::string& devicePath, const plat::Value& value,
                            bool xml) const {
    auto bytes = plat::dataFromPropertyList(
        value, xml ? plat::PropertyListFormat::XML : plat::PropertyListFormat::Binary);
    if (!bytes) throw std::invalid_argument("not a property list: " + devicePath);
    writeText(devicePath, std::string(bytes->begin(), bytes->end()));
}

plat::Value TestDevice::readPlist(const std::string& devicePath) const {
    auto bytes = process_->root().readFile(devicePath);
    return bytes ? plat::propertyListFromData(*bytes) : plat::Value();
}

bool TestDevice::exists(const std::string& devicePath) const {
    return process_->root().fileExists(devicePath);
}

void TestDevice::setProfile(const std::string& family, double scale, bool faceTime) const {
    writePlist("/DeviceProfile.plist",
               plat::Value::dictionary({{"DeviceFamily", family},
                                        {"ScreenScale", plat::Value::real(scale)},
                                        {"FaceTime", plat::Value::boolean(faceTime)}}));
}

void TestDevice::setSystemVersion(const std::string& version) const {
    writePlist("/System/Library/CoreServices/SystemVersion.plist",
               plat::Value::dictionary({{"ProductVersion", version}}));
}

void TestDevice::install(const std::filesystem::path& sourceFolder,
                         const std::string& deviceFolder) const {
    const auto target = host(deviceFolder);
    std::filesystem::create_directories(target);
    std::filesystem::copy(sourceFolder, target,
                          std::filesystem::copy_options::recursive |
                              std::filesystem::copy_options::overwrite_existing);
}

namespace {

// The kind, then the entry's text fields, then "animated" if so. The fields are asked for by
// name in one order, which is also each event's own reading order ("request <name> <center>").
std::string journalLine(const plat::JournalEntry& entry) {
    std::vector<std::string> words{plat::kindName(entry)};
    bool animated = false;
    std::visit(
        [&](const auto& e) {
            if constexpr (requires { e.name; }) words.push_back(e.name);
            if constexpr (requires { e.center; }) words.push_back(e.center);
            if constexpr (requires { e.text; }) words.push_back(e.text);
            if constexpr (requires { e.command; }) words.push_back(e.command);
            if constexpr (requires { e.page; }) words.push_back(e.page);
            if constexpr (requires { e.rowIdentifier; }) words.push_back(e.rowIdentifier);
            if constexpr (requires { e.controllerClass; }) words.push_back(e.controllerClass);
            if constexpr (requires { e.title; }) words.push_back(e.title);
            if constexpr (requires { e.how; }) words.push_back(e.how);
            if constexpr (requires { e.action; }) words.push_back(e.action);
            if constexpr (requires { e.domain; }) words.push_back(e.domain);
            if constexpr (requires { e.key; }) words.push_back(e.key);
            if constexpr (requires { e.cause; }) words.push_back(e.cause);
            if constexpr (requires { e.animated; }) animated = e.animated;
        },
        entry);
    std::string line;
    for (const std::string& word : words)
        if (!word.empty()) line += (line.empty() ? "" : " ") + word;
    return animated ? line + " animated" : line;
}

}  // namespace

std::vector<std::string> TestDevice::journalLines(std::size_t mark) const {
    std::vector<std::string> out;
    for (const auto& entry : process_->journal().since(mark))
        out.push_back(journalLine(entry));
    return out;
}

std::vector<std::string> TestDevice::logLines() const {
    std::vector<std::string> out;
    for (auto& e : entries<plat::journal::Log>())
        out.push_back(e.text);
    return out;
}

std::vector<std::string> TestDevice::notifications() const {
    std::vector<std::string> out;
    for (auto& e : entries<plat::journal::Notification>())
        out.push_back(e.name);
    return out;
}

std::filesystem::path sourceDir() {
    return VELTO_SOURCE_DIR;
}

}  // namespace testsupport
