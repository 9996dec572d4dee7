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
    // The same for a step at `line` of a file of steps (0: not from a file); the message
    // names the line unless the output has a place of its own for it.
    virtual void errorAt(const std::string& step, const std::string& message, std::size_t line) {
        error(step, line ? "line " + std::to_string(line) + ": " + message : message);
    }
    virtual void note(const std::string& text) = 0;
    // Whether pages reach it with their rows' frames, which cost a layout of the page.
    virtual bool wantsFrames() const { return false; }
    // A picture of the page was written to `path`.
    virtual void screenshot(const std::string& path, std::size_t bytes) {
        note("wrote " + path + " (" + std::to_string(bytes) + " bytes)\n");
    }
};

}  // namespace velto::app
