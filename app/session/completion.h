#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace velto::app {

class Session;

// What the top page offers to complete: its rows by the names a person types, and the
// actions of the alert or sheet presented over it.
struct CompletionContext {
    struct Row {
        std::vector<std::string> names;  // label, then an identifier of its own
        bool link = false;
        bool switchRow = false;
        bool button = false;
    };
    std::vector<Row> rows;
    std::vector<std::string> actions;
};

CompletionContext completionContext(Session& session);

// The ways to go on from a line typed so far (up to the cursor). Each candidate replaces the
// text from `start` to the cursor; a candidate after which more must be typed ends in a space.
// Step words come first; then, by step, link rows (open), switches and on|off (toggle),
// buttons (tap), action titles (choose), rows, on|off|shown|hidden or a kind (expect), and
// host files and folders (pick, screenshot, run).
// Candidates that begin with what was typed, else those that do ignoring case.
struct Completion {
    std::size_t start = 0;
    std::vector<std::string> candidates;
};
Completion complete(const std::string& typed, const CompletionContext& context);

// The longest text every candidate begins with.
std::string commonPrefix(const std::vector<std::string>& candidates);

}  // namespace velto::app
