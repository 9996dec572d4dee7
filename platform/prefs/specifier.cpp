#include "platform/prefs/specifier.h"

#include <array>

#include "platform/foundation/errors.h"

namespace plat {

namespace {

constexpr std::array<const char*, 16> kCellTypeNames = {
    "PSGroupCell",          "PSLinkCell",    "PSLinkListCell",     "PSListItemCell",
    "PSTitleValueCell",     "PSSliderCell",  "PSSwitchCell",       "PSStaticTextCell",
    "PSEditTextCell",       "PSSegmentCell", "PSGiantIconCell",    "PSGiantCell",
    "PSSecureEditTextCell", "PSButtonCell",  "PSEditTextViewCell", "PSSpinnerCell",
};

std::string beyondBounds(const char* method, std::size_t index, std::size_t count, bool inclusive) {
    return std::string("-[__NSArrayM ") + method + "]: index " + std::to_string(index) +
           " beyond bounds " +
           (count == 0 && !inclusive ? std::string("for empty array")
                                     : "[0 .. " + std::to_string(count) + (inclusive ? "]" : ")"));
}

}  // namespace

int cellTypeFromString(const std::string& name) {
    for (std::size_t i = 0; i < kCellTypeNames.size(); ++i) {
        if (name == kCellTypeNames[i]) return static_cast<int>(i);
    }
    return PSStaticTextCell;
}

std::string stringFromCellType(int type) {
    if (type < 0 || type >= static_cast<int>(kCellTypeNames.size())) return "PSStaticTextCell";
    return kCellTypeNames[static_cast<std::size_t>(type)];
}

std::shared_ptr<Specifier> Specifier::preferenceSpecifierNamed(
    std::optional<std::string> name, const ObjectPtr& target, const std::string& setter,
    const std::string& getter, const std::string& detail, int cell, const std::string& edit) {
    auto s = std::make_shared<Specifier>();
    s->name_ = std::move(name);
    s->target_ = target;
    s->setter_ = setter;
    s->getter_ = getter;
    s->detail_ = detail;
    s->cellType_ = cell;
    s->edit_ = edit;
    return s;
}

std::shared_ptr<Specifier> Specifier::groupSpecifierWithName(std::optional<std::string> name) {
    return preferenceSpecifierNamed(std::move(name), nullptr, "", "", "", PSGroupCell, "");
}

std::shared_ptr<Specifier> Specifier::emptyGroupSpecifier() {
    return groupSpecifierWithName(std::nullopt);
}

std::optional<std::string> Specifier::identifier() const {
    return identifier_ ? identifier_ : name_;
}

void Specifier::setProperty(Value value, const std::string& key) {
    if (value.isNil())
        throw InvalidArgumentError(
            "-[__NSDictionaryM setObject:forKey:]: object cannot be nil (key: " + key + ")");
    properties_.setValueForKey(key, std::move(value));
}

std::string Specifier::description() const {
    std::string base = Object::description();  // "<PSSpecifier: 0x...>"
    base.pop_back();
    return base + " name: " + name_.value_or("(null)") +
           ", id: " + identifier().value_or("(null)") + ", cell: " + stringFromCellType(cellType_) +
           ">";
}

SpecifierPtr SpecifierArray::objectAtIndex(std::size_t index) const {
    if (index >= items_.size())
        throw RangeError(beyondBounds("objectAtIndex:", index, items_.size(), false));
    return items_[index];
}

void SpecifierArray::removeObjectAtIndex(std::size_t index) {
    if (index >= items_.size())
        throw RangeError(beyondBounds("removeObjectAtIndex:", index, items_.size(), false));
    items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(index));
}

void SpecifierArray::insertObject(SpecifierPtr specifier, std::size_t index) {
    if (index > items_.size())
        throw RangeError(beyondBounds("insertObject:atIndex:", index, items_.size(), true));
    items_.insert(items_.begin() + static_cast<std::ptrdiff_t>(index), std::move(specifier));
}

void SpecifierArray::removeLastObject() {
    if (items_.empty()) throw RangeError(beyondBounds("removeLastObject", 0, 0, false));
    items_.pop_back();
}

std::optional<std::size_t> SpecifierArray::indexOfObject(const SpecifierPtr& specifier) const {
    for (std::size_t i = 0; i < items_.size(); ++i) {
        if (items_[i] == specifier) return i;
    }
    return std::nullopt;
}

}  // namespace plat
