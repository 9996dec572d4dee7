#include "platform/prefs/list_controller.h"

#include <algorithm>
#include <optional>

#include "platform/foundation/errors.h"
#include "platform/foundation/plist.h"
#include "platform/foundation/strings.h"
#include "platform/prefs/runtime.h"
#include "platform/prefs/specifier_loader.h"
#include "platform/system/plist_file.h"
#include "platform/system/process.h"

namespace plat {

namespace {

const char* const kPreferencesFolder = "/var/mobile/Library/Preferences";

SpecifierPtr specifierArgument(const Arguments& args, std::size_t index) {
    return argumentAt(args, index).as<Specifier>();
}

}  // namespace

std::string preferencesDomainPath(const std::string& domain) {
    return stringByAppendingPathComponent(kPreferencesFolder, domain + ".plist");
}

std::vector<std::string> ListController::classChain() const {
    return Runtime::shared().classChain(className());
}

bool ListController::initForContentSize(Size size) {
    contentSize_ = size;
    return true;
}

SpecifierArrayPtr ListController::specifiers() {
    return held_;
}

SpecifierArrayPtr ListController::loadSpecifiersFromPlistName(const std::string& name,
                                                              const ObjectPtr& target) {
    if (std::find(loadedResources_.begin(), loadedResources_.end(), name) == loadedResources_.end())
        loadedResources_.push_back(name);
    LoadedSpecifiers loaded = loadSpecifiersFromPlist(bundle(), name, target);
    if (loaded.title && !titleLoaded_) {
        navigationItem().setTitle(loaded.title);
        titleLoaded_ = true;
    }
    return loaded.specifiers;
}

void ListController::insertSpecifier(const SpecifierPtr& specifier, std::size_t index,
                                     bool animated) {
    if (!held_) held_ = std::make_shared<SpecifierArray>();
    held_->insertObject(specifier, index);
    Process::record(journal::Insert{className(), static_cast<std::int64_t>(index), animated,
                                    specifier ? specifier->identifier().value_or("") : "",
                                    specifier});
}

void ListController::removeSpecifierAtIndex(std::size_t index, bool animated) {
    if (!held_)
        throw RangeError("removeSpecifierAtIndex: index " + std::to_string(index) +
                         " beyond bounds for empty list");
    held_->removeObjectAtIndex(index);
    Process::record(journal::Remove{className(), static_cast<std::int64_t>(index), animated});
}

void ListController::reloadSpecifier(const SpecifierPtr& specifier, bool animated) {
    forgetHeldSwitch(specifier);
    const auto index = indexOfSpecifier(specifier);
    Process::record(journal::Reload{
        className(),
        index ? std::optional<std::int64_t>(static_cast<std::int64_t>(*index)) : std::nullopt,
        animated});
}

void ListController::reloadSpecifiers() {
    heldSwitches_.clear();
    held_.reset();
    Process::record(journal::Reload{className(), std::nullopt, false});
    specifiers();
}

bool ListController::userSetSwitch(const SpecifierPtr& row, bool on) {
    forgetHeldSwitch(row);
    heldSwitches_.push_back({row, on});
    if (row->setter().empty()) {
        setPreferenceValue(Value::boolean(on), row);
        return true;
    }
    const ObjectPtr target = row->target();
    if (!target) return false;
    Runtime::shared().perform(*target, row->setter(), {Value::boolean(on), Value(row)});
    return true;
}

std::optional<bool> ListController::heldSwitchPosition(const SpecifierPtr& row) const {
    for (const HeldSwitch& held : heldSwitches_)
        if (held.row.lock() == row) return held.on;
    return std::nullopt;
}

void ListController::forgetHeldSwitch(const SpecifierPtr& row) {
    std::erase_if(heldSwitches_, [&](const HeldSwitch& held) {
        return held.row.expired() || held.row.lock() == row;
    });
}

SpecifierPtr ListController::specifierAtIndex(std::size_t index) const {
    if (!held_)
        throw RangeError("specifierAtIndex: index " + std::to_string(index) +
                         " beyond bounds for empty list");
    return held_->objectAtIndex(index);
}

std::optional<std::size_t> ListController::indexOfSpecifier(const SpecifierPtr& specifier) const {
    if (!held_ || !specifier) return std::nullopt;
    return held_->indexOfObject(specifier);
}

namespace {

// Flat indexes of the rows that open sections; -1 stands for an implicit first section.
std::vector<std::ptrdiff_t> sectionStarts(const SpecifierArrayPtr& list) {
    std::vector<std::ptrdiff_t> starts;
    if (!list) return starts;
    const auto& items = list->items();
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (items[i]->cellType() == PSGroupCell)
            starts.push_back(static_cast<std::ptrdiff_t>(i));
        else if (i == 0)
            starts.push_back(-1);
    }
    return starts;
}

// Where one section opens, read only as far as that: a table asks once per cell, and a page
// of thousands of rows must not be read whole for each of them. nullopt past the last section.
std::optional<std::ptrdiff_t> sectionStart(const SpecifierArrayPtr& list, std::size_t group) {
    if (!list) return std::nullopt;
    const auto& items = list->items();
    std::size_t seen = 0;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const bool opens = items[i]->cellType() == PSGroupCell;
        if (!opens && i != 0) continue;
        if (seen++ == group) return opens ? static_cast<std::ptrdiff_t>(i) : -1;
    }
    return std::nullopt;
}

}  // namespace

std::size_t ListController::numberOfGroups() const {
    return sectionStarts(held_).size();
}

std::size_t ListController::rowsForGroup(std::size_t group) const {
    const auto starts = sectionStarts(held_);
    if (group >= starts.size()) return 0;
    const std::ptrdiff_t end =
        group + 1 < starts.size() ? starts[group + 1] : static_cast<std::ptrdiff_t>(held_->count());
    return static_cast<std::size_t>(end - starts[group] - 1);
}

std::size_t ListController::indexForRow(std::size_t row, std::size_t group) const {
    const auto start = sectionStart(held_, group);
    if (!start)
        throw RangeError("indexForRow:inGroup: group " + std::to_string(group) + " beyond " +
                         std::to_string(sectionStarts(held_).size()) + " groups");
    return static_cast<std::size_t>(*start + 1) + row;
}

SpecifierPtr ListController::groupSpecifierForSection(std::size_t group) const {
    const auto start = sectionStart(held_, group);
    if (!start || *start < 0) return nullptr;
    return held_->objectAtIndex(static_cast<std::size_t>(*start));
}

void ListController::setPreferenceValue(const Value& value, const SpecifierPtr& specifier) {
    if (!specifier) return;
    Process& process = Process::current();
    const std::string domain = specifier->propertyForKey(pskey::Defaults).str();
    const std::string key = specifier->propertyForKey(pskey::Key).str();
    if (!domain.empty() && !key.empty()) {
        const std::string path = preferencesDomainPath(domain);
        // The preferences daemon makes the folder of a domain it writes first.
        if (!process.root().fileExists(kPreferencesFolder))
            process.root().createDirectory(kPreferencesFolder, true);
        // From the read to the write: another writer's keys must not be lost in between.
        const auto lock = lockForWriting(path);
        Value stored = dictionaryWithContentsOfFile(path);
        if (!stored.isDictionary()) stored = Value::dictionary();
        stored.setValueForKey(key, value);
        // A write that reached the file is a preference write; a refused one left the domain
        // as it was, and says why.
        std::string why;
        const auto bytes = dataFromPropertyList(stored, PropertyListFormat::Binary, &why);
        const PortStatus written = bytes ? writeDataToFile(*bytes, path, true) : portFailure(why);
        if (written)
            process.journal().append(journal::PreferenceWrite{domain, key, value});
        else
            process.journal().append(journal::PreferenceWriteRefused{domain, key, written.error()});
    }
    const std::string notification = specifier->propertyForKey(pskey::PostNotification).str();
    if (!notification.empty()) process.darwin().postNotification(notification, true);
}

Value ListController::readPreferenceValue(const SpecifierPtr& specifier) {
    if (!specifier) return Value();
    const std::string domain = specifier->propertyForKey(pskey::Defaults).str();
    const std::string key = specifier->propertyForKey(pskey::Key).str();
    Value stored;
    if (!domain.empty() && !key.empty())
        stored = dictionaryWithContentsOfFile(preferencesDomainPath(domain)).objectForKey(key);
    return stored.isNil() ? specifier->propertyForKey(pskey::Default) : stored;
}

Value ListController::valueForSpecifier(const SpecifierPtr& specifier) {
    if (!specifier) return Value();
    if (!specifier->getter().empty()) {
        if (ObjectPtr target = specifier->target()) {
            return Runtime::shared().perform(*target, specifier->getter(), {Value(specifier)});
        }
        return Value();
    }
    return readPreferenceValue(specifier);
}

TableCellPtr ListController::tableViewCellForRowAtIndexPath(std::size_t row, std::size_t section) {
    SpecifierPtr spec = specifierAtIndex(indexForRow(row, section));
    const std::string cellClass = spec->propertyForKey(pskey::CellClass).str();
    TableCellPtr cell;
    if (!cellClass.empty())
        cell = std::dynamic_pointer_cast<TableCell>(Runtime::shared().instantiate(cellClass));
    if (!cell) cell = std::make_shared<TableCell>();
    const std::string reuse = cellClass.empty() ? stringFromCellType(spec->cellType()) : cellClass;
    if (!cell->initWithStyle(UITableViewCellStyleDefault, reuse, spec)) return nullptr;
    spec->setProperty(Value(cell), pskey::CellObject);
    if (auto control = cell->control()) control->setOn(valueForSpecifier(spec).boolValue());
    return cell;
}

Bundle ListController::bundle() const {
    return Bundle(Runtime::shared().bundlePathForClass(className()));
}

void ListController::setSpecifier(const SpecifierPtr& specifier) {
    parent_ = specifier;
    if (specifier) navigationItem().setTitle(specifier->name());
}

void ListController::registerFrameworkMethods(Runtime& runtime) {
    runtime.addMethod("PSListController", "setPreferenceValue:specifier:",
                      bindMethod<ListController>([](ListController& self, const Arguments& args) {
                          self.setPreferenceValue(argumentAt(args, 0), specifierArgument(args, 1));
                          return Value();
                      }));
    runtime.addMethod("PSListController", "readPreferenceValue:",
                      bindMethod<ListController>([](ListController& self, const Arguments& args) {
                          return self.readPreferenceValue(specifierArgument(args, 0));
                      }));
}

}  // namespace plat
