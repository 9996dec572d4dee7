// The second hostile campaign's faults, each through velto-settings as the campaign met it.

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <thread>

#include "platform/foundation/plist.h"
#include "tests/support/program_run.h"

namespace apptest {
namespace {

namespace fs = std::filesystem;
using plat::Value;

const char* const kPreferences = "var/mobile/Library/Preferences";

std::string binaryOf(const Value& value) {
    const auto bytes = plat::dataFromPropertyList(value, plat::PropertyListFormat::Binary);
    return std::string(bytes->begin(), bytes->end());
}

mode_t permissionsOf(const fs::path& path) {
    struct stat info {};
    ::stat(path.c_str(), &info);
    return info.st_mode & 07777;
}

class HardeningCli : public ::testing::Test {
  protected:
    fs::path domain(const std::string& name) const {
        return fs::path(device_) / kPreferences / (name + ".plist");
    }
    ProgramResult run(const std::vector<std::string>& arguments) const {
        return scratch_.run(arguments);
    }
    ScratchDevice scratch_{{"--demo"}};
    const std::string& device_ = scratch_.device;
};

TEST_F(HardeningCli, ReadersStopAtTheirLimitAndBadArgumentsAreRefused) {
    // Endless or huge input: a message naming the limit, not memory without end.
    EXPECT_TRUE(ended(run({"run", "/dev/zero"}), 2, "longer than 65536 bytes"));
    const fs::path huge = scratch_ / "huge.plist";
    putFile(huge, "");
    fs::resize_file(huge, std::uintmax_t{3} << 30);  // sparse: costs nothing
    const auto lint = run({"plutil", "-lint", huge.string()});
    EXPECT_EQ(lint.status, 1);
    EXPECT_THAT(lint.out, HasSubstr("64 MB"));
    EXPECT_TRUE(ended(run({"defaults", "import", "com.x", huge.string()}), 1, "64 MB"));
    const auto redraws = runProgram({"watch", "--redraws", "0"});
    EXPECT_TRUE(ended(redraws, 2, "must be positive"));
    EXPECT_LT(redraws.err.size(), 200u) << redraws.err;

    EXPECT_NE(run({"defaults", "write", "", "k", "v"}).status, 0);
    EXPECT_FALSE(fs::exists(fs::path(device_) / kPreferences / ".plist"));

    const fs::path xml = scratch_ / "a.plist";
    putFile(xml, "<plist version=\"1.0\"><dict/></plist>");
    EXPECT_NE(run({"plutil", "-convert", "binary1", xml.string(), "-o"}).status, 0);
    EXPECT_EQ(fileText(xml), "<plist version=\"1.0\"><dict/></plist>");
}

// Arrays that each hold the one before twice, 40 deep: a few hundred bytes stored (the binary
// writer keeps them shared), 2^40 objects printed.
TEST_F(HardeningCli, ADomainWhoseSharedObjectsExplodeIsNotPrinted) {
    Value bomb = Value::array();
    for (int level = 0; level < 40; ++level)
        bomb = Value::array({bomb, bomb});
    const std::string bytes = binaryOf(Value::dictionary({{"k", bomb}}));
    ASSERT_LT(bytes.size(), 1000u);
    putFile(domain("com.bomb"), bytes);
    EXPECT_TRUE(ended(run({"defaults", "read", "com.bomb"}), 1, "too large to print"));
    EXPECT_TRUE(ended(run({"--json", "defaults", "read", "com.bomb"}), 1, "too large to print"));
}

TEST_F(HardeningCli, HostAndDeviceRewritesKeepModesAndLinksAndFreshNames) {
    const fs::path file = scratch_ / "private.plist", link = scratch_ / "link.plist";
    putFile(file, "<plist version=\"1.0\"><dict/></plist>");
    ::chmod(file.c_str(), 0600);
    fs::create_symlink(file, link);
    EXPECT_EQ(run({"plutil", "-convert", "binary1", link.string()}).status, 0);
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_TRUE(fileText(file).starts_with("bplist00"));
    EXPECT_EQ(permissionsOf(file), 0600u);
    // The export's old scratch name, planted as a link by someone else, is not followed.
    const fs::path target = scratch_ / "export.plist", victim = scratch_ / "victim";
    putFile(victim, "untouched");
    for (int pid = 1; pid < 4096; pid += 1)
        ::symlink(victim.c_str(), (scratch_ / (".export.plist." + std::to_string(pid))).c_str());
    EXPECT_EQ(run({"defaults", "export", "com.norvale.velto", target.string()}).status, 0);
    EXPECT_EQ(fileText(victim), "untouched");

    // Domain writes and toggles inside the device.
    ::chmod(domain("com.norvale.velto").c_str(), 0444);
    EXPECT_EQ(run({"toggle Enabled"}).status, 0);
    EXPECT_EQ(run({"defaults", "write", "com.norvale.velto", "K", "v"}).status, 0);
    EXPECT_EQ(permissionsOf(domain("com.norvale.velto")), 0444u);
}

TEST_F(HardeningCli, RefusedWritesSayWhy) {
    const fs::path outside = scratch_ / "outside.plist";
    putFile(outside, binaryOf(Value::dictionary({{"VeltoEnabled", Value::boolean(true)}})));
    fs::remove(domain("com.norvale.velto"));
    fs::create_symlink(outside, domain("com.norvale.velto"));
    const auto toggle = run({"--json", "toggle Enabled", "show"});
    EXPECT_TRUE(ended(toggle, 0));
    const auto refusals = journalOf(toggle.outLines().at(0), "preference-write-refused");
    ASSERT_EQ(refusals.size(), 1u) << toggle.out;
    EXPECT_THAT(refusals[0]["cause"].get<std::string>(), HasSubstr("outside the device"));
    EXPECT_THAT(run({"toggle Enabled", "show"}).out, HasSubstr("preference-write-refused"));
    EXPECT_TRUE(
        ended(run({"defaults", "write", "com.norvale.velto", "K", "v"}), 1, "outside the device"));

    // A file cut short by a killed writer: unreadable, named, never "does not exist".
    fs::remove(domain("com.norvale.velto"));
    ::write(::open(domain("com.other").c_str(), O_WRONLY | O_CREAT, 0644), "bplist00\x01", 9);
    const auto read = run({"defaults", "read", "com.other"});
    EXPECT_THAT(read.err, HasSubstr("is unreadable"));
    EXPECT_THAT(read.err, HasSubstr("com.other.plist"));
}

// Two writers at once: every key of both is kept. Then a writer that finds a half-written file
// while another holds the lock waits for it, and sets nothing aside.
TEST_F(HardeningCli, ConcurrentWritersKeepEachOthersKeysAndWaitForAHalfWrittenFile) {
    constexpr int kWrites = 40;
    const auto loop = [&](const std::string& prefix) {
        for (int i = 0; i < kWrites; ++i)
            EXPECT_EQ(
                run({"defaults", "write", "com.shared", prefix + std::to_string(i), "v"}).status,
                0);
    };
    std::thread other(loop, "a");
    std::thread toggles([&] {
        for (int i = 0; i < kWrites / 4; ++i)
            run({"toggle Enabled"});
    });
    loop("b");
    other.join();
    toggles.join();
    EXPECT_EQ(run({"--json", "defaults", "read", "com.shared"}).outLines().at(0).size(),
              2u * kWrites);

    const std::string whole = binaryOf(Value::dictionary({{"Kept", Value("yes")}}));
    const int folder =
        ::open((fs::path(device_) / kPreferences).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(::flock(folder, LOCK_EX), 0);
    putFile(domain("com.shared"), whole.substr(0, whole.size() / 2));
    ProgramResult writer;
    std::thread waiting([&] { writer = run({"defaults", "write", "com.shared", "New", "v"}); });
    ::usleep(300000);  // the writer reaches the lock meanwhile, or reads the whole file later
    putFile(domain("com.shared"), whole);
    ::close(folder);
    waiting.join();
    EXPECT_TRUE(ended(writer, 0));
    EXPECT_EQ(run({"defaults", "read", "com.shared", "Kept"}).out, "yes\n");
}

TEST_F(HardeningCli, ScreenshotsReplaceWholeFilesAndRefuseAFifo) {
    const fs::path fifo = scratch_ / "pipe.png", shot = scratch_ / "shot.png";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0644), 0);
    EXPECT_TRUE(ended(run({"screenshot " + fifo.string()}), 4, "not a regular file"));
    putFile(shot, "old");
    ::chmod(shot.c_str(), 0600);
    EXPECT_EQ(run({"screenshot " + shot.string()}).status, 0);
    EXPECT_TRUE(fileText(shot).starts_with("\x89PNG"));
    EXPECT_EQ(permissionsOf(shot), 0600u);
}

TEST_F(HardeningCli, RecentsKeepsItsTitleThroughAReload) {
    const std::string device = scratch_ / "recents";
    initDevice(device, {"--demo", "--app", "recents"});
    const auto result =
        runProgram({"--device", device, "--json", "open Recents 2", "reload", "show"});
    ASSERT_TRUE(ended(result, 0));
    EXPECT_EQ(result.outLines().at(0)["title"], "Recents 2");
}

}  // namespace
}  // namespace apptest
