#include "app/check/check_static.h"

#include <fstream>
#include <iterator>

#include "app/check/plist_position.h"
#include "platform/foundation/plist.h"
#include "platform/prefs/runtime.h"
#include "platform/prefs/specifier.h"
#include "platform/ui/image.h"
#include "screen/table_layout.h"

namespace velto::app {

namespace {

namespace fs = std::filesystem;

constexpr int kScales[] = {1, 2, 3};

std::optional<plat::Bytes> readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    return plat::Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

plat::Value readPlist(const fs::path& path) {
    auto bytes = readFile(path);
    return bytes ? plat::propertyListFromData(*bytes) : plat::Value();
}

std::string imageFile(const std::string& name, int scale) {
    return scale == 1 ? name + ".png" : name + "@" + std::to_string(scale) + "x.png";
}

// The stock avatar the extension gives a contact without a picture of its own, at the size
// of a contact picture.
constexpr const char* kStockAvatar = "recent";
constexpr double kContactPicturePoints = 60;

// The scale a picture's name gives it: "@2x", "@3x", else 1.
int nameScale(const std::string& stem) {
    for (int scale : {2, 3})
        if (stem.size() > 3 && stem.ends_with("@" + std::to_string(scale) + "x")) return scale;
    return 1;
}

std::string baseName(std::string stem) {
    if (nameScale(stem) != 1) stem.resize(stem.size() - 3);
    return stem;
}

struct ListChecker {
    const fs::path& resources;
    const std::string list;
    const std::set<std::string>& classes;  // the pages that load the list
    FindingSet& findings;
    std::set<std::string>& icons;  // the names of the icons the list's rows show

    void error(const std::string& kind, const std::string& row, const std::string& reason) {
        findings.add(Finding::make(Finding::Severity::Error, kind, list, row, "", "", reason));
    }
    void warning(const std::string& kind, const std::string& row, const std::string& reason) {
        findings.add(Finding::make(Finding::Severity::Warning, kind, list, row, "", "", reason));
    }

    void selector(const std::string& row, const std::string& selector, const char* what) {
        for (const std::string& page : classes)
            if (!plat::Runtime::shared().respondsToSelector(page, selector))
                error(std::string("missing-") + what, row,
                      "the " + std::string(what) + " '" + selector + "' is not answered by " +
                          page + ", which loads this list");
    }

    void icon(const std::string& row, std::string name) {
        if (name.size() > 4 && name.compare(name.size() - 4, 4, ".png") == 0)
            name.resize(name.size() - 4);
        icons.insert(name);
        std::string missing;
        int found = 0;
        for (int scale : kScales) {
            if (fs::is_regular_file(resources / imageFile(name, scale)))
                ++found;
            else
                missing += (missing.empty() ? "" : ", ") + imageFile(name, scale);
        }
        if (found == 0)
            error("missing-icon", row, "the icon '" + name + "' exists at no scale");
        else if (!missing.empty())
            warning("missing-icon-scale", row,
                    "the icon '" + name + "' is missing " + missing +
                        "; devices of that scale show another scale's picture");
    }

    void item(const plat::Value& item, std::size_t index, std::set<std::string>& identifiers) {
        const std::string label = item.objectForKey(plat::pskey::Label).str();
        const std::string id = item.objectForKey(plat::pskey::ID).str();
        const std::string row = !id.empty()      ? id
                                : !label.empty() ? label
                                                 : "#" + std::to_string(index);
        if (!id.empty() && !identifiers.insert(id).second)
            error("duplicate-identifier", row,
                  "two rows of the list have the identifier '" + id + "'");

        const std::string cell = item.objectForKey(plat::pskey::Cell).str();
        const std::string setter = item.objectForKey(plat::pskey::Set).str();
        const std::string action = item.objectForKey(plat::pskey::Action).str();
        const std::string detail = item.objectForKey(plat::pskey::Detail).str();
        const std::string cellClass = item.objectForKey(plat::pskey::CellClass).str();
        const plat::Value icon = item.objectForKey(plat::pskey::Icon);

        if (cell == "PSSwitchCell") {
            const bool key = item.objectForKey(plat::pskey::Key).isString();
            const bool domain = item.objectForKey(plat::pskey::Defaults).isString();
            if (!key || !domain)
                error("switch-without-storage", row,
                      "the switch names no " + std::string(!key ? "key" : "defaults domain") +
                          ", so its value is stored nowhere the extension reads");
        }
        if (!setter.empty()) selector(row, setter, "setter");
        if (!action.empty()) selector(row, action, "action");
        if (!detail.empty()) {
            auto& runtime = plat::Runtime::shared();
            if (!runtime.classExists(detail))
                error("unknown-page-class", row,
                      "the link opens " + detail + ", which no loaded code defines");
            else if (!runtime.isSubclass(detail, "PSListController"))
                error("unknown-page-class", row,
                      "the link opens " + detail + ", which is not a settings page");
        }
        if (!cellClass.empty() && !plat::Runtime::shared().classExists(cellClass))
            error("unknown-cell-class", row, "the cell class " + cellClass + " does not exist");
        if (icon.isString()) this->icon(row, icon.str());
        if (item.objectForKey(plat::pskey::FooterText).isString() && cell != "PSGroupCell")
            warning("footer-on-row", row, "a footer on a row that is not a group is never shown");
    }

    void check() {
        const auto bytes = readFile(resources / (list + ".plist"));
        const plat::Value root = bytes ? plat::propertyListFromData(*bytes) : plat::Value();
        if (!root.isDictionary()) {
            error("unreadable-list", "",
                  !bytes         ? std::string("the specifier list cannot be read")
                  : root.isNil() ? "the specifier list does not parse: " + plistBreak(*bytes)
                                 : std::string("the specifier list is not a dictionary"));
            return;
        }
        const plat::Value items = root.objectForKey("items");
        if (!items.isArray()) {
            error("unreadable-list", "", "the specifier list has no \"items\" array");
            return;
        }
        std::set<std::string> identifiers;
        std::size_t index = 0;
        for (const plat::Value& entry : *items.asArray()) {
            if (!entry.isDictionary())
                error("malformed-row", "#" + std::to_string(index),
                      "a row that is not a dictionary is skipped");
            else
                item(entry, index, identifiers);
            ++index;
        }
    }
};

void checkPictureSizes(const std::map<std::string, std::pair<int, int>>& pictures,
                       const std::set<std::string>& icons, FindingSet& findings) {
    for (const auto& [file, size] : pictures) {
        const std::string stem = fs::path(file).stem().string();
        const std::string base = baseName(stem);
        const double points = icons.count(base)      ? screen::kIconSize
                              : base == kStockAvatar ? kContactPicturePoints
                                                     : 0;
        if (points == 0) continue;
        const int scale = nameScale(stem);
        const int expected = static_cast<int>(points * scale);
        if (size.first == expected && size.second == expected) continue;
        const std::string found = std::to_string(size.first) + "x" + std::to_string(size.second);
        const std::string wanted = std::to_string(expected) + "x" + std::to_string(expected);
        findings.add(Finding::make(
            Finding::Severity::Warning, "image-size", file, "", "", "",
            "the picture is " + found + " pixels where " + wanted + " are expected (" +
                (points == screen::kIconSize ? "a row icon" : "a contact picture") + " of " +
                std::to_string(static_cast<int>(points)) + " pt at " + std::to_string(scale) +
                "x); the device scales it, blurred or squeezed"));
    }
}

}  // namespace

void checkResources(const fs::path& resources, const ExerciseFacts& facts, FindingSet& findings) {
    static const std::set<std::string> none;
    std::set<std::string> icons;
    std::map<std::string, std::pair<int, int>> pictures;  // top-level file -> pixel size
    std::error_code ec;
    for (auto it = fs::recursive_directory_iterator(resources, ec); !ec && it != fs::end(it);
         it.increment(ec)) {
        if (!it->is_regular_file()) continue;
        const fs::path& path = it->path();
        const std::string stem = path.stem().string();
        if (path.extension() == ".png") {
            // A picture that does not decode is passed over for another scale's without a
            // word: the page shows the wrong picture, or none.
            auto bytes = readFile(path);
            auto image = bytes ? plat::Image::imageWithData(*bytes, 1) : nullptr;
            if (image && path.parent_path() == resources)
                pictures[path.filename().string()] = {image->pixelWidth(), image->pixelHeight()};
            if (!image)
                findings.add(Finding::make(Finding::Severity::Error, "bad-image",
                                           fs::relative(path, resources).generic_string(), "", "",
                                           "", "the picture does not decode as a PNG"));
        } else if (path.extension() == ".strings") {
            const plat::Value table = readPlist(path);
            if (!table.isDictionary())
                findings.add(Finding::make(Finding::Severity::Error, "bad-strings",
                                           fs::relative(path, resources).generic_string(), "", "",
                                           "", "the strings table does not parse as a dictionary"));
        } else if (path.extension() == ".plist" && path.parent_path() == resources &&
                   stem != "Info") {
            auto found = facts.listClasses.find(stem);
            ListChecker{resources, stem, found == facts.listClasses.end() ? none : found->second,
                        findings, icons}
                .check();
        }
    }
    checkPictureSizes(pictures, icons, findings);

    // Images the code asked for by name: one of the names tried must exist.
    std::map<std::string, bool> images;  // base name -> some variant exists
    for (const std::string& asked : facts.imagesAsked) {
        std::string name = fs::path(asked).filename().string();
        name.resize(name.size() - 4);
        if (auto at = name.rfind('@'); at != std::string::npos) name.resize(at);
        bool& exists = images[name];
        exists = exists || fs::is_regular_file(resources / fs::path(asked).filename());
    }
    for (const auto& [name, exists] : images)
        if (!exists)
            findings.add(Finding::make(
                Finding::Severity::Error, "missing-image", name, "", "", "",
                "the code loads the image '" + name + "', which the bundle does not have"));
}

}  // namespace velto::app
