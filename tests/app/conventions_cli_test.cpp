// What a new user meets first: the version, each subcommand's help, the word for a mistyped
// subcommand, a folder that is not a device, and the demo device put back as the README has it.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>

#include "tests/support/program_run.h"

namespace apptest {
namespace {

TEST(ConventionsCli, VersionIsTheProjectsAndUnknownSubcommandsAreCalledUnknown) {
    std::ifstream lists(std::filesystem::path(VELTO_SOURCE_DIR) / "CMakeLists.txt");
    const std::string text(std::istreambuf_iterator<char>(lists), {});
    std::smatch version;
    ASSERT_TRUE(std::regex_search(text, version, std::regex("VERSION ([0-9]+\\.[0-9]+\\.[0-9]+)")));
    const auto shown = runProgram({"--version"});
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.out, "velto-settings " + version[1].str() + "\n");

    const auto unknown = runProgram({"frobnicate"});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_NE(unknown.err.find("unknown subcommand 'frobnicate'"), std::string::npos)
        << unknown.err;
}

TEST(ConventionsCli, EachSubcommandsHelpDescribesThatSubcommand) {
    for (const auto& [command, says] :
         std::vector<std::pair<std::vector<std::string>, std::string>>{
             {{"defaults", "write", "--help"}, "-array-add"},
             {{"defaults", "export", "--help"}, "XML property list"},
             {{"plutil", "--help"}, "-convert xml1|binary1"},
             {{"demo", "reset", "--help"}, "first state"},
             {{"device", "init", "--help"}, "--family"}}) {
        const auto result = runProgram(command);
        EXPECT_EQ(result.status, 0) << command[0];
        EXPECT_NE(result.out.find(says), std::string::npos) << result.out;
        EXPECT_EQ(result.out.find("Steps act on"), std::string::npos) << result.out;
    }
}

TEST(ConventionsCli, AFolderThatIsNotADeviceIsRefusedWithTheCommandThatMakesOne) {
    ScratchFolder scratch;
    std::filesystem::create_directories(scratch.path() / "empty");
    std::filesystem::create_directories(scratch.path() / "photos");
    std::ofstream(scratch.path() / "photos/a.jpg") << "x";
    for (const auto& [folder, advice] : std::vector<std::pair<std::string, std::string>>{
             {scratch / "missing", "device init " + scratch / "missing"},
             {scratch / "empty", "device init " + scratch / "empty"},
             {scratch / "photos", "device init --force " + scratch / "photos"}}) {
        for (const std::vector<std::string>& rest :
             {std::vector<std::string>{"show"}, {"defaults", "domains"}}) {
            std::vector<std::string> arguments{"--device", folder};
            arguments.insert(arguments.end(), rest.begin(), rest.end());
            const auto result = runProgram(arguments);
            EXPECT_EQ(result.status, 2) << folder;
            EXPECT_NE(result.err.find(advice), std::string::npos) << result.err;
            EXPECT_EQ(result.err.find("bounds"), std::string::npos) << result.err;
        }
    }
}

TEST(ConventionsCli, DemoResetPutsTheDemoDeviceBackToItsFirstState) {
    ScratchFolder state;
    const std::map<std::string, std::string> environment{{"XDG_STATE_HOME", state.path().string()}};
    const auto enabled = [&] {
        const auto read = runProgram(
            {"--json", "defaults", "read", "com.norvale.velto", "VeltoEnabled"}, "", environment);
        return read.outLines().at(0);
    };
    ASSERT_EQ(runProgram({"toggle Enabled"}, "", environment).status, 0);
    ASSERT_EQ(
        runProgram({"defaults", "write", "com.example.left", "K", "v"}, "", environment).status, 0);
    ASSERT_EQ(enabled(), false);
    const auto reset = runProgram({"demo", "reset"}, "", environment);
    EXPECT_EQ(reset.status, 0) << reset.err;
    EXPECT_EQ(enabled(), true);
    EXPECT_EQ(runProgram({"defaults", "read", "com.example.left"}, "", environment).status, 1);
}

}  // namespace
}  // namespace apptest
