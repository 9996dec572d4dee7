#include "app/render/screenshot_writer.h"

#include <fstream>

#include "app/session/step_error.h"
#include "platform/system/device_facts.h"
#include "screen/screenshot.h"

namespace velto::app {

std::size_t writeScreenshot(Session& session, const std::string& file) {
    const auto look = screen::Look::forDevice(plat::DeviceFacts::read(session.process().root()));
    const plat::Bytes png = screen::pngBytes(screen::drawScreenshot(*session.topPage(), look));
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    if (out)
        out.write(reinterpret_cast<const char*>(png.data()),
                  static_cast<std::streamsize>(png.size()));
    if (!out || png.empty()) throw StepError("cannot write " + file);
    return png.size();
}

}  // namespace velto::app
