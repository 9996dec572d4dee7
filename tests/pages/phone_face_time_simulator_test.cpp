// The Phone and FaceTime pages driven as a user drives them: through velto-settings with
// --json on device roots it made.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/program_run.h"

using nlohmann::json;

namespace {

std::vector<std::string> ids(const json& show) {
    std::vector<std::string> out;
    for (const auto& row : show.at("rows"))
        out.push_back(row.at("id").is_null() ? "" : row.at("id"));
    return out;
}

// The list operations of a show's journal: "+2a", "-2", ...
std::vector<std::string> listOperations(const json& show) {
    std::vector<std::string> out;
    for (const auto& e : show.at("journal")) {
        const std::string kind = e.at("kind");
        if (kind != "insert" && kind != "remove") continue;
        out.push_back((kind == "insert" ? "+" : "-") + std::to_string(e.at("index").get<int>()) +
                      (e.at("animated").get<bool>() ? "a" : ""));
    }
    return out;
}

bool posted(const json& show, const std::string& name) {
    for (const auto& e : show.at("journal"))
        if (e.at("kind") == "notification" && e.at("name") == name) return true;
    return false;
}

class PhoneFaceTimeSimulatorTest : public ::testing::Test {
  protected:
    std::string makeDevice(const std::string& family) {
        const std::string root = (scratch.path() / family).string();
        EXPECT_EQ(apptest::runProgram({"device", "init", root, "--family", family}).status, 0);
        return root;
    }
    std::vector<json> steps(const std::string& root, std::vector<std::string> words) {
        words.insert(words.begin(), {"--device", root, "--json"});
        const auto result = apptest::runProgram(words);
        EXPECT_EQ(result.status, 0) << result.err;
        return result.outLines();
    }
    apptest::ScratchFolder scratch;
};

TEST_F(PhoneFaceTimeSimulatorTest, PhoneSwitchesThroughTheProgram) {
    const std::string root = makeDevice("iphone");
    auto shows = steps(root, {"toggle VeltoEnabled on", "open Phone", "show",
                              "toggle PhoneAppEnabled", "show", "toggle Favorites on", "show"});
    ASSERT_EQ(shows.size(), 3u);

    // A page that is off shows its head only, its switch off.
    EXPECT_EQ(shows[0].at("page"), "PhoneAppSettingsController");
    EXPECT_EQ(ids(shows[0]), (std::vector<std::string>{"PhoneGroup", "PhoneAppEnabled"}));
    EXPECT_EQ(shows[0].at("rows").at(1).at("value"), false);

    // Turned on (the opposite of what the switch showed): stored, announced, rows 2..7 in.
    EXPECT_EQ(listOperations(shows[1]),
              (std::vector<std::string>{"+2a", "+3a", "+4a", "+5a", "+6a", "+7a"}));
    EXPECT_TRUE(posted(shows[1], "com.norvale.veltosettingschanged"));
    EXPECT_EQ(shows[1].at("rows").at(1).at("value"), true);

    // Favourites on: row 2 out without animation, a fixed six rows in.
    EXPECT_EQ(listOperations(shows[2]),
              (std::vector<std::string>{"-2", "+2a", "+3a", "+4a", "+5a", "+6a", "+7a"}));
    EXPECT_EQ(shows[2].at("rows").size(), 13u);

    const auto stored = apptest::runProgram(
        {"--device", root, "defaults", "read", "com.norvale.velto", "ShowFavoritesContactImage"});
    EXPECT_EQ(stored.out, "1\n");
}

TEST_F(PhoneFaceTimeSimulatorTest, IPadFaceTimeStoresThePhoneKey) {
    const std::string root = makeDevice("ipad");
    auto shows =
        steps(root, {"toggle VeltoEnabled on", "open FaceTime", "toggle FaceTimeEnabled on", "show",
                     "back", "open FaceTime", "show"});
    ASSERT_EQ(shows.size(), 2u);
    // Every file row from 2 on comes in; a page opened afresh builds from the stored state.
    EXPECT_EQ(shows[0].at("rows").size(), 10u);
    EXPECT_EQ(ids(shows[1]), (std::vector<std::string>{"FaceTimeGroup", "FaceTimeEnabled",
                                                       "FaceTimeMoreGroup", "FaceTimeNote"}));
    const auto phoneKey = apptest::runProgram(
        {"--device", root, "defaults", "read", "com.norvale.velto", "PhoneAppEnabled"});
    EXPECT_EQ(phoneKey.out, "1\n");
    const auto faceTimeKey = apptest::runProgram(
        {"--device", root, "defaults", "read", "com.norvale.velto", "VeltoEnabledFacetime"});
    EXPECT_NE(faceTimeKey.status, 0);
}

}  // namespace
