#include "app/session/completion.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "app/render/page_view.h"
#include "app/session/session.h"
#include "app/session/step.h"
#include "platform/ui/alert_controller.h"

namespace velto::app {

namespace {

const char* const kBlank = " \t";

bool startsWith(const std::string& text, const std::string& prefix, bool ignoringCase) {
    if (text.size() < prefix.size()) return false;
    for (std::size_t i = 0; i < prefix.size(); ++i) {
        const auto a = static_cast<unsigned char>(text[i]);
        const auto b = static_cast<unsigned char>(prefix[i]);
        if (a != b && (!ignoringCase || std::tolower(a) != std::tolower(b))) return false;
    }
    return true;
}

std::vector<std::string> matching(const std::string& typed,
                                  const std::vector<std::string>& options) {
    std::vector<std::string> found;
    for (const bool ignoringCase : {false, true}) {
        for (const std::string& option : options)
            if (startsWith(option, typed, ignoringCase) &&
                std::find(found.begin(), found.end(), option) == found.end())
                found.push_back(option);
        if (!found.empty()) break;
    }
    return found;
}

template <class Wanted>
std::vector<std::string> rowNames(const CompletionContext& context, Wanted wanted,
                                  const std::string& after = "") {
    std::vector<std::string> names;
    for (const auto& row : context.rows)
        if (wanted(row))
            for (const std::string& name : row.names)
                names.push_back(name + after);
    return names;
}

// After a row's name and a blank, the word that follows it: where it starts in the argument,
// or npos when the argument does not begin with one of the names.
std::size_t afterRowName(const std::string& argument, const std::vector<std::string>& names) {
    std::size_t longest = 0;
    for (const std::string& name : names)
        if (name.size() > longest && argument.size() > name.size() &&
            argument.compare(0, name.size(), name) == 0 &&
            std::string(kBlank).find(argument[name.size()]) != std::string::npos)
            longest = name.size();
    if (longest == 0) return std::string::npos;
    const std::size_t word = argument.find_first_not_of(kBlank, longest);
    if (word == std::string::npos) return argument.size();
    // A blank further on means the argument is more than a row and a word.
    return argument.find_first_of(kBlank, word) == std::string::npos ? word : std::string::npos;
}

// Files and folders on the host that begin with what was typed: a folder ends in "/" so Tab
// goes on into it. Hidden names only when a "." was typed.
Completion fileCompletion(const std::string& argument, std::size_t start) {
    constexpr std::size_t kMostEntries = 5000;  // a huge folder must not stall the prompt
    const std::size_t slash = argument.rfind('/');
    const std::string folderPart = slash == std::string::npos ? "" : argument.substr(0, slash + 1);
    const std::string namePart = argument.substr(folderPart.size());
    std::vector<std::string> names;
    std::error_code error;
    std::size_t seen = 0;
    for (std::filesystem::directory_iterator entry(folderPart.empty() ? "." : folderPart, error),
         end;
         !error && entry != end && seen < kMostEntries; entry.increment(error), ++seen) {
        std::string name = entry->path().filename().string();
        if (!name.starts_with(namePart) || (name.starts_with('.') && !namePart.starts_with('.')))
            continue;
        std::error_code kind;
        if (entry->is_directory(kind)) name += "/";
        names.push_back(folderPart + name);
    }
    std::sort(names.begin(), names.end());
    return {start, names};
}

Completion argumentCompletion(const std::string& word, const std::string& argument,
                              std::size_t start, const CompletionContext& context) {
    const auto any = [](const CompletionContext::Row&) { return true; };
    if (word == "pick" || word == "screenshot" || word == "run")
        return fileCompletion(argument, start);
    std::vector<std::string> options;
    if (word == "scroll") {
        options = rowNames(context, any);
    } else if (word == "open") {
        options = rowNames(context, [](const auto& row) { return row.link; });
    } else if (word == "tap") {
        options = rowNames(context, [](const auto& row) { return row.button; });
    } else if (word == "choose") {
        options = context.actions;
    } else if (word == "toggle") {
        const auto switches = rowNames(context, [](const auto& row) { return row.switchRow; });
        if (const std::size_t at = afterRowName(argument, switches); at != std::string::npos)
            return {start + at, matching(argument.substr(at), {"on", "off"})};
        options = rowNames(
            context, [](const auto& row) { return row.switchRow; }, " ");
    } else if (word == "expect") {
        if (argument.rfind("presented ", 0) == 0) {
            const std::size_t at = argument.find_first_not_of(kBlank, 9);
            const std::size_t from = at == std::string::npos ? argument.size() : at;
            return {start + from,
                    matching(argument.substr(from),
                             {"alert", "sheet", "picker", "mail", "share", "other", "nothing"})};
        }
        if (argument.rfind("file ", 0) == 0 || argument.rfind("log ", 0) == 0) return {start, {}};
        if (const std::size_t at = afterRowName(argument, rowNames(context, any));
            at != std::string::npos)
            return {start + at, matching(argument.substr(at), {"on", "off", "shown", "hidden"})};
        options = {"presented ", "file ", "log "};
        for (const std::string& name : rowNames(context, any, " "))
            options.push_back(name);
    }
    return {start, matching(argument, options)};
}

}  // namespace

CompletionContext completionContext(Session& session) {
    CompletionContext context;
    auto page = session.topPage();
    if (!page) return context;
    if (auto list = page->heldSpecifiers())
        for (const auto& specifier : list->items()) {
            CompletionContext::Row row;
            if (specifier->name() && !specifier->name()->empty())
                row.names.push_back(*specifier->name());
            if (specifier->hasExplicitIdentifier() && specifier->identifier() &&
                specifier->identifier() != specifier->name())
                row.names.push_back(*specifier->identifier());
            row.link = !specifier->detailControllerClass().empty() &&
                       specifier->cellType() != plat::PSGroupCell;
            row.switchRow = specifier->cellType() == plat::PSSwitchCell;
            row.button = !specifier->action().empty();
            context.rows.push_back(std::move(row));
        }
    if (auto alert =
            std::dynamic_pointer_cast<plat::AlertController>(plat::frontmostPresented(*page)))
        for (const auto& action : alert->actions())
            context.actions.push_back(action->title());
    return context;
}

Completion complete(const std::string& typed, const CompletionContext& context) {
    std::vector<std::string> words;
    for (const auto& [word, argument] : stepWords())
        words.push_back(argument ? word + " " : word);
    const std::size_t begin = typed.find_first_not_of(kBlank);
    if (begin == std::string::npos) return {typed.size(), words};
    const std::size_t wordEnd = typed.find_first_of(kBlank, begin);
    if (wordEnd == std::string::npos) return {begin, matching(typed.substr(begin), words)};
    std::size_t start = typed.find_first_not_of(kBlank, wordEnd);
    if (start == std::string::npos) start = typed.size();
    return argumentCompletion(typed.substr(begin, wordEnd - begin), typed.substr(start), start,
                              context);
}

std::string commonPrefix(const std::vector<std::string>& candidates) {
    if (candidates.empty()) return "";
    std::string prefix = candidates.front();
    for (const std::string& candidate : candidates) {
        std::size_t n = 0;
        while (n < prefix.size() && n < candidate.size() && prefix[n] == candidate[n])
            ++n;
        prefix.resize(n);
    }
    // Never end inside a UTF-8 character.
    while (!prefix.empty() && (static_cast<unsigned char>(prefix.back()) & 0x80) != 0) {
        std::size_t lead = prefix.size() - 1;
        while (lead > 0 && (static_cast<unsigned char>(prefix[lead]) & 0xC0) == 0x80)
            --lead;
        const auto first = static_cast<unsigned char>(prefix[lead]);
        const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 1;
        if (prefix.size() - lead == length) break;
        prefix.resize(lead);
    }
    return prefix;
}

}  // namespace velto::app
