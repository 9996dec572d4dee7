#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "platform/prefs/list_controller.h"

namespace velto::app {

// A row of the page's held list and its flat index.
struct RowRef {
    plat::SpecifierPtr row;
    std::size_t index = 0;
};

// What a step wants a row for. Group rows head sections and lead nowhere, so `open` never
// lands on one, even when a group shares its label with the link below it.
enum class RowUse { Any, Link };

// How a step names a row, in order of preference: a row's own identifier exactly, else its
// shown label exactly (the first such row wins), else "#N" for index N of the held list, else
// the one row whose identifier or label matches ignoring case. Everywhere a label is
// compared, "..." and "…" are the same, since a keyboard has no ellipsis key.
std::optional<RowRef> findRow(const plat::SpecifierArrayPtr& list, const std::string& text,
                              RowUse use = RowUse::Any);

// Why findRow found nothing, for a person: the text matches several rows ignoring case, or no
// row, with the closest rows suggested ("no row 'Phnoe' on this page; did you mean 'Phone'?").
std::string rowMissMessage(const plat::SpecifierArrayPtr& list, const std::string& text,
                           RowUse use = RowUse::Any);

// What a person types to name the row: its label, else its identifier, else "#N", the first
// that findRow takes to this row (another row's identifier may shadow a label).
std::string typedName(const plat::SpecifierArrayPtr& list, const RowRef& ref);

// Where the table shows the row at a flat index: its row and section, as
// tableView:cellForRowAtIndexPath: takes them. nullopt for group rows (they head a section
// rather than sit in one) and for indexes past the end.
struct CellPosition {
    std::size_t row = 0;
    std::size_t section = 0;
};
std::optional<CellPosition> cellPosition(const plat::ListController& page, std::size_t index);

}  // namespace velto::app
