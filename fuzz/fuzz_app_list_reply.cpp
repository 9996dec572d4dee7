// Any bytes as the application-list reply's payload, through the Excluded applications page's
// row building: rows or an empty page, never a crash, a hang or a leak.
#include <unistd.h>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "apps/velto_disabled_apps_settings_controller.h"
#include "platform/system/process.h"

namespace {

// The empty device's folder, gone when the run ends.
struct ScratchDevice {
    std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("velto-fuzz-apps-" + std::to_string(::getpid()));
    ScratchDevice() { std::filesystem::create_directories(path); }
    ~ScratchDevice() {
        std::error_code ec;
        std::filesystem::remove_all(path, ec);
    }
};

// One process on an empty device for the whole run.
plat::Process& process() {
    // Made before the process, so destroyed after it.
    static const ScratchDevice device;
    const std::filesystem::path& folder = device.path;
    static plat::Process process(folder, plat::Process::Options{"Preferences", false});
    static plat::ProcessScope scope(process);
    return process;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto& running = process();
    const plat::Value reply = plat::Value::dictionary(
        {{"VeltoServiceMessageData", plat::Value::data(plat::Bytes(data, data + size))}});
    running.messageCenters().setResponder(
        [reply](const std::string&, const std::string&, const plat::Value&) { return reply; });
    auto page = std::make_shared<velto::VeltoDisabledAppsSettingsController>();
    page->initForContentSize({320, 568});
    page->specifiers();
    // The journal would otherwise grow with every input.
    running.journal().clear();
    return 0;
}
