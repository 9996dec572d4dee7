#pragma once

#include <ostream>

#include "app/render/renderer.h"

namespace velto::app {

// JSON Lines: one object per shown page on the output, one per error on the error stream.
// Notes (help) and written screenshots are objects too, so the output stays one JSON value per
// line; every line says its "type" and "schema" (docs/json.md).
class JsonRenderer : public Renderer {
  public:
    JsonRenderer(std::ostream& out, std::ostream& err) : out_(out), err_(err) {}
    void page(const PageView& page, const std::vector<plat::JournalEntry>& journal) override;
    void error(const std::string& step, const std::string& message) override;
    void errorAt(const std::string& step, const std::string& message, std::size_t line) override;
    void note(const std::string& text) override;
    void screenshot(const std::string& path, std::size_t bytes) override;
    bool wantsFrames() const override { return true; }

  private:
    std::ostream& out_;
    std::ostream& err_;
};

}  // namespace velto::app
