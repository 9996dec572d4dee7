#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace velto::app {

// One thing the check found. Errors would end the Settings application on a device (a range
// error, a selector nobody answers) or leave a resource that cannot work; warnings are what a
// user would see as a bug without anything crashing.
struct Finding {
    enum class Severity { Error, Warning };
    Severity severity = Severity::Error;
    std::string kind;        // "range-error", "unrecognized-selector", "missing-setter"...
    std::string resource;    // the specifier list (or image, strings table) at fault
    std::string row;         // the row's identifier or label; "" when none is involved
    std::string page;        // the page class; "" for static findings of a resource alone
    std::string step;        // the step that raised or showed it: "toggle Enabled on"...
    std::string reason;      // one line a tweak developer understands
    std::string state;       // the smallest device and stored state that triggers it
    std::size_t states = 1;  // how many of the enumerated states trigger it
    // Which state to report when several trigger it: the fewest steps, then the smallest
    // (stored values set plus optional applications), then the first device in the matrix's
    // order.
    std::size_t rank = 0;
    std::size_t order = 0;
    // The stored part of the state, and how many values it sets, apart from the device.
    std::string stored;
    std::size_t storedSize = 0;
    // How to see it again: the `device init` options of the device, the values to write with
    // `defaults write` (domain, key, -bool, true|false), and the steps from launch.
    std::vector<std::string> device;
    std::vector<std::vector<std::string>> defaults;
    std::vector<std::string> steps;

    bool error() const { return severity == Severity::Error; }

    static Finding make(Severity severity, std::string kind, std::string resource, std::string row,
                        std::string page, std::string step, std::string reason) {
        Finding f;
        f.severity = severity;
        f.kind = std::move(kind);
        f.resource = std::move(resource);
        f.row = std::move(row);
        f.page = std::move(page);
        f.step = std::move(step);
        f.reason = std::move(reason);
        return f;
    }
};

// The findings of one check, each kept once with the first (smallest) state that triggered
// it. Order: by resource, then as found.
class FindingSet {
  public:
    // True when the finding is new, not another state of one already kept.
    bool add(Finding finding);
    // Called with each new finding as it is added, before any later state of it is merged.
    void onNew(std::function<void(const Finding&)> listener) { onNew_ = std::move(listener); }
    const std::vector<Finding>& all() const { return findings_; }
    std::vector<Finding> sorted() const;
    std::size_t errors() const;
    std::size_t warnings() const;

  private:
    using Key =
        std::tuple<std::string, std::string, std::string, std::string, std::string, std::string>;
    std::vector<Finding> findings_;
    std::map<Key, std::size_t> index_;
    std::function<void(const Finding&)> onNew_;
};

// The human report: findings grouped by resource, one line of reason each, and the commands
// that replay a fault. `resources` is the folder the replay's device must be made from when
// it is not the bundle's own.
void printFindings(std::ostream& out, const FindingSet& findings,
                   const std::string& resources = "");
// One finding as its JSON line.
std::string findingJson(const Finding& finding);

// A finding whole, as check workers hand it to the process that reports.
std::string findingRecord(const Finding& finding);
Finding findingFromRecord(const std::string& line);

}  // namespace velto::app
