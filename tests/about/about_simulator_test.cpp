// The About page through velto-settings: the share sheet and the mail composer as the
// simulator shows them (JSON and text), the steps that close them, and the footer's version
// from each source a device can be made with.

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/program_run.h"

using nlohmann::json;

namespace {

std::string thisYear() {
    const auto days = std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now());
    return std::to_string(static_cast<int>(std::chrono::year_month_day(days).year()));
}

const json* row(const json& show, const std::string& id) {
    for (const auto& r : show.at("rows"))
        if (r.at("id") == id) return &r;
    return nullptr;
}

class AboutSimulatorTest : public ::testing::Test {
  protected:
    std::vector<json> steps(const std::string& root, std::vector<std::string> words) {
        words.insert(words.begin(), {"--device", root, "--json"});
        const auto result = apptest::runProgram(words);
        EXPECT_EQ(result.status, 0) << result.err;
        return result.outLines();
    }
    void writeLog(const std::string& root, const std::string& text) {
        const std::filesystem::path folder = root + "/var/mobile/Library/Logs/Velto";
        std::filesystem::create_directories(folder);
        std::ofstream(folder / "Velto.log") << text;
    }
    apptest::ScratchFolder scratch;
};

TEST_F(AboutSimulatorTest, ShareAndMailOnAnIPhone) {
    const std::string root = scratch / "phone";
    apptest::initDevice(root, {"--demo"});
    writeLog(root, "twelve bytes");
    const auto shows = steps(
        root, {"open About", "tap Share", "show", "dismiss", "tap MailLog", "show", "choose OK",
               "toggle VeltoEnableLogging on", "tap MailLog", "show", "choose Cancel", "show"});
    ASSERT_EQ(shows.size(), 4u);

    const json& share = shows[0].at("presented");
    EXPECT_EQ(share.at("kind"), "share");
    EXPECT_EQ(share.at("popover"), false);
    EXPECT_EQ(share.at("share").at("text"),
              "I'm loving #Velto2, which brings contact pictures every where on my iDevice.");
    EXPECT_EQ(share.at("share").at("image").at("width"), 600);
    EXPECT_EQ(share.at("share").at("image").at("height"), 314);

    EXPECT_EQ(shows[1].at("presented").at("kind"), "alert");  // logging is off
    const json& mail = shows[2].at("presented");
    EXPECT_EQ(mail.at("kind"), "mail");
    EXPECT_EQ(
        mail.at("mail"),
        json({{"to", {"support@norvale.com"}},
              {"subject", "Velto 2 log"},
              {"attachments", {{{"name", "Velto.log"}, {"mime", "text/plain"}, {"size", 12}}}}}));
    EXPECT_EQ(shows[3].at("presented"), nullptr);
    EXPECT_EQ(shows[3].at("journal").back().at("kind"), "dismiss");
}

TEST_F(AboutSimulatorTest, ShareSheetIsAPopoverOnAnIPadAndTextViewShowsDrafts) {
    const std::string root = scratch / "pad";
    apptest::initDevice(root, {"--demo", "--family", "ipad", "--scale", "2"});
    writeLog(root, "log");
    auto shows = steps(root, {"open About", "tap Share", "show", "cancel"});
    ASSERT_EQ(shows.size(), 1u);
    EXPECT_EQ(shows[0].at("presented").at("popover"), true);

    const auto text = apptest::runProgram(
        {"--device", root, "open About", "toggle VeltoEnableLogging on", "tap MailLog", "show"});
    ASSERT_EQ(text.status, 0) << text.err;
    EXPECT_NE(text.out.find("mail composer: Velto 2 log"), std::string::npos) << text.out;
    EXPECT_NE(text.out.find("To: support@norvale.com"), std::string::npos);
    EXPECT_NE(text.out.find("Attachment: Velto.log (3 bytes)"), std::string::npos);
}

struct VersionSource {
    const char* name;
    std::vector<std::string> options;
    const char* version;
    bool asksSpringBoard;
};

class FooterVersionTest : public AboutSimulatorTest,
                          public ::testing::WithParamInterface<VersionSource> {};

TEST_P(FooterVersionTest, FooterNamesTheVersionFound) {
    const std::string root = scratch / "device";
    apptest::initDevice(root, GetParam().options);
    const auto shows = steps(root, {"open About", "show"});
    ASSERT_EQ(shows.size(), 1u);
    const json* footer = row(shows[0], "VeltoCopyRightHeader");
    ASSERT_TRUE(footer);
    EXPECT_EQ(footer->at("footer"), std::string("Version ") + GetParam().version + ", © " +
                                        thisYear() + " Norvale, Inc. All rights reserved,");
    bool asked = false;
    for (const auto& e : shows[0].at("journal"))
        asked |= e.at("kind") == "request" && e.at("name") == "com.norvale.velto.product";
    EXPECT_EQ(asked, GetParam().asksSpringBoard);
}

INSTANTIATE_TEST_SUITE_P(
    Sources, FooterVersionTest,
    ::testing::Values(
        VersionSource{
            "PackageManager", {"--package", "com.norvale.velto2=2.1.0-1"}, "2.1.0-1", false},
        VersionSource{"SpringBoard", {"--extension-version", "2.0"}, "2.0", true},
        VersionSource{"Nobody", {"--no-extension", "--extension-version", "2.0"}, "(null)", true}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
