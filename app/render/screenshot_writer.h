#pragma once

#include <cstddef>
#include <string>

#include "app/session/session.h"

namespace velto::app {

// Draws the top page, with what it presents, as the device shows it and writes the PNG to a
// host file. Answers the number of bytes written; StepError when the file cannot be written.
std::size_t writeScreenshot(Session& session, const std::string& file);

}  // namespace velto::app
