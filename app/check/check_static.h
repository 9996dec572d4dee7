#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>

#include "app/check/check_findings.h"

namespace velto::app {

// What exercising learned that the static checks need: which page classes load each
// specifier list, and which images the code asked for by name.
struct ExerciseFacts {
    std::map<std::string, std::set<std::string>> listClasses;
    std::set<std::string> imagesAsked;  // device paths of the .png files asked for
};

// The checks that no state reaches: selectors the lists name and the classes that must answer
// them, link rows' page classes, cell classes, icons at every scale, images the code asked
// for, strings tables, identifiers unique within a list. The bundle's classes must be
// registered (a session registers them).
void checkResources(const std::filesystem::path& resources, const ExerciseFacts& facts,
                    FindingSet& findings);

}  // namespace velto::app
