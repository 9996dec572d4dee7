#include "platform/system/log.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <regex>
#include <thread>

#include "platform/system/process.h"
#include "tests/platform/system/temp_folder.h"

namespace plat {
namespace {

std::regex linePattern(const std::string& process, const std::string& message) {
    return std::regex(R"(\d{4}-\d{2}-\d{2} \d{2}:\d{2}:\d{2}\.\d{3} )" + process + R"(\[)" +
                      std::to_string(::getpid()) + R"(:([0-9a-f]+)\] )" + message);
}

TEST(LoggerTest, LinesCarryTimeProcessAndThreadJournalTheExactMessage) {
    Journal journal;
    Logger logger(journal, "Preferences");
    std::vector<std::string> lines;
    logger.setSink([&](const std::string& line) { lines.push_back(line); });
    logger.log("saved 3 values, 100%");
    std::thread([&] { logger.log("from a worker"); }).join();

    ASSERT_EQ(lines.size(), 2u);
    std::smatch main;
    std::smatch worker;
    ASSERT_TRUE(
        std::regex_match(lines[0], main, linePattern("Preferences", "saved 3 values, 100%")))
        << lines[0];
    ASSERT_TRUE(std::regex_match(lines[1], worker, linePattern("Preferences", "from a worker")));
    EXPECT_NE(main[1], worker[1]);
    auto entries = journal.entries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].kind, JournalEntry::Kind::Log);
    EXPECT_EQ(entries[0].text, "saved 3 values, 100%");
}

TEST(LoggerTest, NSLogGoesToTheCurrentProcess) {
    testing::TempFolder host;
    Process process(host.path(), Process::Options{"Settings", true});
    std::vector<std::string> lines;
    process.logger().setSink([&](const std::string& line) { lines.push_back(line); });
    {
        ProcessScope scope(process);
        NSLog("hello from the bundle");
    }
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(std::regex_match(lines[0], linePattern("Settings", "hello from the bundle")));
    EXPECT_EQ(process.journal().entries().at(0).text, "hello from the bundle");
}

}  // namespace
}  // namespace plat
