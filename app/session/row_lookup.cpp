#include "app/session/row_lookup.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "app/session/spelling.h"
#include "platform/foundation/strings.h"

namespace velto::app {

namespace {

std::optional<std::size_t> hashIndex(const std::string& text) {
    if (text.size() < 2 || text[0] != '#' || text.size() > 10) return std::nullopt;
    std::size_t index = 0;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (!std::isdigit(static_cast<unsigned char>(text[i]))) return std::nullopt;
        index = index * 10 + static_cast<std::size_t>(text[i] - '0');
    }
    return index;
}

// A label as it can be typed: every "..." written as the one character "…".
std::string spelled(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.compare(i, 3, "...") == 0) {
            out += "\u2026";
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

// For measuring how close two names are: spelled, and ASCII letters in lower case.
std::string folded(const std::string& text) {
    std::string out = spelled(text);
    for (char& c : out)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

bool usable(const plat::Specifier& row, RowUse use) {
    return use == RowUse::Any || row.cellType() != plat::PSGroupCell;
}

// The names a person may type for a row: its own identifier and its label.
std::vector<std::string> namesOf(const plat::Specifier& row) {
    std::vector<std::string> names;
    if (row.name() && !row.name()->empty()) names.push_back(*row.name());
    if (row.hasExplicitIdentifier() && row.identifier() && row.identifier() != row.name())
        names.push_back(*row.identifier());
    return names;
}

// Rows whose identifier or label equals the text ignoring case.
std::vector<RowRef> caseInsensitiveMatches(const plat::SpecifierArrayPtr& list,
                                           const std::string& text, RowUse use) {
    std::vector<RowRef> found;
    const std::string wanted = spelled(text);
    const auto& rows = list->items();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (!usable(*rows[i], use)) continue;
        for (const std::string& name : namesOf(*rows[i]))
            if (plat::compare(spelled(name), wanted, plat::NSCaseInsensitiveSearch) ==
                plat::ComparisonResult::Same) {
                found.push_back({rows[i], i});
                break;
            }
    }
    return found;
}

std::string quotedList(const std::vector<std::string>& names) {
    std::string out;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0) out += i + 1 == names.size() ? " or " : ", ";
        out += "'" + names[i] + "'";
    }
    return out;
}

}  // namespace

std::optional<RowRef> findRow(const plat::SpecifierArrayPtr& list, const std::string& text,
                              RowUse use) {
    if (!list) return std::nullopt;
    const auto& rows = list->items();
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (usable(*rows[i], use) && rows[i]->hasExplicitIdentifier() &&
            rows[i]->identifier() == text)
            return RowRef{rows[i], i};
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (usable(*rows[i], use) && rows[i]->name() == text) return RowRef{rows[i], i};
    const std::string wanted = spelled(text);
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (usable(*rows[i], use) && rows[i]->name() && spelled(*rows[i]->name()) == wanted)
            return RowRef{rows[i], i};
    if (auto index = hashIndex(text); index && *index < rows.size() && usable(*rows[*index], use))
        return RowRef{rows[*index], *index};
    if (auto matches = caseInsensitiveMatches(list, text, use); matches.size() == 1)
        return matches.front();
    return std::nullopt;
}

std::string rowMissMessage(const plat::SpecifierArrayPtr& list, const std::string& text,
                           RowUse use) {
    const std::string miss = "no row '" + text + "' on this page";
    if (!list) return miss;
    if (auto matches = caseInsensitiveMatches(list, text, use); matches.size() > 1) {
        std::vector<std::string> names;
        for (const RowRef& match : matches)
            names.push_back(typedName(list, match));
        return "'" + text + "' could be " + quotedList(names) + ": write it as shown";
    }

    // The closest rows: a few slips away, or holding what was typed.
    const std::string wanted = folded(text);
    const std::size_t allowed = std::max<std::size_t>(2, wanted.size() / 3);
    std::vector<std::pair<std::size_t, std::size_t>> close;  // (distance, index)
    const auto& rows = list->items();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (!usable(*rows[i], use)) continue;
        std::size_t best = allowed + 1;
        for (const std::string& name : namesOf(*rows[i])) {
            const std::string candidate = folded(name);
            best = std::min(best, editDistance(wanted, candidate));
            // The beginning of a longer name, a slip or two off ("notifications").
            if (wanted.size() >= 4 && candidate.size() > wanted.size())
                best = std::min(best, editDistance(wanted, candidate.substr(0, wanted.size())) + 1);
            if (wanted.size() >= 2 && candidate.find(wanted) != std::string::npos)
                best = std::min<std::size_t>(best, 1);
        }
        if (best <= allowed) close.emplace_back(best, i);
    }
    if (close.empty()) return miss;
    std::stable_sort(close.begin(), close.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> names;
    for (std::size_t k = 0; k < close.size() && names.size() < 3; ++k) {
        const std::string name = typedName(list, {rows[close[k].second], close[k].second});
        if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    }
    return miss + "; did you mean " + quotedList(names) + "?";
}

std::string typedName(const plat::SpecifierArrayPtr& list, const RowRef& ref) {
    for (const std::string& name : namesOf(*ref.row)) {
        const auto found = findRow(list, name);
        if (found && found->index == ref.index) return name;
    }
    return "#" + std::to_string(ref.index);
}

std::optional<CellPosition> cellPosition(const plat::ListController& page, std::size_t index) {
    for (std::size_t section = 0; section < page.numberOfGroups(); ++section) {
        const std::size_t rows = page.rowsForGroup(section);
        for (std::size_t row = 0; row < rows; ++row)
            if (page.indexForRow(row, section) == index) return CellPosition{row, section};
    }
    return std::nullopt;
}

}  // namespace velto::app
