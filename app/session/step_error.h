#pragma once

#include <stdexcept>

namespace velto::app {

// A step that cannot be carried out as asked (no such row, nothing presented, a page class
// that does not exist yet). Raised before anything changes.
class StepError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace velto::app
