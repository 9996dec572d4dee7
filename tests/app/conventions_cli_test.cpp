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
        EXPECT_TRUE(ended(runProgram({typed}), 2, says));
    }
}

TEST(ConventionsCli, HelpAndTheReadmeListEveryExitStatus) {
    const auto help = runProgram({"--help"});
    EXPECT_EQ(help.status, 0);
    const std::string readme = sourceFile("README.md");
    for (const auto& [status, meaning] : velto::app::kExitStatuses) {
        EXPECT_THAT(help.out, HasSubstr("  " + std::to_string(status) + "  " + meaning));
        EXPECT_THAT(readme, HasSubstr("| " + std::to_string(status) + " | " + meaning + " |"));
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
            EXPECT_TRUE(ended(result, 5, advice));
            EXPECT_EQ(result.err.find("--force") != std::string::npos, folder == scratch / "bare")
                << result.err;
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
    const auto folder = scratch.path() / "scripts";
    std::filesystem::create_directories(folder);
    std::filesystem::copy_file(
        scratch.device + "/System/Library/PreferenceBundles/VeltoSettings.bundle/recent@3x.png",
        folder / "picture.png");
    const std::string avatar = "/var/mobile/Library/Mail/Velto/default_avatar_mail@3x.png";
    std::ofstream(folder / "avatar.steps")
        << "\xEF\xBB\xBFscreenshot shot.png\nopen Mail\ntoggle MailEnabled on\n"
        << "tap ChooseAvatar\npick picture.png\nexpect file " << avatar << " exists\n";
    EXPECT_TRUE(ended(scratch.run({"--json", "run", folder / "avatar.steps"}), 0));
    EXPECT_TRUE(std::filesystem::exists(folder / "shot.png"));

    std::ofstream(folder / "gone.steps") << "open Mail\n\ntap ChooseAvatar\npick gone.png\n";
    const auto result = scratch.run({"--json", "run", folder / "gone.steps"});
    EXPECT_TRUE(ended(result, 4, (folder / "gone.png").string()));
    ASSERT_EQ(result.errLines().size(), 1u);
    EXPECT_EQ(result.errLines()[0]["line"], 4);
    EXPECT_TRUE(ended(scratch.run({"run", folder.string()}), 2, "is a folder"));
}

TEST(ConventionsCli, PicturesAreWrittenOnlyAsPngIntoFoldersThatExistAndColourOnlyOnRequest) {
    ScratchDevice scratch;
    const auto result = scratch.run({"show", "screenshot " + scratch / "page.jpg"});
    EXPECT_TRUE(ended(result, 2, ".png"));
    EXPECT_TRUE(result.out.empty()) << "refused before anything ran";
    EXPECT_TRUE(ended(scratch.run({"--screenshots", scratch / "no/such/pages", "show"}), 2,
                      "there is no folder " + scratch / "no/such"));
    EXPECT_FALSE(std::filesystem::exists(scratch.path() / "no"));

    const auto always = scratch.run({"--color=always", "show", "open Nowhere"});
    EXPECT_THAT(always.out, HasSubstr("\033["));
    EXPECT_THAT(always.err, HasSubstr("\033["));
    EXPECT_EQ(scratch.run({"--color", "never", "show"}).out.find('\033'), std::string::npos);
    EXPECT_EQ(runProgram({"--color=sometimes", "show"}).status, 2);
}

TEST(ConventionsCli, DemoResetPutsTheDemoDeviceBackToItsFirstState) {
    ScratchFolder state;
    const auto demo = [&](const std::vector<std::string>& arguments) {
        return runProgram(arguments, "", {{"XDG_STATE_HOME", state.path().string()}});
    };
    const auto enabled = [&] {
        return demo({"--json", "defaults", "read", "com.norvale.velto", "VeltoEnabled"})
            .outLines()
            .at(0);
    };
    ASSERT_EQ(demo({"toggle Enabled"}).status, 0);
    ASSERT_EQ(demo({"defaults", "write", "com.example.left", "K", "v"}).status, 0);
    ASSERT_EQ(enabled(), false);
    EXPECT_TRUE(ended(demo({"demo", "reset"}), 0));
    EXPECT_EQ(enabled(), true);
    EXPECT_EQ(demo({"defaults", "read", "com.example.left"}).status, 1);
}

}  // namespace
}  // namespace apptest
