#include "app/check/check_exerciser.h"

#include <map>

#include "app/render/page_view.h"
#include "app/render/renderer.h"
#include "app/session/row_lookup.h"
#include "app/session/step_error.h"
#include "contract/catalogue.h"
#include "device/bundle_install.h"
#include "platform/foundation/errors.h"
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

bool sameState(const StoredState& a, const StoredState& b) {
    return a.keys == b.keys && a.values == b.values;
}

}  // namespace

struct Exerciser::Operation {
    enum class Kind { Toggle, Tap } kind = Kind::Toggle;
    std::string row;
    std::string resource;
    bool firstValue = true;  // toggles: the first value set; the second is its opposite
};

struct Exerciser::Run {
    std::string page;
    std::string resources;
    std::string state;
    std::size_t storedSize = 0;  // how many values the state sets: findings keep the smallest
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
    if (recording_) recording_->findings.push_back(finding);
    emit(std::move(finding));
}

void Exerciser::emit(Finding finding) {
    finding.state = config_.describe() + "; " + finding.stored;
    finding.rank = finding.storedSize + config_.size();
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
        Run run{"VeltoSettingsController", "", "nothing stored", 0};
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
    // A page may show switches only in some states; what it shows in those widens the states
    // tried, until nothing new shows. A state is tried once: with a new key absent it is one
    // already tried.
    std::set<std::string> tried;
    for (bool grew = true; grew;) {
        grew = false;
        std::set<StoredKey> all = record.keys;
        all.insert(rootKeys_.begin(), rootKeys_.end());
        for (const StoredKey& key : all)
            domains_.insert(key.domain);
        for (const StoredState& state : storedStates(all)) {
            if (!tried.insert(state.describe()).second) continue;
            exerciseState(link, state, record);
            if (!link) rootKeys_ = record.keys;
        }
        std::set<StoredKey> now = record.keys;
        now.insert(rootKeys_.begin(), rootKeys_.end());
        grew = now.size() > all.size();
    }
    record.reads = recorder_->finish();
    recording_ = nullptr;
    records.push_back(std::move(record));
    return records.back();
}

void Exerciser::exerciseState(const std::optional<Link>& link, const StoredState& state,
                              PageRecord& record) {
    Run run{"", "", state.describe(), state.size()};
    if (!reset(link, state, run)) return;
    inspect(run, "open");
    auto page = session_->topPage();
    if (!page || !page->heldSpecifiers()) return;
    for (const StoredKey& key : switchKeys())
        if (record.keys.size() < kMaxKeys && (!link || !rootKeys_.count(key)))
            record.keys.insert(key);
    if (!link) {
        const auto& rows = page->heldSpecifiers()->items();
        for (std::size_t i = 0; i < rows.size(); ++i)
            if (!rows[i]->detailControllerClass().empty())
                record.links.insert(Link{rowName(*rows[i], i), rows[i]->detailControllerClass(),
                                         rows[i]->resourceName()});
    }

    std::vector<Operation> operations;
    const auto& rows = page->heldSpecifiers()->items();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const plat::Specifier& row = *rows[i];
        const std::string name = rowName(row, i);
        if (row.cellType() == plat::PSSwitchCell) {
            operations.push_back({Operation::Kind::Toggle, name, row.resourceName(), true});
            operations.push_back({Operation::Kind::Toggle, name, row.resourceName(), false});
        } else if (!row.action().empty()) {
            operations.push_back({Operation::Kind::Tap, name, row.resourceName(), true});
        }
    }
    for (const Operation& operation : operations)
        operate(link, state, operation);
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

void Exerciser::operate(const std::optional<Link>& link, const StoredState& state,
                        const Operation& operation) {
    Run run{"", "", state.describe(), state.size()};
    if (operation.kind == Operation::Kind::Toggle) {
        if (!reset(link, state, run)) return;
        const bool first = operation.firstValue;
        for (bool value : {first, !first}) {
            const std::string text = "toggle " + operation.row + (value ? " on" : " off");
            if (!step(run, Step{StepKind::Toggle, operation.row + (value ? " on" : " off"), text},
                      operation.row, operation.resource))
                return;
        }
        return;
    }

    // A tap may present something to answer: every answer is tried, each after a fresh tap.
    const Step tap{StepKind::Tap, operation.row, "tap " + operation.row};
    if (!reset(link, state, run) || !step(run, tap, operation.row, operation.resource)) return;
    std::vector<Step> answers;
    auto top = session_->topPage();
    auto presented = top ? plat::frontmostPresented(*top) : nullptr;
    if (auto alert = std::dynamic_pointer_cast<plat::AlertController>(presented)) {
        for (const auto& action : alert->actions())
            answers.push_back({StepKind::Choose, action->title(), "choose " + action->title()});
        if (alert->presentsAsPopover()) answers.push_back({StepKind::Dismiss, "", "dismiss"});
    } else if (std::dynamic_pointer_cast<plat::ImagePickerController>(presented)) {
        answers.push_back({StepKind::Pick, picture_.string(), "pick a picture"});
        answers.push_back({StepKind::Cancel, "", "cancel"});
    } else if (std::dynamic_pointer_cast<plat::MailComposeViewController>(presented) ||
               std::dynamic_pointer_cast<plat::ActivityViewController>(presented) ||
               (presented && presented->presentsAsPopover())) {
        answers.push_back({StepKind::Dismiss, "", "dismiss"});
    }
    for (std::size_t i = 0; i < answers.size(); ++i) {
        if (i > 0) {
            run = Run{"", "", state.describe(), state.size()};
            if (!reset(link, state, run) || !step(run, tap, operation.row, operation.resource))
                return;
        }
        Step answer = answers[i];
        answer.text = "tap " + operation.row + ", " + answer.text;
        step(run, answer, operation.row, operation.resource);
    }
}

bool Exerciser::step(Run& run, const Step& step, const std::string& row,
                     const std::string& resource) {
    ++steps_;
    try {
        runner_->perform(step);
        session_->settle();
    } catch (const StepError&) {
        // The simulator could not carry the step out as asked (the row went away, nothing
        // was presented): not something the bundle did.
        return false;
    } catch (const std::exception& e) {
        classify(e, step.text, row, resource, run);
        rootBuiltFor_.reset();
        return false;
    }
    inspect(run, step.text);
    return true;
}

void Exerciser::classify(const std::exception& e, const std::string& step, const std::string& row,
                         const std::string& resource, const Run& run) {
    Finding finding =
        Finding::make(Finding::Severity::Error, "exception", resource, row, "", step, "");
    if (dynamic_cast<const plat::RangeError*>(&e)) {
        finding.kind = "range-error";
        finding.reason = std::string("an index runs past the rows of the list: ") + e.what();
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

void Exerciser::inspect(Run& run, const std::string& step) {
    auto page = session_->topPage();
    if (!page) return;
    PageView view;
    try {
        view = viewOf(*page, session_->depth());
    } catch (const std::exception& e) {
        classify(e, step + " (showing the rows)", "", "", run);
        rootBuiltFor_.reset();
        return;
    }
    const auto& rows = page->heldSpecifiers() ? page->heldSpecifiers()->items()
                                              : std::vector<plat::SpecifierPtr>{};
    auto warn = [&](const std::string& kind, std::size_t index, const std::string& reason) {
        const std::string resource = index < rows.size() ? rows[index]->resourceName() : "";
        const std::string name = index < rows.size() ? rowName(*rows[index], index) : "";
        report(Finding::make(Finding::Severity::Warning, kind, resource, name, "", step, reason),
               run);
    };
    std::map<std::string, std::size_t> seen;
    for (const RowView& row : view.rows) {
        if (row.id && !seen.emplace(*row.id, row.index).second)
            warn("duplicate-shown-identifier", row.index,
                 "two shown rows have the identifier '" + *row.id + "'");
        if (row.footer && !row.group())
            warn("footer-on-row", row.index,
                 "a footer on a row that is not a group is never shown");
    }
    for (const SectionView& section : view.sections)
        if (section.header && section.rows.empty())
            warn("empty-group", *section.header, "a group is left with no rows under it");
}

}  // namespace velto::app
