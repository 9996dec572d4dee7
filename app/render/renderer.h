#pragma once

#include <string>
#include <vector>

#include "app/render/page_view.h"
#include "platform/system/journal.h"

namespace velto::app {

// Where the session's output goes: a page with what happened since the previous one, errors
// of steps, and notes for the user.
class Renderer {
  public:
    virtual ~Renderer() = default;
    virtual void page(const PageView& page, const std::vector<plat::JournalEntry>& journal) = 0;
    // `step` is the step as written; empty for errors outside any step.
    virtual void error(const std::string& step, const std::string& message) = 0;
    virtual void note(const std::string& text) = 0;
    // A picture of the page was written to `path`.
    virtual void screenshot(const std::string& path, std::size_t bytes) {
        note("wrote " + path + " (" + std::to_string(bytes) + " bytes)\n");
    }
};

}  // namespace velto::app
