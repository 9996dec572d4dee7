#include "app/commands/plutil_command.h"

#include <nlohmann/json.hpp>

#include "app/commands/host_files.h"
#include "app/render/json_output.h"
#include "app/session/batch_run.h"
#include "platform/foundation/plist.h"

namespace velto::app {

namespace {

constexpr const char* kUsage =
    "expected: plutil -lint FILE... or plutil -convert xml1|binary1 FILE... [-o OUT]";

struct Report {
    std::ostream& out;
    bool json;
    bool allPassed = true;

    void passed(const std::string& file, const char* what) {
        if (json)
            out << jsonText(nlohmann::json({{"file", file}, {"ok", true}})) << "\n";
        else
            out << file << ": " << what << "\n";
    }
    void failed(const std::string& file, const std::string& why) {
        allPassed = false;
        if (json)
            out << jsonText(nlohmann::json({{"file", file}, {"ok", false}, {"error", why}}))
                << "\n";
        else
            out << file << ": " << why << "\n";
    }
};

// The property list in FILE, or nil with `why` set.
plat::Value load(const std::string& file, std::istream& in, std::string& why) {
    const auto bytes = readHostFile(file, in);
    if (!bytes) {
        why = bytes.error();
        return plat::Value();
    }
    const plat::Value value = plat::propertyListFromData(*bytes);
    if (value.isNil())
        why = bytes->empty() ? "the file is empty"
                             : "not a property list (neither well-formed XML nor binary)";
    return value;
}

}  // namespace

int runPlutil(const std::vector<std::string>& arguments, bool json, std::ostream& out,
              std::ostream& err, std::istream& in) {
    const auto usage = [&] {
        err << "velto-settings: plutil: " << kUsage << "\n";
        return kExitTrouble;
    };
    if (arguments.empty()) return usage();
    const bool lint = arguments[0] == "-lint";
    std::vector<std::string> files;
    std::string output;
    plat::PropertyListFormat format = plat::PropertyListFormat::XML;
    std::size_t at = 1;
    if (!lint) {
        if (arguments[0] != "-convert" || arguments.size() < 2) return usage();
        if (arguments[1] == "binary1")
            format = plat::PropertyListFormat::Binary;
        else if (arguments[1] != "xml1")
            return usage();
        at = 2;
    }
    for (; at < arguments.size(); ++at) {
        if (!lint && arguments[at] == "-o") {
            // Without its value, the input itself would be converted in place.
            if (at + 1 == arguments.size() || arguments[at + 1].empty()) {
                err << "velto-settings: plutil: -o needs a file name (or - for standard output)\n";
                return kExitTrouble;
            }
            output = arguments[++at];
        } else
            files.push_back(arguments[at]);
    }
    if (files.empty() || (!output.empty() && files.size() != 1)) return usage();

    // Converted output on standard output leaves no room there for the report.
    Report report{output == "-" ? err : out, json};
    for (const std::string& file : files) {
        std::string why;
        const plat::Value value = load(file, in, why);
        if (value.isNil()) {
            report.failed(file, why);
            continue;
        }
        if (lint) {
            report.passed(file, "OK");
            continue;
        }
        const auto bytes = plat::dataFromPropertyList(value, format, &why);
        if (!bytes)
            report.failed(file, why);
        else if (const auto written = writeHostFile(output.empty() ? file : output, *bytes, out);
                 !written)
            report.failed(file, written.error());
        else if (output != "-")
            report.passed(file, "converted");
    }
    return report.allPassed ? kExitOk : kExitTrouble;
}

}  // namespace velto::app
