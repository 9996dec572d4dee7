// The About page through velto-settings: the share sheet and the mail composer as the
// simulator shows them (JSON and text), and the steps that close them.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/program_run.h"

using nlohmann::json;

namespace {

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

}  // namespace
