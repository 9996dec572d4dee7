#include "tests/support/record_schema.h"

#include <fstream>
#include <map>
#include <regex>

namespace apptest {

namespace {

using nlohmann::json;

struct Docs {
    int schema = -1;
    std::map<std::string, std::map<std::string, std::string>> shapes;  // shape: field: type
};

// "### `shape`" opens a table; "| `field` | `type` | meaning |" rows fill it.
Docs readDocs() {
    Docs docs;
    std::ifstream in(std::string(VELTO_SOURCE_DIR) + "/docs/json.md");
    const std::regex heading(R"(^### `([^`]+)`)");
    const std::regex row(R"(^\| `([^`]+)` \| `([^`]+)` \|)");
    const std::regex version(R"(\*\*Schema version: (\d+)\.\*\*)");
    std::string shape;
    std::smatch match;
    for (std::string line; std::getline(in, line);) {
        if (std::regex_search(line, match, version)) docs.schema = std::stoi(match[1]);
        if (std::regex_search(line, match, heading))
            shape = match[1];
        else if (line.rfind("## ", 0) == 0)
            shape.clear();
        else if (!shape.empty() && std::regex_search(line, match, row))
            docs.shapes[shape][match[1]] = match[2];
    }
    return docs;
}

const Docs& docs() {
    static const Docs read = readDocs();
    return read;
}

class Checker {
  public:
    std::vector<std::string> problems;

    void shape(const json& value, const std::string& name, const std::string& where) {
        const auto found = docs().shapes.find(name);
        if (found == docs().shapes.end()) {
            problems.push_back(where + ": no table for `" + name + "` in docs/json.md");
            return;
        }
        if (!value.is_object()) {
            problems.push_back(where + ": not an object");
            return;
        }
        // Parsed lines keep no order of their own, so the set of fields is what is compared.
        for (const auto& [name, fieldType] : found->second) {
            if (value.contains(name))
                type(value[name], fieldType, where + "." + name);
            else
                problems.push_back(where + ": no field '" + name + "'");
        }
        for (const auto& item : value.items())
            if (!found->second.contains(item.key()))
                problems.push_back(where + ": field '" + item.key() + "' is not documented");
    }

    void type(const json& value, std::string type, const std::string& where) {
        if (type.size() > 1 && type.back() == '?') {
            if (value.is_null()) return;
            type.pop_back();
        }
        if (type.front() == '[' && type.back() == ']') {
            if (!value.is_array()) return fail(where, type);
            for (std::size_t i = 0; i < value.size(); ++i)
                this->type(value[i], type.substr(1, type.size() - 2),
                           where + "[" + std::to_string(i) + "]");
            return;
        }
        if (type == "string") return value.is_string() ? void() : fail(where, type);
        if (type == "integer") return value.is_number_integer() ? void() : fail(where, type);
        if (type == "number") return value.is_number() ? void() : fail(where, type);
        if (type == "boolean") return value.is_boolean() ? void() : fail(where, type);
        if (type == "value" || type == "summary") return;
        // The journal's entries are told apart by their kind.
        if (type == "journal") {
            if (!value.is_object() || !value.contains("kind") || !value["kind"].is_string())
                return fail(where, type);
            return shape(value, "journal:" + value["kind"].get<std::string>(), where);
        }
        shape(value, type, where);
    }

  private:
    void fail(const std::string& where, const std::string& type) {
        problems.push_back(where + ": not " + type);
    }
};

}  // namespace

int documentedSchema() {
    return docs().schema;
}

std::vector<std::string> recordProblems(const json& line) {
    Checker checker;
    if (!line.is_object() || !line.contains("type") || !line["type"].is_string()) {
        checker.problems.push_back("a line without a \"type\": " + line.dump());
        return checker.problems;
    }
    if (line.value("schema", -2) != documentedSchema())
        checker.problems.push_back("schema " + line.value("schema", json()).dump() +
                                   ", documented " + std::to_string(documentedSchema()));
    const std::string type = line["type"];
    checker.shape(line, type, type);
    return checker.problems;
}

}  // namespace apptest
