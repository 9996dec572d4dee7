// Bad input through velto-settings: nothing lost, nothing hung, nothing aborted.

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <future>
#include <thread>

#include "tests/support/program_run.h"

namespace apptest {
namespace {

namespace fs = std::filesystem;

const char* const kSettings = "var/mobile/Library/Preferences/com.norvale.velto.plist";

std::vector<fs::path> asideFiles(const fs::path& settings) {
    std::vector<fs::path> found;
    for (const auto& entry : fs::directory_iterator(settings.parent_path()))
        if (entry.path().filename().string().starts_with(settings.filename().string() +
                                                         ".unreadable-"))
            found.push_back(entry.path());
    return found;
}

class BadInputCli : public ::testing::Test {
  protected:
    fs::path settings() const { return fs::path(device_) / kSettings; }
    ScratchDevice scratch_{{"--demo"}};
    const std::string& device_ = scratch_.device;
};

TEST_F(BadInputCli, AnUnreadableFileIsMovedAsideBeforeAToggleOrDefaultsWriteReplacesIt) {
    const std::string xml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
        "<key>VeltoEnabled</key><true/><key>Keep</key><string>m\xff"
        "e</string></dict></plist>\n";
    for (const auto& arguments :
         {std::vector<std::string>{"--json", "toggle Enabled on", "show"},
          {"defaults", "write", "com.norvale.velto", "K", "-bool", "yes"}}) {
        for (const fs::path& old : asideFiles(settings()))
            fs::remove(old);
        putFile(settings(), xml);
        const auto result = scratch_.run(arguments);
        EXPECT_TRUE(ended(result, 0));
        const auto aside = asideFiles(settings());
        ASSERT_EQ(aside.size(), 1u);
        EXPECT_EQ(fileText(aside[0]), xml);  // byte for byte
        // The line's wording is the platform's (SetAside); here, that the user sees it.
        EXPECT_THAT(result.out + result.err, HasSubstr(aside[0].filename().string()));
    }
}

TEST_F(BadInputCli, NonRegularAndHugeFilesReadAsMissingWithoutHanging) {
    // A 6 GB sparse settings file, and FIFOs where the settings, the profile and an app's
    // Info.plist belong. A reader that opens a FIFO blocks until a writer comes: the watchdog
    // plays that writer after a bounded wait, so a hang fails the test instead of stalling it.
    fs::remove(settings());
    { std::ofstream huge(settings(), std::ios::binary); }
    fs::resize_file(settings(), std::uintmax_t{6} << 30);
    const auto started = std::chrono::steady_clock::now();
    auto result = scratch_.run({"--json", "show"});
    EXPECT_TRUE(ended(result, 0));
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(20));
    EXPECT_EQ(fs::file_size(settings()), std::uintmax_t{6} << 30);

    const std::vector<fs::path> fifos = {
        settings(), fs::path(device_) / "DeviceProfile.plist",
        fs::path(device_) / "Applications/Calculator.app/Info.plist"};
    for (const fs::path& fifo : fifos) {
        fs::remove(fifo);
        ASSERT_EQ(::mkfifo(fifo.c_str(), 0644), 0) << fifo;
    }
    std::promise<void> finished;
    std::atomic<bool> released{false};
    std::thread watchdog([&, done = finished.get_future()] {
        const auto ended = [&](auto wait) {
            return done.wait_for(wait) == std::future_status::ready;
        };
        if (ended(std::chrono::seconds(30))) return;
        released = true;
        for (int round = 0; round < 100; ++round) {
            for (const fs::path& fifo : fifos)
                if (int fd = ::open(fifo.c_str(), O_WRONLY | O_NONBLOCK); fd >= 0) ::close(fd);
            if (ended(std::chrono::milliseconds(100))) return;
        }
    });
    result = scratch_.run({"--json", "show", "toggle Enabled on"});
    finished.set_value();
    watchdog.join();
    EXPECT_FALSE(released) << "velto-settings blocked on a FIFO";
    EXPECT_TRUE(ended(result, 0));
    // The switch's write set the FIFO aside rather than writing into it.
    EXPECT_EQ(asideFiles(settings()).size(), 1u);
}

TEST_F(BadInputCli, PicturesThatAreNotRegularFilesOrTooLargeFailTheStepAndWriteNothing) {
    const fs::path fifo = scratch_ / "photo.fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0644), 0);
    const fs::path huge = scratch_ / "huge.png";
    { std::ofstream(huge, std::ios::binary) << "\x89PNG"; }
    fs::resize_file(huge, (std::uintmax_t{64} << 20) + 1);
    for (const std::string& source : {std::string("/dev/zero"), fifo.string(), huge.string()}) {
        EXPECT_TRUE(
            ended(scratch_.run({"--json", "toggle VeltoEnabled on", "open Mail",
                                "toggle MailEnabled on", "tap ChooseAvatar", "pick " + source}),
                  4, "\"step\":\"pick " + source));
        EXPECT_FALSE(fs::exists(fs::path(device_) / "var/mobile/Library/Mail/Velto")) << source;
    }
}

TEST_F(BadInputCli, ArgumentsThatAreNotUtf8GiveAJsonErrorAndNoAbort) {
    for (const auto& [arguments, status] : std::vector<std::pair<std::vector<std::string>, int>>{
             {{"--json", "--device", device_, "defaults", "read", "com.\xff"}, 1},
             {{"--json", "--device", "/nonexist\xff", "show"}, 5},
             {{"--json", "--device", device_, "show", "open \xfe\xff"}, 4}}) {
        const auto result = runProgram(arguments);
        EXPECT_TRUE(ended(result, status));
        ASSERT_FALSE(result.errLines().empty());
        EXPECT_TRUE(result.errLines().back().contains("error"));
    }
    // device init writes the device, then reports success with the name it was given.
    const std::string odd = scratch_ / "x\xff";
    const auto result = runProgram({"--json", "device", "init", odd});
    EXPECT_TRUE(ended(result, 0));
    EXPECT_TRUE(fs::exists(fs::path(odd) / kSettings) ||
                fs::exists(fs::path(odd) / "DeviceProfile.plist"));
    EXPECT_EQ(result.outLines().at(0).at("apps"), 0);
}

TEST_F(BadInputCli, DeviceInitRefusesAFolderThatHoldsSomethingUnlessForcedAndNeverSlash) {
    const std::string before = fileText(settings());
    EXPECT_TRUE(ended(runProgram({"device", "init", device_}), 1, "--force"));
    EXPECT_EQ(fileText(settings()), before);
    EXPECT_TRUE(ended(runProgram({"device", "init", device_, "--force"}), 0));
    for (const auto& arguments : {std::vector<std::string>{"device", "init", "/"},
                                  {"device", "init", "/", "--force"},
                                  {"device", "init", "/./", "--force"}})
        EXPECT_TRUE(ended(runProgram(arguments), 1, "refusing"));
}

}  // namespace
}  // namespace apptest
