#include "app/check/check_findings.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <tuple>

#include "app/render/json_output.h"

namespace velto::app {

void FindingSet::add(Finding finding) {
    // The same fault in another state is the same finding, reported with the smallest state
    // that shows it (the first of equals, so the same resources give the same report).
    // A warning is about a row of a resource, whichever step showed it first; an error is
    // about the step that raised.
    Key key{finding.kind,
            finding.resource,
            finding.row,
            finding.error() ? finding.page : "",
            finding.error() ? finding.step : "",
            finding.reason};
    if (auto it = index_.find(key); it != index_.end()) {
        Finding& kept = findings_[it->second];
        ++kept.states;
        kept.states += finding.states - 1;
        if (std::tie(finding.rank, finding.order) < std::tie(kept.rank, kept.order)) {
            kept.state = std::move(finding.state);
            kept.step = std::move(finding.step);
            kept.page = std::move(finding.page);
            kept.rank = finding.rank;
            kept.order = finding.order;
        }
        return;
    }
    index_.emplace(std::move(key), findings_.size());
    findings_.push_back(std::move(finding));
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

void printFindings(std::ostream& out, const FindingSet& findings) {
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
    }
    out << (list.empty() ? "" : "\n") << findings.errors() << " errors, " << findings.warnings()
        << " warnings\n";
}

namespace {

// What a finding says, in the public record and in a worker's report alike.
nlohmann::ordered_json describedFields(const Finding& f) {
    return {{"kind", f.kind}, {"resource", f.resource}, {"row", f.row},     {"page", f.page},
            {"step", f.step}, {"reason", f.reason},     {"state", f.state}, {"states", f.states}};
}

}  // namespace

void printFindingsJson(std::ostream& out, const FindingSet& findings) {
    for (const Finding& f : findings.sorted()) {
        nlohmann::ordered_json fields{{"severity", f.error() ? "error" : "warning"}};
        fields.update(describedFields(f));
        const nlohmann::ordered_json line = recordLine("finding", fields);
        out << line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << "\n";
    }
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
    f.rank = j.at("rank");
    f.order = j.at("order");
    return f;
}

}  // namespace velto::app
