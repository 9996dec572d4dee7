#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace apptest {

// What is wrong with one line of velto-settings' JSON record, measured against the field
// tables of docs/json.md: a missing or unknown field, a field of the wrong type, a line of no
// documented type or of another schema version. Empty when the line is
// as documented.
std::vector<std::string> recordProblems(const nlohmann::json& line);

// The schema version docs/json.md states.
int documentedSchema();

}  // namespace apptest
