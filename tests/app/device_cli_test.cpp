// Devices made with `device init`, seen through the root page's rules.

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/app/page_fixtures.h"
#include "tests/support/program_run.h"

namespace apptest {
namespace {

using nlohmann::json;

bool has(const std::vector<std::string>& ids, const std::string& id) {
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

// The root page of a device made with these options, with the master switch on.
json rootPage(const ScratchFolder& scratch, const std::vector<std::string>& options) {
    const std::string device = scratch / "device";
    initDevice(device, options);
    const auto result = runProgram({"--device", device, "--json", "toggle Enabled on", "show"});
    EXPECT_EQ(result.status, 0) << result.err;
    const auto lines = result.outLines();
    return lines.empty() ? json::object({{"rows", json::array()}, {"journal", json::array()}})
                         : lines.back();
}

TEST(DeviceCli, FamiliesLoadTheirOwnRootList) {
    ScratchFolder phone, pad;
    const auto phoneIds = rowIds(rootPage(phone, {"--family", "iphone"}));
    const auto padIds = rowIds(rootPage(pad, {"--family", "ipad", "--scale", "2"}));
    EXPECT_TRUE(has(phoneIds, "Phone"));
    // There is no Phone application on an iPad; its list has no row for it.
    EXPECT_FALSE(has(padIds, "Phone"));
    EXPECT_TRUE(has(padIds, "Messages"));
}

TEST(DeviceCli, FaceTimeAndSystemVersionReachTheRootPagesRules) {
    ScratchFolder older, newer;
    const auto olderIds = rowIds(rootPage(older, {"--system-version", "12.4"}));
    const auto newerIds = rowIds(rootPage(newer, {"--system-version", "14.4", "--no-facetime"}));
    EXPECT_TRUE(has(olderIds, "Lock Screen"));
    EXPECT_TRUE(has(olderIds, "FaceTime"));
    EXPECT_FALSE(has(newerIds, "Lock Screen"));
    EXPECT_FALSE(has(newerIds, "FaceTime"));
}

TEST(DeviceCli, InstalledAppsShowTheirRowsWithIconsAtTheDevicesScale) {
    ScratchFolder scratch;
    const json page = rootPage(scratch, {"--app", "bitesms", "--app", "ringledger", "--app",
                                         "com.apple.mobilemail,Mail,system", "--scale", "2"});
    const auto ids = rowIds(page);
    EXPECT_TRUE(has(ids, "biteSMS"));
    EXPECT_TRUE(has(ids, "RingLedger"));
    EXPECT_FALSE(has(ids, "Recents"));
    // 60-point home-screen icons at 2x.
    EXPECT_EQ(rowWithId(page, "biteSMS")["icon"], json({{"width", 120}, {"height", 120}}));
    EXPECT_EQ(rowWithId(page, "Mail")["icon"], json({{"width", 120}, {"height", 120}}));
    // Not installed: the extension has no icon to give.
    EXPECT_EQ(rowWithId(page, "Messages")["icon"], nullptr);
    for (const auto& request : journalOf(page, "request"))
        EXPECT_EQ(request["replied"], true);
}

TEST(DeviceCli, WithoutTheExtensionRequestsGoUnansweredAndRowsHaveNoIcon) {
    ScratchFolder scratch;
    const json page = rootPage(scratch, {"--app", "bitesms", "--no-extension"});
    EXPECT_EQ(rowWithId(page, "biteSMS")["icon"], nullptr);
    const auto requests = journalOf(page, "request");
    ASSERT_FALSE(requests.empty());
    for (const auto& request : requests) {
        EXPECT_EQ(request["name"], "com.norvale.velto.appicon");
        EXPECT_EQ(request["replied"], false);
    }
}

TEST(DeviceCli, TheDemoDeviceIsRichAndSwitchedOn) {
    ScratchFolder scratch;
    const std::string device = scratch / "demo";
    initDevice(device, {"--demo"});
    const auto result = runProgram({"--device", device, "--json", "show"});
    ASSERT_EQ(result.status, 0) << result.err;
    const json page = result.outLines().at(0);
    EXPECT_EQ(rowWithId(page, "VeltoEnabled")["value"], true);
    for (const char* id : {"Phone", "Messages", "Mail", "biteSMS", "RingLedger"})
        EXPECT_NE(rowWithId(page, id)["icon"], nullptr) << id;
    EXPECT_EQ(rowWithId(page, "Recents"), nullptr);
}

TEST(DeviceCli, WithoutADeviceTheDemoIsMadeOnFirstUseUnderTheStateFolder) {
    ScratchFolder state;
    const std::map<std::string, std::string> environment{{"XDG_STATE_HOME", state.path().string()}};
    for (int run = 0; run < 2; ++run) {
        const auto result = runProgram({"--json", "show"}, "", environment);
        ASSERT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(rowWithId(result.outLines().at(0), "VeltoEnabled")["value"], true);
    }
    EXPECT_TRUE(std::filesystem::exists(state.path() / "velto-settings/demo/DeviceProfile.plist"));
}

TEST(DeviceCli, BadOptionsAreRefusedWithoutADevice) {
    ScratchFolder scratch;
    for (const std::vector<std::string>& options : {std::vector<std::string>{"--app", "not an id"},
                                                    {"--app", "com.x.y,Name,system,extra"},
                                                    {"--app", "com.x.y,Name,kernel"},
                                                    {"--package", "novalue"},
                                                    {"--family", "watch"},
                                                    {"--scale", "4"},
                                                    {"--system-version", "fourteen"}}) {
        std::vector<std::string> arguments{"device", "init", scratch / "device"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const auto result = runProgram(arguments);
        EXPECT_EQ(result.status, 1) << options[1];
        EXPECT_FALSE(std::filesystem::exists(scratch.path() / "device/DeviceProfile.plist"))
            << options[1];
    }
}

}  // namespace
}  // namespace apptest
