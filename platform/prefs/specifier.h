#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/object.h"
#include "platform/foundation/value.h"

namespace plat {

// PSCellType, in the framework's declaration order.
enum PSCellType : int {
    PSGroupCell = 0,
    PSLinkCell = 1,
    PSLinkListCell = 2,
    PSListItemCell = 3,
    PSTitleValueCell = 4,
    PSSliderCell = 5,
    PSSwitchCell = 6,
    PSStaticTextCell = 7,
    PSEditTextCell = 8,
    PSSegmentCell = 9,
    PSGiantIconCell = 10,
    PSGiantCell = 11,
    PSSecureEditTextCell = 12,
    PSButtonCell = 13,
    PSEditTextViewCell = 14,
    PSSpinnerCell = 15,
};

// +[PSTableCell cellTypeFromString:]. A missing or unknown name reads as a plain text row
// (PSStaticTextCell), so a row that only names a cellClass still shows as a row.
int cellTypeFromString(const std::string& name);
// +[PSTableCell stringFromCellType:]; "PSStaticTextCell" for an unknown number.
std::string stringFromCellType(int type);

// Keys of the properties dictionary that the framework itself reads or fills.
namespace pskey {
inline constexpr const char* ID = "id";
inline constexpr const char* Label = "label";
inline constexpr const char* Cell = "cell";
inline constexpr const char* Key = "key";
inline constexpr const char* Defaults = "defaults";
inline constexpr const char* Default = "default";
inline constexpr const char* PostNotification = "PostNotification";
inline constexpr const char* Get = "get";
inline constexpr const char* Set = "set";
inline constexpr const char* Action = "action";
inline constexpr const char* Detail = "detail";
inline constexpr const char* CellClass = "cellClass";
inline constexpr const char* Icon = "icon";
inline constexpr const char* IconImage = "iconImage";
inline constexpr const char* CellObject = "cellObject";
inline constexpr const char* FooterText = "footerText";
}  // namespace pskey

// PSSpecifier: one settings row. Every key of the resource item is kept in properties (a
// mutable dictionary shared with anyone who asked for it), next to the runtime ones.
class Specifier : public Object {
  public:
    // +preferenceSpecifierNamed:target:set:get:detail:cell:edit:.
    static std::shared_ptr<Specifier> preferenceSpecifierNamed(
        std::optional<std::string> name, const ObjectPtr& target, const std::string& setter,
        const std::string& getter, const std::string& detail, int cell, const std::string& edit);
    // +groupSpecifierWithName: / +emptyGroupSpecifier.
    static std::shared_ptr<Specifier> groupSpecifierWithName(std::optional<std::string> name);
    static std::shared_ptr<Specifier> emptyGroupSpecifier();

    static constexpr const char* kClassName = "PSSpecifier";

    std::string className() const override { return kClassName; }
    std::string description() const override;

    // The shown label; nil is possible.
    const std::optional<std::string>& name() const { return name_; }
    void setName(std::optional<std::string> name) { name_ = std::move(name); }
    // The identifier set from "id" or setIdentifier:; without one, the name stands in, as the
    // framework's own lookups do.
    std::optional<std::string> identifier() const;
    bool hasExplicitIdentifier() const { return identifier_.has_value(); }
    void setIdentifier(std::optional<std::string> identifier) {
        identifier_ = std::move(identifier);
    }

    int cellType() const { return cellType_; }
    void setCellType(int type) { cellType_ = type; }

    ObjectPtr target() const { return target_.lock(); }
    void setTarget(const ObjectPtr& target) { target_ = target; }
    const std::string& setter() const { return setter_; }
    void setSetter(std::string selector) { setter_ = std::move(selector); }
    const std::string& getter() const { return getter_; }
    void setGetter(std::string selector) { getter_ = std::move(selector); }
    const std::string& action() const { return action_; }
    void setAction(std::string selector) { action_ = std::move(selector); }
    const std::string& detailControllerClass() const { return detail_; }
    void setDetailControllerClass(std::string name) { detail_ = std::move(name); }
    const std::string& editPaneClass() const { return edit_; }
    // The specifier list the row was loaded from ("" for rows made in code). Not part of the
    // framework's interface: tools that report on resources name the file at fault with it.
    const std::string& resourceName() const { return resource_; }
    void setResourceName(std::string name) { resource_ = std::move(name); }

    Value userInfo() const { return userInfo_; }
    void setUserInfo(Value info) { userInfo_ = std::move(info); }

    // The live properties dictionary.
    Value properties() const { return properties_; }
    Value propertyForKey(const std::string& key) const { return properties_.objectForKey(key); }
    // setProperty:forKey:. A nil value raises InvalidArgumentError, as the underlying
    // dictionary's setObject:forKey: does.
    void setProperty(Value value, const std::string& key);
    void removePropertyForKey(const std::string& key) { properties_.removeObjectForKey(key); }

  private:
    std::optional<std::string> name_;
    std::optional<std::string> identifier_;
    int cellType_ = PSStaticTextCell;
    std::weak_ptr<Object> target_;
    std::string setter_, getter_, action_, detail_, edit_, resource_;
    Value userInfo_;
    Value properties_ = Value::dictionary();
};

using SpecifierPtr = std::shared_ptr<Specifier>;

// The NSMutableArray of specifiers a page holds and edits in place. Index errors raise
// RangeError exactly where NSMutableArray raises NSRangeException.
class SpecifierArray {
  public:
    SpecifierArray() = default;
    explicit SpecifierArray(std::vector<SpecifierPtr> items) : items_(std::move(items)) {}

    std::size_t count() const { return items_.size(); }
    bool empty() const { return items_.empty(); }
    SpecifierPtr objectAtIndex(std::size_t index) const;
    void removeObjectAtIndex(std::size_t index);
    void insertObject(SpecifierPtr specifier, std::size_t index);
    void addObject(SpecifierPtr specifier) { items_.push_back(std::move(specifier)); }
    // removeLastObject: raises on an empty array, as current Foundation does.
    void removeLastObject();
    // indexOfObject: (identity); nullopt for NSNotFound.
    std::optional<std::size_t> indexOfObject(const SpecifierPtr& specifier) const;

    const std::vector<SpecifierPtr>& items() const { return items_; }
    auto begin() const { return items_.begin(); }
    auto end() const { return items_.end(); }

  private:
    std::vector<SpecifierPtr> items_;
};

using SpecifierArrayPtr = std::shared_ptr<SpecifierArray>;

}  // namespace plat
