#include "platform/prefs/specifier_loader.h"

#include "platform/foundation/strings.h"
#include "platform/system/bundle.h"
#include "platform/system/log.h"
#include "platform/system/plist_file.h"
#include "platform/system/process.h"
#include "platform/ui/image.h"

namespace plat {

namespace {

void logLine(const std::string& message) {
    if (Process::tryCurrent()) NSLog(message);
}

std::string iconName(std::string name) {
    // Resources name icons with or without their extension; the image lookup adds the scale.
    if (name.size() > 4 && name.compare(name.size() - 4, 4, ".png") == 0)
        name.resize(name.size() - 4);
    return name;
}

SpecifierPtr makeSpecifier(const Value& item, const Bundle& bundle, const std::string& table,
                           const ObjectPtr& target) {
    auto localized = [&](const Value& text) -> std::optional<std::string> {
        if (!text.isString()) return std::nullopt;
        return bundle.localizedStringForKey(*text.asString(), "", table);
    };

    auto spec = std::make_shared<Specifier>();
    Value properties = spec->properties();
    for (const auto& [key, value] : *item.asDictionary())
        properties.setValueForKey(key, value.deepCopy());

    spec->setTarget(target);
    spec->setName(localized(item.objectForKey(pskey::Label)));
    if (const Value id = item.objectForKey(pskey::ID); id.isString()) spec->setIdentifier(id.str());
    spec->setCellType(cellTypeFromString(item.objectForKey(pskey::Cell).str()));
    spec->setSetter(item.objectForKey(pskey::Set).str());
    spec->setGetter(item.objectForKey(pskey::Get).str());
    spec->setAction(item.objectForKey(pskey::Action).str());
    spec->setDetailControllerClass(item.objectForKey(pskey::Detail).str());
    spec->setResourceName(table);

    if (auto footer = localized(item.objectForKey(pskey::FooterText)))
        properties.setValueForKey(pskey::FooterText, *footer);
    if (const Value icon = item.objectForKey(pskey::Icon); icon.isString()) {
        if (auto image = Image::imageNamed(iconName(icon.str()), bundle))
            properties.setValueForKey(pskey::IconImage, Value(image));
    }
    return spec;
}

}  // namespace

LoadedSpecifiers loadSpecifiersFromPlist(const Bundle& bundle, const std::string& name,
                                         const ObjectPtr& target) {
    LoadedSpecifiers loaded{std::make_shared<SpecifierArray>(), std::nullopt};
    const std::string path = stringByAppendingPathComponent(bundle.bundlePath(), name + ".plist");

    if (!Process::tryCurrent()) return loaded;
    const Value root = dictionaryWithContentsOfFile(path);
    const Value items = root.objectForKey("items");
    if (!items.isArray()) {
        logLine("Preferences: could not load the specifier list '" + name + "' from " + path);
        return loaded;
    }

    std::size_t skipped = 0;
    for (const Value& item : *items.asArray()) {
        if (!item.isDictionary()) {
            ++skipped;
            continue;
        }
        loaded.specifiers->addObject(makeSpecifier(item, bundle, name, target));
    }
    if (skipped)
        logLine("Preferences: skipped " + std::to_string(skipped) +
                " malformed item(s) of the specifier list '" + name + "'");

    if (const Value title = root.objectForKey("title"); title.isString())
        loaded.title = bundle.localizedStringForKey(title.str(), "", name);
    return loaded;
}

}  // namespace plat
