#pragma once

#include <chrono>
#include <cstddef>
#include <ostream>

#include "app/check/check_run.h"

namespace velto::app {

// One line on a terminal that rewrites itself with how far the check has got and how long it
// has left. It draws at most a few times a second: the workers report after every device.
class ProgressLine {
  public:
    explicit ProgressLine(std::ostream& out);
    ~ProgressLine();

    void update(const CheckProgress& progress);
    // Takes the line away, so that what is printed next starts on a clean line.
    void clear();

  private:
    std::ostream& out_;
    std::chrono::steady_clock::time_point started_;
    std::chrono::steady_clock::time_point drawn_;
    bool shown_ = false;
};

}  // namespace velto::app
