#include "app/commands/plutil_command.h"

#include <nlohmann/json.hpp>

#include "app/commands/plist_forms.h"
#include "app/exit_status.h"
#include "app/host_files.h"
#include "app/render/json_output.h"
#include "platform/foundation/plist.h"

namespace velto::app {

namespace {

constexpr const char* kUsage =
    "expected: plutil -lint FILE..., plutil -p FILE... or plutil -convert xml1|binary1|json "
    "FILE... [-o OUT]";

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

std::optional<plat::Bytes> converted(const plat::Value& value, const std::string& format,
                                     std::string& why) {
    if (format == "json") {
        const auto text = propertyListJson(value, why);
        if (!text) return std::nullopt;
        return plat::Bytes(text->begin(), text->end());
    }
    return plat::dataFromPropertyList(
        value,
        format == "binary1" ? plat::PropertyListFormat::Binary : plat::PropertyListFormat::XML,
        &why);
}

}  // namespace

int runPlutil(const std::vector<std::string>& arguments, bool json, std::ostream& out,
              std::ostream& err, std::istream& in) {
    const auto usage = [&] {
        err << "velto-settings: plutil: " << kUsage << "\n";
        return kExitUsage;
    };
    if (arguments.empty()) return usage();
    const bool lint = arguments[0] == "-lint";
    const bool print = arguments[0] == "-p";
    std::vector<std::string> files;
    std::string output;
    std::string format;
    std::size_t at = 1;
    if (!lint && !print) {
        if (arguments[0] != "-convert" || arguments.size() < 2) return usage();
        format = arguments[1];
        if (format != "xml1" && format != "binary1" && format != "json") return usage();
        at = 2;
    }
    for (; at < arguments.size(); ++at) {
        if (!format.empty() && arguments[at] == "-o") {
            // Without its value, the input itself would be converted in place.
            if (at + 1 == arguments.size() || arguments[at + 1].empty()) {
                err << "velto-settings: plutil: -o needs a file name (or - for standard output)\n";
                return kExitUsage;
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
        if (print) {
            out << (json ? jsonText(valueJson(value)) + "\n" : printedPropertyList(value));
            continue;
        }
        const auto bytes = converted(value, format, why);
        if (!bytes)
            report.failed(file, why);
        else if (const auto written = writeHostFile(output.empty() ? file : output, *bytes, out);
                 !written)
            report.failed(file, written.error());
        else if (output != "-")
            report.passed(file, "converted");
    }
    return report.allPassed ? kExitOk : kExitFailed;
}

}  // namespace velto::app
