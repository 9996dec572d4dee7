#include "app/serve/record_collector.h"

#include "app/render/json_output.h"

namespace velto::app {

void RecordCollector::page(const PageView& page, const std::vector<plat::JournalEntry>& journal) {
    add(pageJson(page, journal));
}

void RecordCollector::error(const std::string& step, const std::string& message) {
    errorAt(step, message, 0);
}

void RecordCollector::errorAt(const std::string& step, const std::string& message,
                              std::size_t line) {
    add(errorLine(message, step, line));
}

void RecordCollector::note(const std::string& text) {
    add(recordLine("note", {{"note", text}}));
}

void RecordCollector::screenshot(const std::string& path, std::size_t bytes) {
    add(recordLine("screenshot", {{"screenshot", {{"path", path}, {"size", bytes}}}}));
}

nlohmann::ordered_json RecordCollector::take() {
    return std::exchange(records_, nlohmann::ordered_json::array());
}

void RecordCollector::add(nlohmann::ordered_json record) {
    publish_(record);
    records_.push_back(std::move(record));
}

}  // namespace velto::app
