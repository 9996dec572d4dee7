#include "app/render/screenshot_writer.h"

#include <iostream>

#include "app/host_files.h"
#include "app/session/step_error.h"
#include "platform/system/device_facts.h"

namespace velto::app {

namespace {

// The row the package adds to Settings' own list, as its loader entry names it: the label and
// the bundle's icon.
screen::SettingsEntry settingsEntry(Session& session) {
    const auto pages = session.pages();
    if (pages.empty()) return {"Velto 2", nullptr};
    return {"Velto 2", plat::Image::imageNamed("Velto", pages.front()->bundle())};
}

}  // namespace

screen::Screenshot drawTopPage(Session& session, bool full) {
    const auto look = screen::Look::forDevice(plat::DeviceFacts::read(session.process().root()));
    return screen::drawScreenshot(*session.topPage(), look, settingsEntry(session), full);
}

plat::Bytes screenshotPng(Session& session, bool full) {
    return screen::pngBytes(drawTopPage(session, full));
}

std::size_t writeScreenshot(Session& session, const std::string& file, bool full) {
    const plat::Bytes png = screenshotPng(session, full);
    if (png.empty()) throw StepError("cannot write " + file);
    // Beside the target and renamed over it: a full disk leaves the old picture whole, and a
    // FIFO or a device in its place is refused rather than written to (or waited on for ever).
    if (const auto written = writeHostFile(file, png, std::cout); !written)
        throw StepError(written.error());
    return png.size();
}

bool scrollToRow(Session& session, std::size_t index) {
    auto page = session.topPage();
    const auto look = screen::Look::forDevice(plat::DeviceFacts::read(session.process().root()));
    const auto offset = screen::offsetShowingRow(*page, look, index);
    if (!offset) return false;
    page->setContentOffsetY(*offset);
    return true;
}

}  // namespace velto::app
