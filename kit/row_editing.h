#pragma once

#include <cstddef>
#include <string>

#include "platform/prefs/list_controller.h"
#include "platform/prefs/specifier.h"

namespace velto::rows {

// The loops every page runs on its rows. Indexes are unsigned and the count-downs run while
// the index is above 1, as the pages were written: a start computed below zero wraps to a
// huge index and the first removal raises the platform's range error.

// Removes elements start, start-1, ..., 2 of an array (plain removals, before it is shown).
void removeDownToTwo(plat::SpecifierArray& list, std::size_t start);
// Removes the shown rows start, start-1, ..., 2 of a page.
void removeShownDownToTwo(plat::ListController& page, std::size_t start, bool animated);
// Inserts fresh[i] at index i for i from `from` while i < end.
void insertAtOwnIndexes(plat::ListController& page, const plat::SpecifierArray& fresh,
                        std::size_t from, std::size_t end, bool animated);

// The favourites switch of the Phone and FaceTime pages, once the value is stored, given a
// fresh load of the page's file. On: row 2 goes (animated on FaceTime only) and file rows 2..7
// come in animated: a fixed six, whatever the page holds, never de-duplicated. Off: the
// fresh footer group loses its footer (it is never shown, so nothing changes on screen), row 2
// goes and file row 3 comes back at 3, neither animated.
void applyFavourites(plat::ListController& page, const plat::SpecifierArray& fresh, bool on,
                     bool animateRemoval);

// The Enabled switch of the Mail and Messages pages, once the value is stored. On: a fresh load
// of the page's resource comes in from row 2, animated; nothing checks whether those rows are
// there already, so switching on twice shows them twice. Off: every shown row from the last
// down to row 2 goes, animated. A page that has no rows yet is left alone.
void applyEnableSwitch(plat::ListController& page, bool on, const std::string& resource);

}  // namespace velto::rows
