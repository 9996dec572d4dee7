// What a new user meets first: the version, the word for a mistyped
// subcommand or step, exit statuses with one meaning each, a folder that is not a device, files
// of steps written anywhere, colour on request, and the demo device put back as the README has
// it.

#include <gtest/gtest.h>

#include <fstream>
#include <regex>

#include "app/exit_status.h"
#include "tests/support/program_run.h"

namespace apptest {
namespace {

std::string sourceFile(const std::string& name) {
    return fileText(std::filesystem::path(VELTO_SOURCE_DIR) / name);
}

TEST(ConventionsCli, VersionIsTheProjectsAndMistypedWordsGetTheClosestOne) {
    const std::string text = sourceFile("CMakeLists.txt");
    std::smatch version;
    ASSERT_TRUE(std::regex_search(text, version, std::regex("VERSION ([0-9]+\\.[0-9]+\\.[0-9]+)")));
    const auto shown = runProgram({"--version"});
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.out, "velto-settings " + version[1].str() + "\n");

    for (const auto& [typed, says] : std::vector<std::pair<std::string, std::string>>{
             {"frobnicate", "unknown subcommand 'frobnicate' (subcommands: run, device"},
             {"dfaults", "unknown subcommand 'dfaults'; did you mean 'defaults'?"},
             {"opne Phone", "unknown step 'opne'; did you mean 'open'?"},
             {"--bogus", "--bogus"}}) {
        const auto result = runProgram({typed});
        EXPECT_EQ(result.status, 2) << typed;
        EXPECT_NE(result.err.find(says), std::string::npos) << result.err;
    }
}

TEST(ConventionsCli, HelpAndTheReadmeListEveryExitStatus) {
    const auto help = runProgram({"--help"});
    EXPECT_EQ(help.status, 0);
    const std::string readme = sourceFile("README.md");
    for (const auto& [status, meaning] : velto::app::kExitStatuses) {
        EXPECT_NE(help.out.find("  " + std::to_string(status) + "  " + meaning), std::string::npos)
            << help.out;
        EXPECT_NE(readme.find("| " + std::to_string(status) + " | " + meaning + " |"),
                  std::string::npos)
            << meaning;
    }
}

// --force writes over what a folder holds: offered for a device root only, never for a folder
// of someone's own files.
TEST(ConventionsCli, AFolderThatIsNotADeviceIsRefusedWithTheCommandThatMakesOne) {
    ScratchFolder scratch;
    std::filesystem::create_directories(scratch.path() / "empty");
    std::filesystem::create_directories(scratch.path() / "photos");
    std::ofstream(scratch.path() / "photos/a.jpg") << "x";
    const auto bare = scratch.path() / "bare/System/Library/CoreServices/SystemVersion.plist";
    std::filesystem::create_directories(bare.parent_path());
    std::ofstream(bare) << "<plist/>";
    for (const auto& [folder, advice] : std::vector<std::pair<std::string, std::string>>{
             {scratch / "missing", "device init " + scratch / "missing"},
             {scratch / "empty", "device init " + scratch / "empty"},
             {scratch / "photos", "make one in a new or empty folder"},
             {scratch / "bare", "device init --force " + scratch / "bare"}}) {
        for (const std::vector<std::string>& rest :
             {std::vector<std::string>{"show"}, {"defaults", "domains"}}) {
            const auto result = runProgram(joined({"--device", folder}, rest));
            EXPECT_EQ(result.status, 5) << folder;
            EXPECT_NE(result.err.find(advice), std::string::npos) << result.err;
            if (folder != scratch / "bare") {
                EXPECT_EQ(result.err.find("--force"), std::string::npos) << result.err;
            }
        }
    }
    const auto photos = runProgram({"device", "init", scratch / "photos"});
    EXPECT_EQ(photos.status, 1);
    EXPECT_EQ(photos.err.find("--force"), std::string::npos) << photos.err;
}

// A script names its files beside itself, whatever folder it is run from; it may come from an
// editor that begins it with a byte order mark; an error in it says its line.
TEST(ConventionsCli, AStepsFileFindsItsFilesBesideItselfAndErrorsSayTheirLine) {
    ScratchDevice scratch({"--demo"});
    const std::string& device = scratch.device;
    const auto folder = scratch.path() / "scripts";
    std::filesystem::create_directories(folder);
    std::filesystem::copy_file(
        device + "/System/Library/PreferenceBundles/VeltoSettings.bundle/recent@3x.png",
        folder / "picture.png");
    const std::string avatar = "/var/mobile/Library/Mail/Velto/default_avatar_mail@3x.png";
    std::ofstream(folder / "avatar.steps")
        << "\xEF\xBB\xBFscreenshot shot.png\nopen Mail\ntoggle MailEnabled on\n"
        << "tap ChooseAvatar\npick picture.png\nexpect file " << avatar << " exists\n";
    auto result = runProgram({"--device", device, "--json", "run", (folder / "avatar.steps")});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(std::filesystem::exists(folder / "shot.png"));

    std::ofstream(folder / "gone.steps") << "open Mail\n\ntap ChooseAvatar\npick gone.png\n";
    result = runProgram({"--device", device, "--json", "run", (folder / "gone.steps")});
    EXPECT_EQ(result.status, 4);
    ASSERT_EQ(result.errLines().size(), 1u) << result.err;
    EXPECT_EQ(result.errLines()[0]["line"], 4);
    EXPECT_NE(result.errLines()[0]["error"].get<std::string>().find((folder / "gone.png").string()),
              std::string::npos)
        << result.err;

    result = runProgram({"--device", device, "run", folder.string()});
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err.find("is a folder"), std::string::npos) << result.err;
}

TEST(ConventionsCli, PicturesAreWrittenOnlyAsPngAndOnlyIntoFoldersThatExist) {
    ScratchDevice scratch;
    const std::string& device = scratch.device;
    auto result = runProgram({"--device", device, "show", "screenshot " + scratch / "page.jpg"});
    EXPECT_EQ(result.status, 2);
    EXPECT_TRUE(result.out.empty()) << "refused before anything ran";
    EXPECT_NE(result.err.find(".png"), std::string::npos) << result.err;

    result = runProgram({"--device", device, "--screenshots", scratch / "no/such/pages", "show"});
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err.find("there is no folder " + scratch / "no/such"), std::string::npos)
        << result.err;
    EXPECT_FALSE(std::filesystem::exists(scratch.path() / "no"));
}

TEST(ConventionsCli, ColourIsAskedForOrRefusedOutright) {
    ScratchDevice scratch;
    const std::string& device = scratch.device;
    const auto always = runProgram({"--device", device, "--color=always", "show", "open Nowhere"});
    EXPECT_NE(always.out.find("\033["), std::string::npos);
    EXPECT_NE(always.err.find("\033["), std::string::npos);
    const auto never = runProgram({"--device", device, "--color", "never", "show"});
    EXPECT_EQ(never.out.find('\033'), std::string::npos);
    EXPECT_EQ(runProgram({"--color=sometimes", "show"}).status, 2);
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
