#include "app/check/check_device_matrix.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <stdexcept>

#include "device/app_choice.h"
#include "device/device_init.h"
#include "device/device_profile.h"
#include "platform/system/memory_device_root.h"

namespace velto::app {

namespace {

constexpr plat::DeviceFamily kFamilies[] = {plat::DeviceFamily::iPhone, plat::DeviceFamily::iPad,
                                            plat::DeviceFamily::iPod};
constexpr const char* kVersions[] = {"12.4", "13.0"};

struct NamedApp {
    OptionalApp bit;
    const char* name;
    const char* option;  // as `device init --app` takes it
    device::AppChoice (*choice)();
};

constexpr NamedApp kApps[] = {{kBiteSMS, "biteSMS", "bitesms", device::biteSMSChoice},
                              {kWhatsApp, "WhatsApp", "whatsapp", device::whatsAppChoice},
                              {kCallLog, "call-log", "ringledger", device::ringLedgerChoice},
                              {kRecents, "recents", "recents", device::recentsChoice}};

int defaultScale(plat::DeviceFamily family) {
    return family == plat::DeviceFamily::iPhone ? 3 : 2;
}

device::DeviceOptions optionsFor(const DeviceConfig& config) {
    device::DeviceOptions options;
    options.family = config.family;
    options.systemVersion = config.systemVersion;
    options.faceTime = config.faceTime;
    options.scale = defaultScale(config.family);
    for (const NamedApp& app : kApps)
        if (config.apps & app.bit) options.apps.push_back(app.choice());
    return options;
}

}  // namespace

std::string DeviceConfig::describe() const {
    std::string text = std::string(plat::familyName(family)) + ", iOS " + systemVersion;
    text += faceTime ? ", FaceTime" : ", no FaceTime";
    std::string apps;
    for (const NamedApp& app : kApps)
        if (this->apps & app.bit) apps += (apps.empty() ? "" : " + ") + std::string(app.name);
    text += ", " + (apps.empty() ? std::string("no optional apps") : apps);
    return text;
}

std::vector<std::string> DeviceConfig::initArguments() const {
    std::string familyOption = plat::familyName(family);
    for (char& c : familyOption)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    std::vector<std::string> arguments{"--family",         familyOption,
                                       "--system-version", systemVersion,
                                       "--scale",          std::to_string(defaultScale(family))};
    if (!faceTime) arguments.push_back("--no-facetime");
    for (const NamedApp& app : kApps)
        if (apps & app.bit) arguments.insert(arguments.end(), {"--app", app.option});
    return arguments;
}

std::size_t DeviceConfig::size() const {
    return static_cast<std::size_t>(std::popcount(apps));
}

std::vector<DeviceConfig> deviceMatrix() {
    std::vector<unsigned> subsets;
    for (unsigned apps = 0; apps <= kAllOptionalApps; ++apps)
        subsets.push_back(apps);
    std::stable_sort(subsets.begin(), subsets.end(),
                     [](unsigned a, unsigned b) { return std::popcount(a) < std::popcount(b); });
    std::vector<DeviceConfig> configs;
    for (unsigned apps : subsets)
        for (auto family : kFamilies)
            for (const char* version : kVersions)
                for (bool faceTime : {true, false})
                    configs.push_back(
                        DeviceConfig{family, version, faceTime, apps, configs.size()});
    return configs;
}

DeviceFarm::DeviceFarm(std::filesystem::path resources) : resources_(std::move(resources)) {}

std::shared_ptr<plat::DeviceRoot> DeviceFarm::prepare(const DeviceConfig& config) {
    const device::DeviceOptions options = optionsFor(config);
    const std::string name =
        std::string(plat::familyName(config.family)) + "-" + std::to_string(config.apps);
    auto found = made_.find(name);
    if (found == made_.end()) {
        auto device = std::make_shared<plat::MemoryDeviceRoot>();
        device::initDevice(*device, options, resources_);
        found = made_.emplace(name, std::move(device)).first;
    }
    const plat::DeviceRoot& root = *found->second;
    if (!device::writeDeviceProfile(root, options) ||
        !device::writeSystemVersion(root, options.systemVersion))
        throw std::runtime_error("cannot switch the " + root.describe() + " to " +
                                 config.describe());
    return found->second;
}

}  // namespace velto::app
