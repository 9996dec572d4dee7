#pragma once

#include <cstdint>
#include <optional>
#include <ostream>

#include "app/render/renderer.h"

namespace velto::app {

// Whether output to the file descriptor is coloured: a terminal that is not "dumb", and no
// NO_COLOR set to a non-empty value (no-color.org).
bool colourFor(int fd);

// The page as a Settings screen in a terminal: title, group headers and footers, one line per
// row (index, label, switch state, disclosure mark, icon note), what is presented over the
// page, and what happened since the previous page. Colour only when asked for (a terminal).
class HumanRenderer : public Renderer {
  public:
    HumanRenderer(std::ostream& out, std::ostream& err, bool colour, bool colourErrors)
        : out_(out), err_(err), colour_(colour), colourErrors_(colourErrors) {}
    void page(const PageView& page, const std::vector<plat::JournalEntry>& journal) override;
    void error(const std::string& step, const std::string& message) override;
    void note(const std::string& text) override;

  private:
    std::string paint(const char* code, const std::string& text) const;
    void row(const RowView& row);
    void presented(const PresentedView& presented);
    void journal(const std::vector<plat::JournalEntry>& entries);
    void journalLine(const plat::JournalEntry& entry, std::size_t runLength,
                     std::optional<std::int64_t> lastIndex);

    std::ostream& out_;
    std::ostream& err_;
    bool colour_;
    bool colourErrors_;
};

}  // namespace velto::app
