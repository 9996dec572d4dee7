#pragma once

#include <cstddef>
#include <string>

#include "app/session/session.h"
#include "screen/screenshot.h"

namespace velto::app {

// Draws the top page, with what it presents, as the device shows it: one screen, scrolled as
// the page is, or (`full`) the whole page. May raise what the page's hooks raise.
screen::Screenshot drawTopPage(Session& session, bool full = false);

// The same picture as PNG bytes; empty when it cannot be encoded.
plat::Bytes screenshotPng(Session& session, bool full = false);

// Draws the top page, with what it presents, as the device shows it and writes the PNG to a
// host file. Answers the number of bytes written; StepError when the file cannot be written.
// `full`: the whole page, as tall as its rows.
std::size_t writeScreenshot(Session& session, const std::string& file, bool full = false);

// Scrolls the top page so that the row at `index` of its list is on screen; false when the
// page does not show that row.
bool scrollToRow(Session& session, std::size_t index);

}  // namespace velto::app
