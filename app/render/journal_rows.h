#pragma once

#include <memory>
#include <vector>

#include "platform/prefs/list_controller.h"
#include "platform/system/journal.h"

namespace velto::app {

// A page that inserts rows and then rebuilds its list (the master switch does) journals
// indexes into a list nobody sees any more; a reader of the record wants the row as shown.
// Every insertion's index becomes the index of its row on its page of the stack as it is now:
// the very row, else (after a rebuild) the one row of that page with the same identifier.
// None when the row is no longer shown.
void placeInsertions(std::vector<plat::JournalEntry>& journal,
                     const std::vector<std::shared_ptr<plat::ListController>>& stack);

}  // namespace velto::app
