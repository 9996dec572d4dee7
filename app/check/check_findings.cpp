#include "app/check/check_findings.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <tuple>

#include "app/render/json_output.h"

namespace velto::app {

bool FindingSet::add(Finding finding) {
    // The same fault in another state is the same finding, reported with the shortest steps
    // and smallest state that show it (the first of equals, so the same resources give the
    // same report). A warning is about a row of a resource, whichever step showed it first;
    // an error is what a page raised, whichever step (and name of the row) led there.
    Key key{finding.kind,
            finding.resource,
            finding.error() ? "" : finding.row,
            finding.error() ? finding.page : "",
            "",
            finding.reason};
    if (auto it = index_.find(key); it != index_.end()) {
        Finding& kept = findings_[it->second];
        const std::size_t states = kept.states + finding.states;
        if (std::tie(finding.rank, finding.order) < std::tie(kept.rank, kept.order))
            kept = std::move(finding);
        kept.states = states;
        return false;
    }
    index_.emplace(std::move(key), findings_.size());
    findings_.push_back(std::move(finding));
    if (onNew_) onNew_(findings_.back());
    return true;
}

std::vector<Finding> FindingSet::sorted() const {
    std::vector<Finding> out = findings_;
    // Fully ordered, so that the same resources print the same report however the work was
    // shared out.
    std::sort(out.begin(), out.end(), [](const Finding& a, const Finding& b) {
        return std::tie(a.resource, b.severity, a.page, a.row, a.step, a.kind, a.reason) <
               std::tie(b.resource, a.severity, b.page, b.row, b.step, b.kind, b.reason);
    });
    return out;
}

std::size_t FindingSet::errors() const {
    return static_cast<std::size_t>(std::count_if(findings_.begin(), findings_.end(),
                                                  [](const Finding& f) { return f.error(); }));
}

std::size_t FindingSet::warnings() const {
    return findings_.size() - errors();
}

namespace {

// A word as a POSIX shell reads it back.
std::string quoted(const std::string& word) {
    const bool plain = !word.empty() && word.find_first_not_of(
                                            "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                            "0123456789-_./=@,:+") == std::string::npos;
    if (plain) return word;
    std::string text = "'";
    for (char c : word)
        text += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return text + "'";
}

void printReplay(std::ostream& out, const Finding& f, const std::string& resources) {
    if (f.steps.empty() && f.device.empty()) return;
    const char* indent = "                   ";
    out << "           replay: ";
    if (!resources.empty()) out << "VELTO_RESOURCES=" << quoted(resources) << " ";
    out << "velto-settings device init DEVICE";
    for (const std::string& option : f.device)
        out << " " << quoted(option);
    out << "\n";
    for (const auto& write : f.defaults) {
        out << indent << "velto-settings --device DEVICE defaults write";
        for (const std::string& word : write)
            out << " " << quoted(word);
        out << "\n";
    }
    out << indent << "velto-settings --device DEVICE";
    for (const std::string& step : f.steps)
        out << " " << quoted(step);
    out << (f.steps.empty() ? " show" : "") << "\n";
}

}  // namespace

void printFindings(std::ostream& out, const FindingSet& findings, const std::string& resources) {
    const std::vector<Finding> list = findings.sorted();
    std::string resource;
    bool first = true;
    for (const Finding& f : list) {
        if (first || f.resource != resource) {
            out << (first ? "" : "\n") << (f.resource.empty() ? "(no resource)" : f.resource)
                << "\n";
            resource = f.resource;
            first = false;
        }
        out << "  " << (f.error() ? "error  " : "warning") << "  " << f.reason << "\n";
        std::string where;
        if (!f.row.empty()) where += "row '" + f.row + "'";
        if (!f.page.empty()) where += (where.empty() ? "" : " on ") + f.page;
        if (!f.step.empty()) where += (where.empty() ? "" : ", ") + ("step '" + f.step + "'");
        if (!where.empty()) out << "           " << where << "\n";
        if (!f.state.empty()) {
            out << "           when: " << f.state;
            if (f.states > 1) out << " (and " << f.states - 1 << " more states)";
            out << "\n";
        }
        printReplay(out, f, resources);
    }
    out << (list.empty() ? "" : "\n") << findings.errors() << " errors, " << findings.warnings()
        << " warnings\n";
}

namespace {

// What a finding says, in the public record and in a worker's report alike.
nlohmann::ordered_json describedFields(const Finding& f) {
    return {{"kind", f.kind},         {"resource", f.resource}, {"row", f.row},
            {"page", f.page},         {"step", f.step},         {"reason", f.reason},
            {"state", f.state},       {"states", f.states},     {"device", f.device},
            {"defaults", f.defaults}, {"steps", f.steps}};
}

}  // namespace

std::string findingJson(const Finding& f) {
    nlohmann::ordered_json fields{{"severity", f.error() ? "error" : "warning"}};
    fields.update(describedFields(f));
    const nlohmann::ordered_json line = recordLine("finding", fields);
    return line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

std::string findingRecord(const Finding& f) {
    nlohmann::ordered_json record = describedFields(f);
    record["error"] = f.error();
    record["rank"] = f.rank;
    record["order"] = f.order;
    return record.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

Finding findingFromRecord(const std::string& line) {
    const auto j = nlohmann::json::parse(line);
    Finding f = Finding::make(
        j.at("error").get<bool>() ? Finding::Severity::Error : Finding::Severity::Warning,
        j.at("kind"), j.at("resource"), j.at("row"), j.at("page"), j.at("step"), j.at("reason"));
    f.state = j.at("state");
    f.states = j.at("states");
    f.device = j.at("device").get<std::vector<std::string>>();
    f.defaults = j.at("defaults").get<std::vector<std::vector<std::string>>>();
    f.steps = j.at("steps").get<std::vector<std::string>>();
    f.rank = j.at("rank");
    f.order = j.at("order");
    return f;
}

}  // namespace velto::app
