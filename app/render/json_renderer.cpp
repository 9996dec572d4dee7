#include "app/render/json_renderer.h"

#include "app/render/json_output.h"

namespace velto::app {

namespace {

// Invalid UTF-8 from a resource must not end the session: it is shown replaced.
std::string line(const nlohmann::ordered_json& value) {
    return jsonText(value);
}

}  // namespace

void JsonRenderer::page(const PageView& page, const std::vector<plat::JournalEntry>& journal) {
    out_ << line(pageJson(page, journal)) << std::endl;
}

void JsonRenderer::error(const std::string& step, const std::string& message) {
    errorAt(step, message, 0);
}

void JsonRenderer::errorAt(const std::string& step, const std::string& message,
                           std::size_t fileLine) {
    err_ << line(errorLine(message, step, fileLine)) << std::endl;
}

void JsonRenderer::screenshot(const std::string& path, std::size_t bytes) {
    auto out = recordLine("screenshot");
    out["screenshot"] = {{"path", path}, {"size", bytes}};
    out_ << line(out) << std::endl;
}

void JsonRenderer::note(const std::string& text) {
    auto out = recordLine("note");
    out["note"] = text;
    out_ << line(out) << std::endl;
}

}  // namespace velto::app
