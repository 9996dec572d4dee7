#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/geometry.h"
#include "platform/foundation/value.h"
#include "platform/prefs/specifier.h"
#include "platform/prefs/table_cell.h"
#include "platform/system/bundle.h"
#include "platform/system/journal.h"
#include "platform/ui/view_controller.h"

namespace plat {

class Runtime;

// PSListController. The held list (the framework's _specifiers) is null until the first
// `specifiers` call; subclasses build it there and edit it in place afterwards. Every list
// operation is journaled with its index and animated flag; an index past the end raises
// RangeError, as the framework's NSMutableArray does.
class ListController : public ViewController {
  public:
    static constexpr const char* kClassName = "PSListController";
    std::string className() const override { return kClassName; }
    std::vector<std::string> classChain() const override;

    // initForContentSize: — the designated initialiser; false stands for nil.
    virtual bool initForContentSize(Size size);
    Size contentSize() const { return contentSize_; }

    // The rows. The framework's own answer is the held list as it stands.
    virtual SpecifierArrayPtr specifiers();
    // The framework's _specifiers ivar, without building anything.
    SpecifierArrayPtr heldSpecifiers() const { return held_; }
    void setHeldSpecifiers(SpecifierArrayPtr list) { held_ = std::move(list); }

    // loadSpecifiersFromPlistName:target: — a new array of new rows on every call, read from
    // the bundle that holds this controller's class. Sets the title when the resource has one.
    SpecifierArrayPtr loadSpecifiersFromPlistName(const std::string& name, const ObjectPtr& target);
    // The specifier lists this controller has loaded, each once, in the order first loaded; for
    // tools that name the resource behind a page that failed.
    const std::vector<std::string>& loadedResourceNames() const { return loadedResources_; }

    // insertSpecifier:atIndex:animated: (pages override it) and the plain forms.
    virtual void insertSpecifier(const SpecifierPtr& specifier, std::size_t index, bool animated);
    void insertSpecifier(const SpecifierPtr& specifier, std::size_t index) {
        insertSpecifier(specifier, index, false);
    }
    virtual void removeSpecifierAtIndex(std::size_t index, bool animated);
    void removeSpecifierAtIndex(std::size_t index) { removeSpecifierAtIndex(index, false); }
    // reloadSpecifier:animated: — redraws one row (journaled with its index, or none when the
    // row is not in the list).
    void reloadSpecifier(const SpecifierPtr& specifier, bool animated);
    // reloadSpecifiers — drops the held list and asks `specifiers` again.
    virtual void reloadSpecifiers();

    SpecifierPtr specifierAtIndex(std::size_t index) const;
    std::optional<std::size_t> indexOfSpecifier(const SpecifierPtr& specifier) const;
    // Sections: each group row opens one; rows before the first group form an implicit first
    // section. indexForRow:inGroup: answers the flat index of a row of a section.
    std::size_t numberOfGroups() const;
    std::size_t rowsForGroup(std::size_t group) const;
    std::size_t indexForRow(std::size_t row, std::size_t group) const;
    // The group row that opens a section, or nullptr for an implicit first section.
    SpecifierPtr groupSpecifierForSection(std::size_t group) const;

    // The default value path of rows: the value under the row's "key" in the preferences
    // domain its "defaults" names (/var/mobile/Library/Preferences/<defaults>.plist, binary),
    // then the row's "PostNotification" on the Darwin center.
    virtual void setPreferenceValue(const Value& value, const SpecifierPtr& specifier);
    // The stored value, or the row's "default" when none is stored.
    virtual Value readPreferenceValue(const SpecifierPtr& specifier);
    // What a row shows: its getter on its target, else readPreferenceValue:.
    Value valueForSpecifier(const SpecifierPtr& specifier);

    // A finger flips a switch row: the switch moves first, then the row's setter is sent to
    // its target with the value and the row; a row without a setter stores the value through
    // setPreferenceValue:specifier:. False when the row names a setter but has no target, so
    // nothing heard of it. The switch stays where the finger left it, whatever the page
    // stored, until the page redraws the row or reloads.
    bool userSetSwitch(const SpecifierPtr& row, bool on);
    // Where the user left a row's switch, until the row is redrawn.
    std::optional<bool> heldSwitchPosition(const SpecifierPtr& row) const;

    // The table view's contentOffset.y: how far the user has scrolled the rows up, in points.
    double contentOffsetY() const { return contentOffsetY_; }
    void setContentOffsetY(double offset) { contentOffsetY_ = offset < 0 ? 0 : offset; }

    // tableView:cellForRowAtIndexPath: — makes the row's cell (the "cellClass" it names, or a
    // plain PSTableCell), records it under "cellObject" and sets a switch from the row's value.
    virtual TableCellPtr tableViewCellForRowAtIndexPath(std::size_t row, std::size_t section);

    // The bundle of this controller's class.
    Bundle bundle() const;
    // The row that opened this page (setSpecifier:); its name becomes the title.
    SpecifierPtr specifier() const { return parent_; }
    void setSpecifier(const SpecifierPtr& specifier);

    // Registers the framework's own selectors on PSListController (setPreferenceValue:specifier:,
    // readPreferenceValue:, specifiers).
    static void registerFrameworkMethods(Runtime& runtime);

  private:
    struct HeldSwitch {
        std::weak_ptr<Specifier> row;
        bool on;
    };
    void forgetHeldSwitch(const SpecifierPtr& row);

    SpecifierArrayPtr held_;
    std::vector<HeldSwitch> heldSwitches_;
    double contentOffsetY_ = 0;
    SpecifierPtr parent_;
    Size contentSize_;
    std::vector<std::string> loadedResources_;
    // Whether a specifier file has given the pane its title: that happens when the pane is
    // first built, and a reload that loads the file again leaves the title as the page made it.
    bool titleLoaded_ = false;
};

using ListControllerPtr = std::shared_ptr<ListController>;

// Where a preferences domain is stored on the device: the file the list controller reads and
// writes for a specifier's "defaults".
std::string preferencesDomainPath(const std::string& domain);

}  // namespace plat
