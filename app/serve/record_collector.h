#pragma once

#include <functional>
#include <nlohmann/json.hpp>

#include "app/render/renderer.h"

namespace velto::app {

// The renderer of the server's session: every line the JSON output would print, as records
// (docs/json.md), kept for the answer to the request that made them and handed to `publish`
// for the event stream.
class RecordCollector : public Renderer {
  public:
    using Publish = std::function<void(const nlohmann::ordered_json& record)>;
    explicit RecordCollector(Publish publish) : publish_(std::move(publish)) {}

    void page(const PageView& page, const std::vector<plat::JournalEntry>& journal) override;
    void error(const std::string& step, const std::string& message) override;
    void errorAt(const std::string& step, const std::string& message, std::size_t line) override;
    void note(const std::string& text) override;
    void screenshot(const std::string& path, std::size_t bytes) override;
    bool wantsFrames() const override { return true; }

    // The records made since the previous call, as a JSON array.
    nlohmann::ordered_json take();

  private:
    void add(nlohmann::ordered_json record);

    Publish publish_;
    nlohmann::ordered_json records_ = nlohmann::ordered_json::array();
};

}  // namespace velto::app
