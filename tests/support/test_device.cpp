#include "tests/support/test_device.h"

#include <atomic>
#include <fstream>
#include <stdexcept>

#include <unistd.h>

#include "platform/foundation/plist.h"
#include "platform/system/host_device_root.h"

namespace testsupport {

namespace {

std::filesystem::path makeTempRoot() {
    static std::atomic<int> counter{0};
    auto path = std::filesystem::temp_directory_path() /
                ("velto-device-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
    std::filesystem::remove_all(path);
    std::filesystem::create_directories(path);
    return path;
}

}  // namespace

TestDevice::TestDevice() : root_(makeTempRoot()) {
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

// The kind, then the entry's words in the order a reader says them, then "animated" if so.
std::string journalLine(const plat::JournalEntry& entry) {
    std::vector<std::string> words{plat::kindName(entry)};
    bool animated = false;
    std::visit(
        [&](const auto& e) {
            using E = std::decay_t<decltype(e)>;
            namespace j = plat::journal;
            if constexpr (std::is_same_v<E, j::Notification> ||
                          std::is_same_v<E, j::LocalNotification>)
                words.push_back(e.name);
            else if constexpr (std::is_same_v<E, j::Log>)
                words.push_back(e.text);
            else if constexpr (std::is_same_v<E, j::Shell>)
                words.push_back(e.command);
            else if constexpr (std::is_same_v<E, j::Request>)
                words.insert(words.end(), {e.name, e.center});
            else if constexpr (std::is_same_v<E, j::Insert>)
                words.insert(words.end(), {e.page, e.rowIdentifier});
            else if constexpr (std::is_same_v<E, j::Remove> || std::is_same_v<E, j::Reload>)
                words.push_back(e.page);
            else if constexpr (std::is_same_v<E, j::Present>)
                words.insert(words.end(), {e.controllerClass, e.title});
            else if constexpr (std::is_same_v<E, j::Dismiss>)
                words.insert(words.end(), {e.controllerClass, e.how});
            else if constexpr (std::is_same_v<E, j::Navigation>)
                words.insert(words.end(), {e.controllerClass, e.action});
            else if constexpr (std::is_same_v<E, j::PreferenceWrite>)
                words.insert(words.end(), {e.domain, e.key});
            else if constexpr (std::is_same_v<E, j::PreferenceWriteRefused>)
                words.insert(words.end(), {e.domain, e.key, e.cause});
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
