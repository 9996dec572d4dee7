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

class PhoneFaceTimeSimulatorTest : public ::testing::Test {
  protected:
    std::string makeDevice(const std::string& family) {
        apptest::initDevice(scratch / family, {"--family", family});
        return scratch / family;
    }
    std::vector<json> steps(const std::string& root, std::vector<std::string> words) {
        words.insert(words.begin(), {"--device", root, "--json"});
        const auto result = apptest::runProgram(words);
        EXPECT_EQ(result.status, 0) << result.err;
        return result.outLines();
    }
    static apptest::ProgramResult read(const std::string& root, const std::string& key) {
        return apptest::runProgram(
            {"--device", root, "defaults", "read", "com.norvale.velto", key});
    }
    apptest::ScratchFolder scratch;
};

TEST_F(PhoneFaceTimeSimulatorTest, PhoneSwitchesThroughTheProgram) {
    const std::string root = makeDevice("iphone");
    auto shows = steps(root, {"toggle VeltoEnabled on", "open Phone", "show",
                              "toggle PhoneAppEnabled", "show", "toggle Favorites on", "show"});
    ASSERT_EQ(shows.size(), 3u);

    // A page that is off shows its head only, its switch off.
    EXPECT_EQ(ids(shows[0]), (std::vector<std::string>{"PhoneGroup", "PhoneAppEnabled"}));
    EXPECT_EQ(shows[0].at("rows").at(1).at("value"), false);
    // Turned on (the opposite of what the switch showed): file rows 2..7 come in.
    EXPECT_EQ(shows[1].at("rows").size(), 8u);
    EXPECT_EQ(shows[1].at("rows").at(1).at("value"), true);
    // Favourites on: row 2 out, a fixed six rows in.
    EXPECT_EQ(shows[2].at("rows").size(), 13u);
    EXPECT_EQ(read(root, "ShowFavoritesContactImage").out, "1\n");
}

}  // namespace
