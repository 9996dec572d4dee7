// Scripts that assert (`expect`) and rows named the way people type them, through the program
// as a script drives it, on the demo device the help's examples are written for.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/support/program_run.h"

namespace apptest {
namespace {

const std::string kAvatar = "/var/mobile/Library/Mail/Velto/default_avatar_mail@3x.png";

class ExpectCli : public ::testing::Test {
  protected:
    ProgramResult run(std::vector<std::string> arguments, bool json = true) {
        arguments.insert(arguments.begin(), {"--device", device_});
        if (json) arguments.insert(arguments.begin(), "--json");
        return runProgram(arguments);
    }
    std::string scriptFile(const std::string& steps) {
        const std::string file = scratch_ / "test.steps";
        std::ofstream(file) << steps;
        return file;
    }

    ScratchDevice scratch_{{"--demo"}};
    const std::string& device_ = scratch_.device;
};

TEST_F(ExpectCli, AScriptTestsTheResourcesAndTheFirstUnmetExpectationExitsThreeNamingIt) {
    const std::string picture =
        device_ + "/System/Library/PreferenceBundles/VeltoSettings.bundle/recent@3x.png";
    std::string script = R"(# Mail's default avatar, picked
expect Enabled on
open Mail
expect file AVATAR missing
tap Choose Default Avatar...
expect presented picker
pick PICTURE
expect presented nothing
expect log Posting notification
expect file AVATAR exists
back
toggle Enabled off
expect Enabled off
expect Phone hidden
expect About shown
)";
    for (const auto& [name, path] : {std::pair{"AVATAR", kAvatar}, {"PICTURE", picture}})
        for (std::size_t at; (at = script.find(name)) != std::string::npos;)
            script.replace(at, std::string(name).size(), path);
    const auto passed = run({"run", scriptFile(script)});
    EXPECT_EQ(passed.status, 0) << passed.err;
    EXPECT_EQ(passed.err, "");

    // Each kind of expectation, unmet where the script left the device; the step after it
    // never runs.
    const std::vector<std::pair<std::string, std::string>> unmet = {
        {"expect Enabled on", "'Enabled' is off"},
        {"expect About hidden", "'About' is shown (#"},
        {"expect presented sheet", "nothing is presented"},
        {"expect file " + kAvatar + " missing", kAvatar + " exists"},
        {"expect log Posting notification", "no line was logged since the last step"},
    };
    for (const auto& [step, says] : unmet) {
        const auto json = run({"run", scriptFile("show\n" + step + "\nshow\n")});
        EXPECT_TRUE(ended(json, 3, says));
        ASSERT_EQ(json.errLines().size(), 1u) << json.err;
        const auto error = json.errLines()[0];
        EXPECT_EQ(error["step"], step);
        EXPECT_EQ(error["line"], 2);
        EXPECT_TRUE(error["error"].get<std::string>().starts_with("expectation not met: "));
        EXPECT_EQ(json.outLines().size(), 1u);
    }
    // The human form says the same on one line.
    const auto human = run({"run", scriptFile(unmet[0].first + "\n")}, false);
    EXPECT_EQ(human.status, 3);
    EXPECT_TRUE(
        human.err.starts_with("error: " + unmet[0].first + ": line 1: expectation not met: "))
        << human.err;
    // A malformed expectation is a broken script, found before anything runs.
    EXPECT_TRUE(ended(run({"expect Enabled maybe"}), 2, "expect needs ROW on|off|shown|hidden"));
}

TEST_F(ExpectCli, RowsAreFoundTheWayPeopleTypeThemAndAMissSuggestsTheClosest) {
    for (const auto& [steps, status, error] :
         std::vector<std::tuple<std::vector<std::string>, int, std::string>>{
             // Ignoring case when only one row matches.
             {{"open phone", "expect pictures in recents shown"}, 0, ""},
             // An identifier first: the switch "Pictures in Favorites" is "Favorites", not the
             // group.
             {{"open Phone", "toggle Favorites off", "expect Pictures in Favorites off"}, 0, ""},
             // "..." for "…".
             {{"open Mail", "tap Choose Default Avatar...", "expect presented picker"}, 0, ""},
             {{"open Phone", "expect favorites shown"},
              3,
              "'favorites' could be 'FavoritesGroup' or 'Pictures in Favorites': write it as "
              "shown"},
             {{"open Applications"}, 4, "row 'Applications' is a group heading, not a link"},
             {{"open Phnoe"}, 4, "no row 'Phnoe' on this page; did you mean 'Phone'?"},
             {{"open Notifications"}, 4, "did you mean 'Notification Center'?"}})
        EXPECT_TRUE(ended(run(steps), status, error));
}

TEST_F(ExpectCli, TheHelpsExamplesRunOnTheDemoDevice) {
    const auto help = run({"help"});
    ASSERT_EQ(help.status, 0);
    std::istringstream text(help.outLines().at(0)["note"].get<std::string>());
    std::vector<std::string> examples;
    bool inExamples = false;
    for (std::string line; std::getline(text, line);) {
        if (inExamples && line.rfind("  ", 0) == 0) examples.push_back(line.substr(2));
        inExamples = inExamples || line.rfind("Examples", 0) == 0;
    }
    ASSERT_GE(examples.size(), 5u);
    const auto result = run(examples);
    EXPECT_EQ(result.status, 0) << result.err;
}

}  // namespace
}  // namespace apptest
