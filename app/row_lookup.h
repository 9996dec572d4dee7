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

// How a step names a row, in order of preference: a row's own identifier exactly, else its
// shown label exactly, else "#N" for index N of the held list. The first row that matches wins.
std::optional<RowRef> findRow(const plat::SpecifierArrayPtr& list, const std::string& text);

// Where the table shows the row at a flat index: its row and section, as
// tableView:cellForRowAtIndexPath: takes them. nullopt for group rows (they head a section
// rather than sit in one) and for indexes past the end.
struct CellPosition {
    std::size_t row = 0;
    std::size_t section = 0;
};
std::optional<CellPosition> cellPosition(const plat::ListController& page, std::size_t index);

}  // namespace velto::app
