#include "app/check/check_progress.h"

#include <cmath>
#include <sstream>

namespace velto::app {

ProgressLine::ProgressLine(std::ostream& out)
    : out_(out), started_(std::chrono::steady_clock::now()) {}

ProgressLine::~ProgressLine() {
    clear();
}

void ProgressLine::update(const CheckProgress& progress) {
    const auto now = std::chrono::steady_clock::now();
    if (shown_ && now - drawn_ < std::chrono::milliseconds(100)) return;
    drawn_ = now;
    std::ostringstream line;
    line << "checking: " << progress.devices << "/" << progress.totalDevices << " devices, "
         << progress.pages << " pages, " << progress.states << " states";
    // Later devices reuse what earlier ones learned, so the estimate errs long.
    if (progress.devices > 0 && progress.devices < progress.totalDevices) {
        const double elapsed = std::chrono::duration<double>(now - started_).count();
        const double left = elapsed *
                            static_cast<double>(progress.totalDevices - progress.devices) /
                            static_cast<double>(progress.devices);
        line << ", about " << static_cast<long>(std::ceil(left)) << " s left";
    }
    out_ << "\r" << line.str() << "\033[K" << std::flush;
    shown_ = true;
}

void ProgressLine::clear() {
    if (!shown_) return;
    out_ << "\r\033[K" << std::flush;
    shown_ = false;
}

}  // namespace velto::app
