#include "app/render/human_renderer.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <sstream>

namespace velto::app {

namespace {

const char* const kBold = "1";
const char* const kDim = "2";
const char* const kRed = "31";
const char* const kGreen = "32";
const char* const kYellow = "33";
const char* const kCyan = "36";

constexpr std::size_t kLabelWidth = 34;
constexpr std::size_t kFooterWidth = 64;
constexpr std::size_t kIconWidth = 14;

// Columns a UTF-8 text takes: one per code point, which holds for the labels we show.
std::size_t columns(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
}

std::string padded(const std::string& text, std::size_t width) {
    const std::size_t used = columns(text);
    return used >= width ? text : text + std::string(width - used, ' ');
}

std::string upper(std::string text) {
    for (char& c : text)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return text;
}

// Breaks a footer into lines of at most `width` columns, at spaces.
std::vector<std::string> wrapped(const std::string& text, std::size_t width) {
    std::vector<std::string> lines;
    std::istringstream words(text);
    std::string line;
    for (std::string word; words >> word;) {
        if (!line.empty() && columns(line) + 1 + columns(word) > width) {
            lines.push_back(line);
            line.clear();
        }
        line += (line.empty() ? "" : " ") + word;
    }
    if (!line.empty()) lines.push_back(line);
    return lines;
}

std::string byteCount(std::size_t bytes) {
    return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
}

}  // namespace

bool colourFor(int fd) {
    if (::isatty(fd) == 0) return false;
    if (const char* noColour = std::getenv("NO_COLOR"); noColour && *noColour) return false;
    const char* term = std::getenv("TERM");
    return !term || std::strcmp(term, "dumb") != 0;
}

std::string HumanRenderer::paint(const char* code, const std::string& text) const {
    if (!colour_) return text;
    return std::string("\033[") + code + "m" + text + "\033[0m";
}

void HumanRenderer::row(const RowView& row) {
    std::string line = "  " + padded("#" + std::to_string(row.index), 4) + " ";
    // A cell that draws its own text (a header) shows it, a line at a time, where a label
    // would stand.
    std::vector<std::string> textLines;
    if (!row.label && row.text) {
        std::istringstream text(*row.text);
        for (std::string part; std::getline(text, part);)
            textLines.push_back(part);
    }
    const std::string label =
        textLines.empty() ? row.label.value_or("") : paint(kBold, textLines.front());
    line += textLines.empty() ? padded(label, kLabelWidth) : label;
    const std::string icon = row.icon ? "[icon " + std::to_string(row.icon->width) + "x" +
                                            std::to_string(row.icon->height) + "]"
                                      : "";
    line += " " + paint(kDim, padded(icon, kIconWidth));
    if (row.value) line += " " + (*row.value ? paint(kGreen, "[ on]") : paint(kDim, "[off]"));
    if (row.detail) line += " " + paint(kCyan, ">");
    if (row.cell == "PSButtonCell") line += " " + paint(kCyan, "(button)");
    // Trailing blanks of the padding serve no one.
    line.erase(line.find_last_not_of(' ') + 1);
    out_ << line << "\n";
    for (std::size_t i = 1; i < textLines.size(); ++i)
        out_ << "       " << textLines[i] << "\n";
}

void HumanRenderer::presented(const PresentedView& presented) {
    std::string head = presented.kind == "other"   ? presented.className
                       : presented.kind == "mail"  ? "mail composer"
                       : presented.kind == "share" ? "share sheet"
                                                   : presented.kind;
    if (presented.popover)
        head += presented.anchor ? " (popover at " + *presented.anchor + ")" : " (popover)";
    out_ << "\n  " << paint(kYellow, "┌ " + head)
         << (presented.title ? ": " + paint(kBold, *presented.title) : "") << "\n";
    if (presented.message)
        for (const std::string& line : wrapped(*presented.message, kFooterWidth))
            out_ << "  │ " << line << "\n";
    if (const auto& mail = presented.mail) {
        std::string to;
        for (const std::string& address : mail->to)
            to += (to.empty() ? "" : ", ") + address;
        out_ << "  │ To: " << to << "\n";
        out_ << "  │ Subject: " << mail->subject << "\n";
        for (const auto& attachment : mail->attachments)
            out_ << "  │ Attachment: " << attachment.name << " (" << byteCount(attachment.size)
                 << ")\n";
        if (mail->attachments.empty()) out_ << "  │ " << paint(kDim, "(no attachment)") << "\n";
    }
    if (const auto& share = presented.share) {
        for (const std::string& line : wrapped(share->text.value_or(""), kFooterWidth))
            out_ << "  │ " << line << "\n";
        if (share->image)
            out_ << "  │ "
                 << paint(kDim, "[image " + std::to_string(share->image->width) + "x" +
                                    std::to_string(share->image->height) + "]")
                 << "\n";
    }
    if (!presented.actions.empty()) {
        std::string actions;
        for (const ActionView& action : presented.actions) {
            actions += (actions.empty() ? "" : "  ") + paint(kBold, "[" + action.title + "]");
            if (action.style != "default") actions += " " + action.style;
        }
        out_ << "  │ " << actions << "\n";
    }
    out_ << "  " << paint(kYellow, "└") << "\n";
}

namespace {

std::string rowsWhat(const std::optional<std::int64_t>& index, const char* none,
                     std::optional<std::int64_t> lastIndex, bool animated) {
    std::string what = index ? "#" + std::to_string(*index) : none;
    if (lastIndex) what += " to #" + std::to_string(*lastIndex);
    if (animated) what += ", animated";
    return what;
}

// What follows an entry's kind on its line.
struct JournalWhat {
    std::size_t runLength;
    std::optional<std::int64_t> lastIndex;

    std::string operator()(const plat::journal::Notification& e) const { return e.name; }
    std::string operator()(const plat::journal::LocalNotification& e) const { return e.name; }
    std::string operator()(const plat::journal::Log& e) const { return e.text; }
    std::string operator()(const plat::journal::Shell& e) const { return e.command; }
    std::string operator()(const plat::journal::Request& e) const {
        return e.name + (runLength > 1 ? " x" + std::to_string(runLength) : "") +
               (e.replied() ? " (replied)" : " (no reply)");
    }
    std::string operator()(const plat::journal::Insert& e) const {
        return rowsWhat(e.index, "a row no longer shown", lastIndex, e.animated);
    }
    std::string operator()(const plat::journal::Remove& e) const {
        return rowsWhat(e.index, "", lastIndex, e.animated);
    }
    std::string operator()(const plat::journal::Reload& e) const {
        return rowsWhat(e.index, "all rows", lastIndex, e.animated);
    }
    std::string operator()(const plat::journal::Present& e) const {
        return e.controllerClass + (e.title.empty() ? "" : " \"" + e.title + "\"");
    }
    std::string operator()(const plat::journal::Dismiss& e) const {
        return e.controllerClass + " (" + e.how + ")";
    }
    std::string operator()(const plat::journal::Navigation& e) const {
        return e.action + " " + e.controllerClass;
    }
    std::string operator()(const plat::journal::Synchronize&) const { return ""; }
    std::string operator()(const plat::journal::PreferenceWrite& e) const {
        return e.domain + " " + e.key;
    }
    std::string operator()(const plat::journal::PreferenceWriteRefused& e) const {
        return e.domain + " " + e.key + ": " + e.cause;
    }
};

// Rows inserted or removed one after the other on one page, or the same request again: one
// line. An insertion whose row is gone breaks the run, as it has no place in it.
bool continuesRun(const plat::JournalEntry& first, const plat::JournalEntry& next) {
    using namespace plat::journal;
    if (first.index() != next.index()) return false;
    if (const auto* a = std::get_if<Insert>(&first)) {
        const auto& b = std::get<Insert>(next);
        return a->page == b.page && a->animated == b.animated && a->index && b.index;
    }
    if (const auto* a = std::get_if<Remove>(&first)) {
        const auto& b = std::get<Remove>(next);
        return a->page == b.page && a->animated == b.animated;
    }
    if (const auto* a = std::get_if<Request>(&first)) {
        const auto& b = std::get<Request>(next);
        return a->name == b.name && a->center == b.center && a->replied() == b.replied();
    }
    return false;
}

std::optional<std::int64_t> listIndex(const plat::JournalEntry& entry) {
    if (const auto* insert = std::get_if<plat::journal::Insert>(&entry)) return insert->index;
    if (const auto* remove = std::get_if<plat::journal::Remove>(&entry)) return remove->index;
    return std::nullopt;
}

}  // namespace

void HumanRenderer::journalLine(const plat::JournalEntry& entry, std::size_t runLength,
                                std::optional<std::int64_t> lastIndex) {
    const std::string what = std::visit(JournalWhat{runLength, lastIndex}, entry);
    const std::string kind = plat::kindName(entry);
    // The padding stays outside the colour, so a line with nothing after its kind ends clean.
    out_ << "  " << paint(kDim, "· " + kind);
    if (!what.empty()) out_ << padded("", 19 - std::min<std::size_t>(kind.size(), 18)) << what;
    out_ << "\n";
}

void HumanRenderer::journal(const std::vector<plat::JournalEntry>& entries) {
    // Runs of the same thing (a row inserted after the other, one icon request per row) read
    // better as one line; the JSON output keeps every entry.
    for (std::size_t i = 0; i < entries.size();) {
        const plat::JournalEntry& first = entries[i];
        std::size_t end = i + 1;
        while (end < entries.size() && continuesRun(first, entries[end]))
            ++end;
        const bool listOperation = std::holds_alternative<plat::journal::Insert>(first) ||
                                   std::holds_alternative<plat::journal::Remove>(first);
        if (listOperation && end - i > 1)
            journalLine(first, 1, listIndex(entries[end - 1]));
        else
            journalLine(first, end - i, std::nullopt);
        i = end;
    }
}

void HumanRenderer::page(const PageView& page, const std::vector<plat::JournalEntry>& journal) {
    out_ << "\n";
    if (page.depth > 1) out_ << paint(kCyan, "< Back") << "   ";
    out_ << paint(kBold, page.title.value_or("(untitled)")) << "  " << paint(kDim, page.className)
         << "\n";

    for (const SectionView& section : page.sections) {
        const RowView* header = section.header ? &page.rows[*section.header] : nullptr;
        out_ << "\n";
        if (header && header->label && !header->label->empty())
            out_ << "  " << paint(kDim, upper(*header->label)) << "\n";
        for (std::size_t index : section.rows)
            row(page.rows[index]);
        if (header && header->footer)
            for (const std::string& line : wrapped(*header->footer, kFooterWidth))
                out_ << "       " << paint(kDim, line) << "\n";
    }
    if (page.sections.empty()) out_ << "\n  " << paint(kDim, "(no rows)") << "\n";
    if (page.presented) presented(*page.presented);

    if (!journal.empty()) {
        out_ << "\n";
        this->journal(journal);
    }
    out_.flush();
}

void HumanRenderer::error(const std::string& step, const std::string& message) {
    const std::string prefix =
        colourErrors_ ? std::string("\033[") + kRed + "merror:\033[0m " : "error: ";
    err_ << prefix << (step.empty() ? "" : step + ": ") << message << std::endl;
}

void HumanRenderer::note(const std::string& text) {
    out_ << text << std::flush;
}

}  // namespace velto::app
