// `defaults` on a device's preferences, and the session seeing what it wrote.

#include <gtest/gtest.h>

#include <fstream>

#include "tests/app/page_fixtures.h"
#include "tests/support/program_run.h"

namespace apptest {
namespace {

using nlohmann::json;

class DefaultsCli : public ::testing::Test {
  protected:
    void SetUp() override { initDevice(device_); }

    ProgramResult defaults(const std::vector<std::string>& arguments) {
        std::vector<std::string> all{"--device", device_, "--json", "defaults"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return runProgram(all);
    }

    json read(const std::string& domain, const std::string& key) {
        const auto result = defaults({"read", domain, key});
        EXPECT_EQ(result.status, 0) << result.err;
        const auto lines = result.outLines();
        return lines.empty() ? json() : lines[0];
    }

    ScratchFolder scratch_;
    std::string device_ = scratch_ / "device";
};

TEST_F(DefaultsCli, WrittenValuesReadBackWithTheirTypes) {
    ASSERT_EQ(defaults({"write", "com.norvale.velto", "VeltoEnabledMail", "-bool", "YES"}).status,
              0);
    ASSERT_EQ(defaults({"write", "com.norvale.velto", "Count", "-int", "-12"}).status, 0);
    ASSERT_EQ(defaults({"write", "com.norvale.velto", "Ratio", "-float", "0.5"}).status, 0);
    ASSERT_EQ(defaults({"write", "com.norvale.velto", "Name", "-string", "two words"}).status, 0);
    ASSERT_EQ(defaults({"write", "com.norvale.velto", "Plain", "text"}).status, 0);
    EXPECT_EQ(read("com.norvale.velto", "VeltoEnabledMail"), true);
    EXPECT_EQ(read("com.norvale.velto", "Count"), -12);
    EXPECT_EQ(read("com.norvale.velto", "Ratio"), 0.5);
    EXPECT_EQ(read("com.norvale.velto", "Name"), "two words");
    EXPECT_EQ(read("com.norvale.velto", "Plain"), "text");

    const auto whole = defaults({"read", "com.norvale.velto"});
    ASSERT_EQ(whole.status, 0);
    EXPECT_EQ(whole.outLines().at(0).size(), 5u);
}

TEST_F(DefaultsCli, TheFileIsTheOneTheBundleReadsAndABinaryPropertyList) {
    ASSERT_EQ(defaults({"write", "com.norvale.velto", "VeltoEnabled", "-bool", "true"}).status, 0);
    std::ifstream file(
        scratch_.path() / "device/var/mobile/Library/Preferences/com.norvale.velto.plist",
        std::ios::binary);
    std::string magic(8, '\0');
    file.read(magic.data(), 8);
    EXPECT_EQ(magic, "bplist00");

    const auto result = runProgram({"--device", device_, "--json", "show"});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(rowWithId(result.outLines().at(0), "VeltoEnabled")["value"], true);
}

TEST_F(DefaultsCli, DeleteRemovesAKeyOrTheWholeDomain) {
    ASSERT_EQ(defaults({"write", "com.norvale.velto", "A", "-bool", "true"}).status, 0);
    ASSERT_EQ(defaults({"write", "com.norvale.velto", "B", "-bool", "true"}).status, 0);
    ASSERT_EQ(defaults({"delete", "com.norvale.velto", "A"}).status, 0);
    EXPECT_EQ(defaults({"read", "com.norvale.velto", "A"}).status, 1);
    EXPECT_EQ(read("com.norvale.velto", "B"), true);
    ASSERT_EQ(defaults({"delete", "com.norvale.velto"}).status, 0);
    EXPECT_EQ(defaults({"read", "com.norvale.velto"}).status, 1);
    EXPECT_EQ(defaults({"delete", "com.norvale.velto"}).status, 1);
}

TEST_F(DefaultsCli, BadValuesAreRefusedAndLeaveTheDomainAlone) {
    for (const std::vector<std::string>& write : {std::vector<std::string>{"-bool", "maybe"},
                                                  {"-int", "12abc"},
                                                  {"-float", ""},
                                                  {"-date", "now"},
                                                  {}}) {
        std::vector<std::string> arguments{"write", "com.norvale.velto", "Key"};
        arguments.insert(arguments.end(), write.begin(), write.end());
        const auto result = defaults(arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.errLines().size(), 1u);
    }
    EXPECT_EQ(defaults({"read", "com.norvale.velto"}).status, 1);
}

TEST_F(DefaultsCli, ADevicePathNamesADomainAnywhereOnTheDevice) {
    ASSERT_EQ(defaults({"write", "/var/mobile/Library/Other/thing", "K", "-int", "3"}).status, 0);
    EXPECT_TRUE(
        std::filesystem::exists(scratch_.path() / "device/var/mobile/Library/Other/thing.plist"));
    EXPECT_EQ(read("/var/mobile/Library/Other/thing.plist", "K"), 3);
}

}  // namespace
}  // namespace apptest
