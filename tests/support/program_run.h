#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace apptest {

using ::testing::HasSubstr;

// What one run of velto-settings left behind.
struct ProgramResult {
    std::vector<std::string> arguments;
    int status = -1;  // exit status; -1 when it did not exit normally
    std::string out;
    std::string err;

    // The output's JSON Lines, parsed (a line that is not JSON fails the test).
    std::vector<nlohmann::json> outLines() const;
    std::vector<nlohmann::json> errLines() const;
};

// The program under test: $VELTO_BINARY_DIR/app/velto-settings.
std::filesystem::path programPath();

// Runs the program with the arguments and `input` as its standard input (an empty file when
// there is none). `environment` adds to or replaces variables of ours; XDG_STATE_HOME always points
// into a scratch folder so no run touches the user's demo device.
ProgramResult runProgram(const std::vector<std::string>& arguments, const std::string& input = "",
                         std::map<std::string, std::string> environment = {});

// The arguments, then more.
std::vector<std::string> joined(std::vector<std::string> arguments,
                                const std::vector<std::string>& more);

// Whether the run ended with `status` and, given `says`, wrote it on standard error; a failure
// shows the arguments and both outputs.
::testing::AssertionResult ended(const ProgramResult& result, int status,
                                 const std::string& says = "");

// A scratch folder removed with the object.
class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    const std::filesystem::path& path() const { return path_; }
    std::string operator/(const std::string& name) const { return (path_ / name).string(); }

  private:
    std::filesystem::path path_;
};

// `velto-settings device init FOLDER options...`, failing the test when it fails.
void initDevice(const std::string& folder, const std::vector<std::string>& options = {});

// A scratch folder holding a device made by `device init` with the options.
struct ScratchDevice : ScratchFolder {
    explicit ScratchDevice(const std::vector<std::string>& options = {}) {
        initDevice(device, options);
    }
    // `velto-settings --device DEVICE arguments...`.
    ProgramResult run(const std::vector<std::string>& arguments,
                      const std::string& input = "") const {
        return runProgram(joined({"--device", device}, arguments), input);
    }
    const std::string device = *this / "device";
};

// The entries of a page record's journal of one kind, in order.
std::vector<nlohmann::json> journalOf(const nlohmann::json& page, const std::string& kind);

// A host file's bytes as a string; empty when it cannot be read.
std::string fileText(const std::filesystem::path& path);
// Writes a host file whole, making its folder first.
void putFile(const std::filesystem::path& path, const std::string& bytes);

// The row of a page record with this identifier or label; null when there is none.
const nlohmann::json* row(const nlohmann::json& page, const std::string& idOrLabel);
// That row's value; null when there is no such row.
nlohmann::json rowValue(const nlohmann::json& page, const std::string& idOrLabel);

}  // namespace apptest
