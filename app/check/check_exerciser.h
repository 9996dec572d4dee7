#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/check/check_device_matrix.h"
#include "app/check/check_findings.h"
#include "app/check/check_read_recorder.h"
#include "app/check/check_static.h"
#include "app/check/check_stored_state.h"
#include "app/render/page_view.h"
#include "app/session/session.h"
#include "app/session/step.h"
#include "app/session/step_runner.h"

namespace velto::app {

// Drives the bundle on one device as a user who tries everything: the root page and every
// page its link rows open, from every combination of the booleans their switches store. From
// each such start it goes breadth-first: every switch flipped, every button tapped, every
// sheet answered each way, every link of a page below the root opened, then the same again on
// each state that turned up, until no new state (page, shown rows, stored values) turns up or
// the bounds below are reached. What raises is a finding, reported with the shortest steps
// that raise it.
// Steps taken after a page is opened before the exploration stops going deeper; a state
// further away is reported as the bound reached.
inline constexpr std::size_t kMaxExploreSteps = 3;
// States explored per page and device; beyond this the rest is reported as the bound reached.
inline constexpr std::size_t kMaxPageStates = 3000;

// A link row of the root page and the page it opens.
struct CheckLink {
    std::string row;  // as steps name it: identifier, else label, else "#N"
    std::string detail;
    std::string resource;
    auto operator<=>(const CheckLink&) const = default;
};

// What a page read while it was exercised on one device, and what the exercise learned: the
// keys its switches store and, for the root page, its links. Kept by page across devices.
struct PageRecord {
    ReadSnapshot reads;
    std::set<StoredKey> keys;
    std::set<CheckLink> links;
    // What the exercise found, to be found again on a device where the record holds.
    std::vector<Finding> findings;
};
using PageMemo = std::map<std::string, std::vector<PageRecord>>;

class Exerciser {
  public:
    // `picture` is a host PNG file handed to photo pickers.
    Exerciser(FindingSet& findings, std::filesystem::path picture);
    ~Exerciser();

    // Exercises the bundle on the device, skipping each page whose reads on an earlier device
    // (kept in `memo`) hold the same here.
    void run(const DeviceConfig& config, std::shared_ptr<plat::DeviceRoot> device, PageMemo& memo);

    // What the static checks need to know of the runs so far.
    const ExerciseFacts& facts() const { return facts_; }

    // Steps carried out so far, and distinct states explored, for the report.
    std::size_t steps() const { return steps_; }
    std::size_t states() const { return states_; }
    // Pages exercised so far, once per device that opened them.
    std::size_t pages() const { return pages_; }
    // Whether a bound stopped the exploration of some page.
    bool bounded() const { return bounded_; }

  private:
    using Link = CheckLink;
    struct Run;
    struct Node;
    struct Exploration;

    // Exercises the page unless an earlier device's record of it still holds; answers the
    // record that holds or was made.
    const PageRecord& exercisePage(const std::optional<Link>& link);
    void explore(Exploration& exploration, std::vector<Node> starts);
    void expand(Exploration& exploration, const Node& node, bool arrived, std::vector<Node>& next);
    bool arrive(const std::optional<Link>& link, const Node& node, Run& run);
    // Notes a state just reached; false when it was reached before.
    bool visit(Exploration& exploration, const Node& node, Run& run);
    std::vector<Node> children(const Node& node, const PageView& view) const;
    bool reset(const std::optional<Link>& link, const StoredState& state, Run& run);
    void perform(const Step& step);
    bool step(Run& run, const Step& step, const std::string& row, const std::string& resource);
    std::optional<PageView> inspect(Run& run);
    std::string signature(const PageView& view) const;
    std::set<StoredKey> switchKeys() const;
    void classify(const std::exception& e, const std::string& step, const std::string& row,
                  const std::string& resource, const Run& run);
    void report(Finding finding, const Run& run);
    void emit(Finding finding);
    void noteLists(const plat::ListController& page);

    FindingSet& findings_;
    std::filesystem::path picture_;
    std::shared_ptr<plat::DeviceRoot> device_;
    DeviceConfig config_;
    std::unique_ptr<Session> session_;
    std::unique_ptr<Renderer> silent_;
    std::unique_ptr<StepRunner> runner_;
    std::unique_ptr<ReadRecorder> recorder_;
    PageMemo* memo_ = nullptr;
    // The package manager's answers per device: the matrix changes settings and device facts,
    // never the package database, so each version lookup runs once per device.
    std::map<std::string, std::shared_ptr<plat::Shell::RememberedOutputs>> shellOutputs_;
    ExerciseFacts facts_;
    PageRecord* recording_ = nullptr;
    std::set<StoredKey> rootKeys_;
    std::set<std::string> domains_;
    std::optional<StoredState> rootBuiltFor_;
    int rootRestarts_ = -1;
    std::size_t steps_ = 0;
    std::size_t states_ = 0;
    std::size_t pages_ = 0;
    bool bounded_ = false;
};

}  // namespace velto::app
