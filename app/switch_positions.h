#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "app/page_view.h"
#include "platform/prefs/list_controller.h"
#include "platform/system/journal.h"

namespace velto::app {

// Switches the user moved by hand. On a device a switch stays where the finger left it until
// its row is redrawn, even when the page stored nothing (a page that asks first); the
// simulator makes cells afresh from the stored value at every show, so the positions are kept
// here and laid over what is shown.
class SwitchPositions {
  public:
    void hold(const std::shared_ptr<plat::ListController>& page, const plat::SpecifierPtr& row,
              bool on);
    // Forgets the rows the entries show redrawn (a reload of the row, or of the whole page)
    // and those of pages that are gone.
    void forgetRedrawn(const std::vector<plat::JournalEntry>& entries);
    void apply(const plat::ListController& page, PageView& view) const;
    // Where the user left a row's switch, if it is held.
    std::optional<bool> heldPosition(const plat::SpecifierPtr& row) const;

  private:
    struct Held {
        std::weak_ptr<plat::ListController> page;
        std::weak_ptr<plat::Specifier> row;
        bool on;
    };
    std::vector<Held> held_;
};

}  // namespace velto::app
