// What the program prints when nobody asks for JSON, and what it prints with no step at all.

#include <gtest/gtest.h>

#include "tests/support/program_run.h"

namespace apptest {
namespace {

class OutputCli : public ::testing::Test {
  protected:
    void SetUp() override { initDevice(device_, {"--app", "bitesms"}); }
    ScratchFolder scratch_;
    std::string device_ = scratch_ / "device";
};

TEST_F(OutputCli, TheHumanPageShowsTitleGroupsRowsAndWhatHappened) {
    const auto result = runProgram({"--device", device_, "toggle Enabled", "show"});
    ASSERT_EQ(result.status, 0) << result.err;
    const std::string& out = result.out;
    EXPECT_NE(out.find("Velto  VeltoSettingsController"), std::string::npos) << out;
    EXPECT_NE(out.find("OTHER APPLICATIONS"), std::string::npos) << out;
    EXPECT_NE(out.find("#1   Enabled"), std::string::npos) << out;
    EXPECT_NE(out.find("[ on]"), std::string::npos) << out;
    EXPECT_NE(out.find("[icon 180x180] >"), std::string::npos) << out;
    EXPECT_NE(out.find("notification       com.norvale.veltosettingschanged"), std::string::npos)
        << out;
    // Not a terminal: no colour codes.
    EXPECT_EQ(out.find('\033'), std::string::npos);
}

TEST_F(OutputCli, WithoutStepsOrATerminalTheRootPageIsPrinted) {
    const auto human = runProgram({"--device", device_});
    ASSERT_EQ(human.status, 0) << human.err;
    EXPECT_NE(human.out.find("VeltoSettingsController"), std::string::npos);

    const auto json = runProgram({"--device", device_, "--json"});
    ASSERT_EQ(json.status, 0) << json.err;
    ASSERT_EQ(json.outLines().size(), 1u);
    EXPECT_EQ(json.outLines()[0]["page"], "VeltoSettingsController");
}

TEST_F(OutputCli, ErrorsGoToTheErrorStreamNamingTheStep) {
    const auto result = runProgram({"--device", device_, "open Nowhere"});
    EXPECT_EQ(result.status, 2);
    EXPECT_TRUE(result.out.empty());
    EXPECT_EQ(result.err, "error: open Nowhere: no row 'Nowhere' on this page\n");
}

TEST_F(OutputCli, EveryPageRowHasTheFieldsScriptsRead) {
    const auto result = runProgram({"--device", device_, "--json", "toggle Enabled", "show"});
    ASSERT_EQ(result.status, 0) << result.err;
    const auto page = result.outLines().at(0);
    for (const char* key : {"page", "title", "rows", "presented", "journal"})
        EXPECT_TRUE(page.contains(key)) << key;
    for (const auto& row : page["rows"])
        for (const char* key :
             {"index", "cell", "label", "id", "footer", "value", "detail", "icon"})
            EXPECT_TRUE(row.contains(key)) << key << " in " << row;
    for (const auto& entry : page["journal"]) {
        const std::string kind = entry["kind"];
        if (kind == "request") {
            EXPECT_TRUE(entry.contains("replied") && entry.contains("name"));
        }
        if (kind == "insert" || kind == "remove" || kind == "reload") {
            EXPECT_TRUE(entry.contains("index") && entry.contains("animated"));
        }
    }
}

}  // namespace
}  // namespace apptest
