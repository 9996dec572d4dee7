// The Excluded applications page driven through velto-settings --json: the demo device and a
// device carrying a thousand generated user applications.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "tests/support/program_run.h"

using nlohmann::json;

namespace {

class DisabledAppsSimulatorTest : public ::testing::Test {
  protected:
    std::vector<json> steps(const std::string& root, std::vector<std::string> words) {
        words.insert(words.begin(), {"--device", root, "--json"});
        const auto result = apptest::runProgram(words);
        EXPECT_EQ(result.status, 0) << result.err;
        return result.outLines();
    }
    static const json* row(const json& show, const std::string& id) {
        for (const auto& r : show.at("rows"))
            if (r.at("id") == id) return &r;
        return nullptr;
    }
    static int count(const json& show, const std::string& kind, const std::string& name) {
        int n = 0;
        for (const auto& e : show.at("journal"))
            n += e.at("kind") == kind && e.value("name", "") == name;
        return n;
    }
    apptest::ScratchFolder scratch;
};

TEST_F(DisabledAppsSimulatorTest, DemoDeviceTogglesAndRefreshes) {
    const std::string root = scratch / "demo";
    apptest::initDevice(root, {"--demo", "--family", "ipad", "--scale", "2"});
    auto shows = steps(root, {"open Excluded Applications", "show", "toggle Maps", "show",
                              "notify com.norvale.veltosettingschanged", "show", "back",
                              "notify com.norvale.veltosettingschanged", "show"});
    ASSERT_EQ(shows.size(), 4u);
    EXPECT_EQ(shows[0].at("page"), "VeltoDisabledAppsSettingsController");
    EXPECT_EQ(shows[0].at("rows").at(0).at("label"), "System Applications");
    EXPECT_EQ(row(shows[0], "com.apple.mobilemail"), nullptr);
    ASSERT_TRUE(row(shows[0], "com.apple.Maps"));
    EXPECT_EQ(row(shows[0], "com.apple.Maps")->at("value"), false);
    EXPECT_EQ(row(shows[0], "com.apple.Maps")->at("icon").at("width"), 152);
    // The toggle excludes Maps; the settings object's own notification refreshes the page.
    EXPECT_EQ(row(shows[1], "com.apple.Maps")->at("value"), true);
    EXPECT_EQ(count(shows[1], "request", "com.norvale.velto.apps"), 1);
    // The extension says settings changed: the list is fetched again and rebuilt.
    EXPECT_EQ(count(shows[2], "request", "com.norvale.velto.apps"), 1);
    EXPECT_EQ(row(shows[2], "com.apple.Maps")->at("value"), true);
    // The page is gone: the notification still arrives, nothing is fetched for it.
    EXPECT_EQ(shows[3].at("page"), "VeltoSettingsController");
    EXPECT_EQ(count(shows[3], "request", "com.norvale.velto.apps"), 0);
    EXPECT_EQ(apptest::runProgram(
                  {"--device", root, "defaults", "read", "com.norvale.velto", "VeltoExcludedApps"})
                      .out.find("com.apple.Maps") != std::string::npos,
              true);
}

TEST_F(DisabledAppsSimulatorTest, ThousandUserApps) {
    const std::string root = scratch / "many";
    apptest::initDevice(root, {"--user-apps", "1000", "--scale", "2"});
    auto shows = steps(root, {"toggle VeltoEnabled on", "open Excluded Applications", "show"});
    ASSERT_EQ(shows.size(), 1u);
    const auto& rows = shows[0].at("rows");
    ASSERT_EQ(rows.size(), 1001u);
    EXPECT_EQ(rows.at(0).at("label"), "User Applications");
    std::set<std::string> lower;
    bool mixed = false;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        std::string name = rows.at(i).at("label");
        mixed |= name[0] >= 'a' && name[0] <= 'z';
        for (auto& c : name)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        // Ordered ignoring case, no name twice.
        if (i > 1) {
            EXPECT_LT(*lower.rbegin(), name);
        }
        lower.insert(name);
    }
    EXPECT_TRUE(mixed);
}

}  // namespace
