#include "app/check/check_exerciser.h"

#include <map>

#include "app/render/page_view.h"
#include "app/render/renderer.h"
#include "app/session/row_lookup.h"
#include "app/session/step_error.h"
#include "contract/catalogue.h"
#include "device/bundle_install.h"
#include "platform/foundation/errors.h"
#include "platform/prefs/list_controller.h"
#include "platform/prefs/runtime.h"
#include "platform/ui/activity_view_controller.h"
#include "platform/ui/alert_controller.h"
#include "platform/ui/image_picker_controller.h"
#include "platform/ui/mail_compose_view_controller.h"

namespace velto::app {

namespace {

// The folder itself too: which domain files it lists is the stored state the check writes,
// and a page that looks at the folder (to write a file into it) must not be told apart by it.
constexpr const char* kPreferences = folders::kPreferences;
// Discovery stops growing the keys of a page past this many: states double with every key.
constexpr std::size_t kMaxKeys = 6;

class SilentRenderer : public Renderer {
  public:
    void page(const PageView&, const std::vector<plat::JournalEntry>&) override {}
    void error(const std::string&, const std::string&) override {}
    void note(const std::string&) override {}
};

// How a step names a row and how a report names it: its own identifier, else its label, else
// its place.
std::string rowName(const plat::Specifier& row, std::size_t index) {
    if (row.hasExplicitIdentifier()) return *row.identifier();
    if (row.name() && !row.name()->empty()) return *row.name();
    return "#" + std::to_string(index);
}

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : ", ") + name;
    return text;
}

// The part of a state that the root page reads; links are found again only when it changes.
StoredState restricted(const StoredState& state, const std::set<StoredKey>& keys) {
    StoredState part;
    for (std::size_t i = 0; i < state.keys.size(); ++i)
        if (keys.count(state.keys[i])) {
            part.keys.push_back(state.keys[i]);
            part.values.push_back(state.values[i]);
        }
    return part;
}

// A range error's index printed from an unsigned -1 is said as -1 too.
std::string withNegativeIndexes(std::string text) {
    static const std::string kMinusOne = "18446744073709551615";
    for (std::size_t at = text.find(kMinusOne); at != std::string::npos;
         at = text.find(kMinusOne, at + kMinusOne.size() + 5)) {
        text.insert(at + kMinusOne.size(), " (-1)");
    }
    return text;
}

bool sameState(const StoredState& a, const StoredState& b) {
    return a.keys == b.keys && a.values == b.values;
}

}  // namespace

struct Exerciser::Run {
    std::string page;
    std::string resources;
    std::string state;
    std::size_t storedSize = 0;  // how many values the state sets: findings keep the smallest
    std::vector<std::vector<std::string>> defaults;
    std::vector<std::string> steps;  // from launch, the one being taken included
};

// A state the exploration reached: the stored state it began from and the steps taken since.
struct Exerciser::Node {
    StoredState start;
    std::vector<Step> path;
    std::string presenter;  // the row whose tap presented what is over the page
};

// The exploration of one page on one device.
struct Exerciser::Exploration {
    std::optional<Link> link;
    PageRecord& record;
    std::set<std::string> seen;  // signatures of the states reached
};

Exerciser::Exerciser(FindingSet& findings, std::filesystem::path picture)
    : findings_(findings),
      picture_(std::move(picture)),
      silent_(std::make_unique<SilentRenderer>()) {}

Exerciser::~Exerciser() = default;

void Exerciser::noteLists(const plat::ListController& page) {
    for (const std::string& list : page.loadedResourceNames())
        facts_.listClasses[list].insert(page.className());
}

void Exerciser::report(Finding finding, const Run& run) {
    if (finding.page.empty()) finding.page = run.page;
    if (finding.resource.empty()) finding.resource = run.resources;
    finding.stored = run.state;
    finding.storedSize = run.storedSize;
    finding.defaults = run.defaults;
    finding.steps = run.steps;
    if (recording_) recording_->findings.push_back(finding);
    emit(std::move(finding));
}

void Exerciser::emit(Finding finding) {
    finding.state = config_.describe() + "; " + finding.stored;
    finding.rank = finding.steps.size() * 1000 + finding.storedSize + config_.size();
    finding.device = config_.initArguments();
    finding.order = config_.index;
    findings_.add(std::move(finding));
}

void Exerciser::run(const DeviceConfig& config, std::shared_ptr<plat::DeviceRoot> device,
                    PageMemo& memo) {
    config_ = config;
    device_ = std::move(device);
    memo_ = &memo;
    rootBuiltFor_.reset();
    rootKeys_.clear();
    try {
        session_ = std::make_unique<Session>(device_, false);
    } catch (const std::exception& e) {
        Run run{"VeltoSettingsController", "", "nothing stored", 0, {}, {}};
        report(Finding::make(Finding::Severity::Error, "launch", "", "", "", "launch",
                             std::string("the Settings application cannot start: ") + e.what()),
               run);
        return;
    }
    auto& outputs = shellOutputs_[device_->identity()];
    if (!outputs) outputs = std::make_shared<plat::Shell::RememberedOutputs>();
    session_->process().shell().rememberOutputsIn(outputs);
    runner_ = std::make_unique<StepRunner>(*session_, *silent_);
    // The files that carry the device facts are read as facts; the matrix never changes
    // anything else in them.
    recorder_ = std::make_unique<ReadRecorder>(
        session_->process(),
        std::set<std::string>{kPreferences, "/DeviceProfile.plist",
                              "/System/Library/CoreServices/SystemVersion.plist"},
        device::kInstalledBundle, facts_.imagesAsked);

    const PageRecord& root = exercisePage(std::nullopt);
    rootKeys_ = root.keys;
    for (const Link& link : root.links)
        exercisePage(link);

    recorder_.reset();
    runner_.reset();
    session_.reset();
}

std::set<StoredKey> Exerciser::switchKeys() const {
    std::set<StoredKey> keys;
    auto page = session_->topPage();
    if (!page || !page->heldSpecifiers()) return keys;
    for (const auto& row : page->heldSpecifiers()->items()) {
        if (row->cellType() != plat::PSSwitchCell) continue;
        const plat::Value key = row->propertyForKey(plat::pskey::Key);
        const plat::Value domain = row->propertyForKey(plat::pskey::Defaults);
        if (key.isString() && domain.isString()) keys.insert({domain.str(), key.str()});
    }
    return keys;
}

const PageRecord& Exerciser::exercisePage(const std::optional<Link>& link) {
    ++pages_;
    // The same page on a device that holds the same for everything it read runs the same.
    std::string memoKey = link ? link->detail + "|" + link->row : "root";
    for (const StoredKey& key : rootKeys_)
        memoKey += "|" + key.domain + "/" + key.key;
    auto& records = (*memo_)[memoKey];
    for (const PageRecord& record : records)
        if (recorder_->matches(record.reads)) {
            for (const StoredKey& key : record.keys)
                domains_.insert(key.domain);
            for (const Finding& finding : record.findings)
                emit(finding);
            return record;
        }

    recorder_->start();
    PageRecord record;
    recording_ = &record;
    Exploration exploration{link, record, {}};
    // A page may show switches only in some states; what it shows in those widens the states
    // started from, until nothing new shows. A state is started from once: with a new key
    // absent it is one already tried.
    std::set<std::string> tried;
    for (bool grew = true; grew;) {
        std::set<StoredKey> all = record.keys;
        all.insert(rootKeys_.begin(), rootKeys_.end());
        for (const StoredKey& key : all)
            domains_.insert(key.domain);
        std::vector<Node> starts;
        for (const StoredState& state : storedStates(all))
            if (tried.insert(state.describe()).second) starts.push_back(Node{state, {}, {}});
        explore(exploration, std::move(starts));
        std::set<StoredKey> now = record.keys;
        now.insert(rootKeys_.begin(), rootKeys_.end());
        grew = now.size() > all.size();
    }
    record.reads = recorder_->finish();
    recording_ = nullptr;
    records.push_back(std::move(record));
    return records.back();
}

void Exerciser::explore(Exploration& exploration, std::vector<Node> starts) {
    // Level by level, so that a fault is first met by one of the shortest ways to it, and
    // among those from the smallest stored state (the starts come smallest first).
    std::vector<Node> level;
    for (const Node& start : starts) {
        Run run;
        if (!arrive(exploration.link, start, run) || !visit(exploration, start, run)) continue;
        expand(exploration, start, true, level);
    }
    while (!level.empty()) {
        std::vector<Node> next;
        for (const Node& node : level)
            expand(exploration, node, false, next);
        level = std::move(next);
    }
}

bool Exerciser::arrive(const std::optional<Link>& link, const Node& node, Run& run) {
    run = Run{"", "", node.start.describe(), node.start.size(), {}, {}};
    for (std::size_t i = 0; i < node.start.keys.size(); ++i)
        if (node.start.values[i] != Stored::Absent)
            run.defaults.push_back({node.start.keys[i].domain, node.start.keys[i].key, "-bool",
                                    node.start.values[i] == Stored::Yes ? "true" : "false"});
    if (link) run.steps.push_back("open " + link->row);
    if (!reset(link, node.start, run)) return false;
    for (const Step& step : node.path) {
        run.steps.push_back(step.text);
        // Taken before without a fault: the same steps from the same state do the same.
        try {
            perform(step);
        } catch (const std::exception&) {
            rootBuiltFor_.reset();
            return false;
        }
    }
    return true;
}

bool Exerciser::visit(Exploration& exploration, const Node& node, Run& run) {
    std::optional<PageView> view = inspect(run);
    if (!view || !exploration.seen.insert(signature(*view)).second) return false;
    ++states_;
    auto page = session_->topPage();
    if (!page || !page->heldSpecifiers()) return true;
    PageRecord& record = exploration.record;
    for (const StoredKey& key : switchKeys())
        if (record.keys.size() < kMaxKeys && (!exploration.link || !rootKeys_.count(key)))
            record.keys.insert(key);
    if (!exploration.link && session_->depth() == 1) {
        const auto& rows = page->heldSpecifiers()->items();
        for (std::size_t i = 0; i < rows.size(); ++i)
            if (!rows[i]->detailControllerClass().empty())
                record.links.insert(Link{rowName(*rows[i], i), rows[i]->detailControllerClass(),
                                         rows[i]->resourceName()});
    }
    (void)node;
    return true;
}

std::vector<Exerciser::Node> Exerciser::children(const Node& node, const PageView& view) const {
    std::vector<Node> out;
    auto add = [&](StepKind kind, const std::string& argument, const std::string& text,
                   const std::string& presenter = "") {
        Node child = node;
        child.path.push_back(Step{kind, argument, text});
        child.presenter = presenter;
        out.push_back(std::move(child));
    };
    if (const auto& presented = view.presented) {
        // What is presented takes the touches: only its answers are steps.
        if (presented->kind == "picker") {
            add(StepKind::Pick, picture_.string(), "pick picture.png");
            add(StepKind::Cancel, "", "cancel");
            return out;
        }
        for (const ActionView& action : presented->actions)
            add(StepKind::Choose, action.title, "choose " + action.title);
        if (presented->actions.empty() || presented->popover) add(StepKind::Dismiss, "", "dismiss");
        return out;
    }
    auto page = session_->topPage();
    if (!page || !page->heldSpecifiers()) return out;
    const auto& list = page->heldSpecifiers();
    const auto& rows = list->items();
    // Pages below the root are explored from their links: the root's links are pages of their
    // own.
    const bool below = session_->depth() > 1;
    for (const RowView& row : view.rows) {
        if (row.index >= rows.size()) continue;
        const std::string name = typedName(list, RowRef{rows[row.index], row.index});
        if (row.cell == "PSSwitchCell") {
            // A finger always flips a switch.
            const std::string text = name + (row.value.value_or(false) ? " off" : " on");
            add(StepKind::Toggle, text, "toggle " + text);
        } else if (row.action) {
            add(StepKind::Tap, name, "tap " + name, name);
        } else if (below && row.detail && !row.group()) {
            add(StepKind::Open, name, "open " + name);
        }
    }
    return out;
}

void Exerciser::expand(Exploration& exploration, const Node& node, bool arrived,
                       std::vector<Node>& next) {
    if (node.path.size() >= kMaxExploreSteps) {
        bounded_ = true;
        return;
    }
    Run run;
    if (!arrived && !arrive(exploration.link, node, run)) return;
    auto page = session_->topPage();
    // A page left for the root (the interface restarted) is done: the root is explored as a
    // page of its own.
    if (!page || (exploration.link && session_->depth() < 2)) return;
    std::vector<Node> steps;
    try {
        steps = children(node, viewOf(*page, session_->depth()));
    } catch (const std::exception&) {
        return;  // inspect reported it when the state was reached
    }
    const std::string resource = page->heldSpecifiers() ? joined(page->loadedResourceNames()) : "";
    for (std::size_t i = 0; i < steps.size(); ++i) {
        if (i > 0 && !arrive(exploration.link, node, run)) return;
        if (auto top = session_->topPage()) {
            run.page = top->className();
            run.resources = joined(top->loadedResourceNames());
        }
        Node& child = steps[i];
        const Step& taken = child.path.back();
        const bool answer = taken.kind == StepKind::Choose || taken.kind == StepKind::Dismiss ||
                            taken.kind == StepKind::Pick || taken.kind == StepKind::Cancel;
        const std::string row = answer ? node.presenter
                                       : (taken.kind == StepKind::Toggle
                                              ? taken.argument.substr(0, taken.argument.rfind(' '))
                                              : taken.argument);
        if (!answer)
            child.presenter = taken.kind == StepKind::Tap ? row : "";
        else
            child.presenter = node.presenter;
        run.steps.push_back(taken.text);
        if (!step(run, taken, row, resource)) continue;
        if (!visit(exploration, child, run)) continue;
        if (exploration.seen.size() >= kMaxPageStates) {
            bounded_ = true;
            continue;
        }
        next.push_back(std::move(child));
    }
}

bool Exerciser::reset(const std::optional<Link>& link, const StoredState& state, Run& run) {
    std::set<std::string> domains = domains_;
    for (const StoredKey& key : state.keys)
        domains.insert(key.domain);
    writeStoredState(*device_, state, domains);

    // The root page reads the stored state once, when it is made: it is made anew whenever
    // the part of the state it reads changes, and after anything went wrong.
    const StoredState rootPart = restricted(state, rootKeys_);
    const bool rebuild = !link || !rootBuiltFor_ || !sameState(*rootBuiltFor_, rootPart) ||
                         session_->restarts() != rootRestarts_;
    if (recorder_) recorder_->pause();
    if (rebuild) {
        rootBuiltFor_.reset();
        try {
            session_->restartInterface();
            session_->settle();
        } catch (const std::exception& e) {
            if (recorder_) recorder_->resume();
            auto root = session_->topPage();
            run.page = root ? root->className() : "";
            run.resources = root ? joined(root->loadedResourceNames()) : "";
            classify(e, "open", "", "", run);
            return false;
        }
        rootBuiltFor_ = rootPart;
        rootRestarts_ = session_->restarts();
    } else {
        while (session_->depth() > 1)
            session_->back();
        session_->takeJournal();
    }
    if (recorder_) recorder_->resume();

    auto root = session_->topPage();
    if (!link) {
        run.page = root->className();
        run.resources = joined(root->loadedResourceNames());
        noteLists(*root);
        return true;
    }
    run.page = link->detail;
    run.resources = link->resource;
    if (!root->heldSpecifiers()) return false;
    const auto& rows = root->heldSpecifiers()->items();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (rows[i]->detailControllerClass() != link->detail || rowName(*rows[i], i) != link->row)
            continue;
        std::shared_ptr<plat::ListController> made;
        try {
            session_->open(rows[i], &made);
            session_->settle();
        } catch (const StepError& e) {
            // A class that does not exist is the static check's finding; one that exists but
            // cannot be made is this one's.
            if (plat::Runtime::shared().classExists(link->detail))
                report(Finding::make(Finding::Severity::Error, "page-unavailable", link->resource,
                                     link->row, link->detail, "open " + link->row, e.what()),
                       run);
            rootBuiltFor_.reset();
            return false;
        } catch (const std::exception& e) {
            if (made) run.resources = joined(made->loadedResourceNames());
            classify(e, "open " + link->row, "", "", run);
            rootBuiltFor_.reset();
            return false;
        }
        if (auto page = session_->topPage()) {
            run.resources = joined(page->loadedResourceNames());
            noteLists(*page);
        }
        return true;
    }
    return false;  // not shown in this state
}

void Exerciser::perform(const Step& step) {
    runner_->perform(step);
    const int restarts = session_->restarts();
    const std::size_t mark = recorder_->mark();
    session_->settle();
    if (session_->restarts() != restarts) recorder_->forgetSince(mark);
}

bool Exerciser::step(Run& run, const Step& step, const std::string& row,
                     const std::string& resource) {
    ++steps_;
    try {
        perform(step);
    } catch (const StepError&) {
        // The simulator could not carry the step out as asked (the row went away, nothing
        // was presented): not something the bundle did.
        return false;
    } catch (const std::exception& e) {
        classify(e, step.text, row, resource, run);
        rootBuiltFor_.reset();
        return false;
    }
    return true;
}

void Exerciser::classify(const std::exception& e, const std::string& step, const std::string& row,
                         const std::string& resource, const Run& run) {
    Finding finding =
        Finding::make(Finding::Severity::Error, "exception", resource, row, "", step, "");
    if (dynamic_cast<const plat::RangeError*>(&e)) {
        finding.kind = "range-error";
        finding.reason = std::string("an index runs past the rows of the list: ") +
                         withNegativeIndexes(e.what());
    } else if (dynamic_cast<const plat::DispatchError*>(&e)) {
        finding.kind = "unrecognized-selector";
        finding.reason = std::string("nothing answers the selector: ") + e.what();
    } else if (dynamic_cast<const plat::InvalidArgumentError*>(&e)) {
        finding.kind = "invalid-argument";
        finding.reason = std::string("an invalid argument reaches the platform: ") + e.what();
    } else {
        finding.reason = std::string("the page raises: ") + e.what();
    }
    report(std::move(finding), run);
}

std::optional<PageView> Exerciser::inspect(Run& run) {
    auto page = session_->topPage();
    if (!page) return std::nullopt;
    const std::string step = run.steps.empty() ? "open" : run.steps.back();
    PageView view;
    try {
        view = viewOf(*page, session_->depth());
    } catch (const std::exception& e) {
        classify(e, step + " (showing the rows)", "", "", run);
        rootBuiltFor_.reset();
        return std::nullopt;
    }
    const auto& rows = page->heldSpecifiers() ? page->heldSpecifiers()->items()
                                              : std::vector<plat::SpecifierPtr>{};
    auto warn = [&](const std::string& kind, std::size_t index, const std::string& reason) {
        const std::string resource = index < rows.size() ? rows[index]->resourceName() : "";
        const std::string name = index < rows.size() ? rowName(*rows[index], index) : "";
        report(Finding::make(Finding::Severity::Warning, kind, resource, name, "", step, reason),
               run);
    };
    // Two rows of one list with one identifier are the static check's error; the same row of
    // a list shown twice is the page's own rule at work (its handlers insert rows of a fresh
    // load whatever the page holds), which no resource can change. Only rows of different
    // lists sharing an identifier are the resources' doing.
    auto listOf = [&](std::size_t index) {
        return index < rows.size() ? rows[index]->resourceName() : std::string();
    };
    std::map<std::string, std::size_t> seen;
    for (const RowView& row : view.rows) {
        if (row.id) {
            auto [first, added] = seen.emplace(*row.id, row.index);
            if (!added && listOf(first->second) != listOf(row.index))
                warn("duplicate-shown-identifier", row.index,
                     "two shown rows of different lists have the identifier '" + *row.id + "'");
        }
        if (row.footer && !row.group())
            warn("footer-on-row", row.index,
                 "a footer on a row that is not a group is never shown");
    }
    // A group with a footer still says something with no rows under it (why there are none).
    auto hasFooter = [&](std::size_t index) {
        for (const RowView& row : view.rows)
            if (row.index == index) return row.footer.has_value();
        return false;
    };
    for (const SectionView& section : view.sections)
        if (section.header && section.rows.empty() && !hasFooter(*section.header))
            warn("empty-group", *section.header, "a group is left with no rows under it");
    return view;
}

std::string Exerciser::signature(const PageView& view) const {
    // What the user sees and what is stored: two states alike in both go the same from here.
    std::string text;
    for (const std::string& page : view.stack)
        text += page + "/";
    for (const RowView& row : view.rows) {
        text += "\x1f" + row.cell + "|" + row.id.value_or("") + "|" + row.label.value_or("") + "|" +
                row.footer.value_or("") + "|" + row.detail.value_or("") + "|";
        if (row.value) text += *row.value ? "1" : "0";
    }
    if (view.presented) {
        text += "\x1e" + view.presented->kind + "|" + view.presented->title.value_or("");
        for (const ActionView& action : view.presented->actions)
            text += "|" + action.title;
    }
    for (const std::string& domain : domains_) {
        const auto bytes = device_->readFile(plat::preferencesDomainPath(domain));
        text += "\x1d" + domain + "=";
        if (bytes) text.append(bytes->begin(), bytes->end());
    }
    return text;
}

}  // namespace velto::app
