#pragma once

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/session/row_lookup.h"
#include "platform/system/device_root.h"
#include "platform/system/journal.h"
#include "platform/ui/view_controller.h"

namespace velto::app {

// What `expect` asserts about the session, so that a test of a bundle's resources is a file
// of steps:
//   expect ROW on|off|shown|hidden     the switch as the page shows it; the row on the page
//   expect presented KIND              alert, sheet, picker, mail, share, other, nothing, or
//                                      the presented controller's class
//   expect file PATH exists|missing    a device path, under the device root
//   expect log TEXT                    a log line holding TEXT, written since the last step
//                                      that acts (show, help and expect only look)
// The words presented, file and log come first; a row whose label starts with one of them
// is named by its identifier or #N.
struct Expectation {
    enum class Kind { SwitchOn, SwitchOff, Shown, Hidden, Presented, FileExists, FileMissing, Log };
    Kind kind = Kind::Shown;
    std::string subject;  // the row, the kind presented, the device path or the log text
};

// Throws StepError, before anything runs, for an argument of none of the four forms.
Expectation parseExpectation(const std::string& argument);

// An expectation the session does not meet. Distinct from a step that cannot be carried out,
// so scripts can tell a failed test from a broken one.
class ExpectationFailed : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// What an expectation is checked against.
struct ExpectScene {
    const plat::ListController& page;
    // What the switch of a row shows; nullopt for a row that is not a switch.
    std::function<std::optional<bool>(const RowRef&)> switchShows;
    const plat::DeviceRoot& root;
    std::vector<plat::JournalEntry> sinceLastAction;
};

// Throws ExpectationFailed saying what the session shows instead.
void checkExpectation(const Expectation& expectation, const ExpectScene& scene);

}  // namespace velto::app
