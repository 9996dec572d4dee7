#include "app/render/row_frames.h"

#include "platform/system/device_facts.h"
#include "screen/screenshot.h"

namespace velto::app {

namespace {

// Only what reaches the screen has a place on it: a row laid below the screen's end does not.
bool onScreen(const plat::Rect& frame, const screen::Look& look) {
    return frame.origin.y < look.height && frame.origin.y + frame.size.height > 0;
}

}  // namespace

void placeRowFrames(Session& session, PageView& view) {
    const auto look = screen::Look::forDevice(plat::DeviceFacts::read(session.process().root()));
    const screen::TableLayout layout = screen::layoutOnScreen(*session.topPage(), look);
    const auto place = [&](std::optional<std::size_t> index, const plat::Rect& frame) {
        if (index && *index < view.rows.size() && onScreen(frame, look))
            view.rows[*index].frame = frame;
    };
    for (const screen::LaidSection& section : layout.sections) {
        if (section.header && section.section < view.sections.size())
            place(view.sections[section.section].header, section.header->frame);
        for (const screen::LaidRow& row : section.rows)
            place(row.index, row.frame);
    }
}

}  // namespace velto::app
