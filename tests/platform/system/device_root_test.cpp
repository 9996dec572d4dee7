// The device port's contract, held by both devices: one in a host folder, one in memory; then
// what only a host folder has, its links. FIFOs are the command line's tests.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include "platform/system/host_device_root.h"
#include "platform/system/memory_device_root.h"
#include "tests/support/test_device.h"

namespace plat {
namespace {

namespace fs = std::filesystem;

using ::testing::HasSubstr;
using testsupport::bytesOf;

// What a host file holds, as a program beside the process reads it.
std::string hostText(const fs::path& file) {
    std::ifstream in(file);
    return in ? std::string(std::istreambuf_iterator<char>(in), {}) : "(no file)";
}

// The device named by the parameter: "host" (a folder of the test device's) or "memory".
class DevicePortTest : public ::testing::TestWithParam<std::string> {
  protected:
    std::shared_ptr<DeviceRoot> make() const {
        if (GetParam() == "memory") return std::make_shared<MemoryDeviceRoot>();
        fs::create_directories(host.root() / "device");
        return std::make_shared<HostDeviceRoot>(host.root() / "device");
    }
    testsupport::TestDevice host;
    std::shared_ptr<DeviceRoot> device = make();
    const DeviceRoot& root = *device;
};

TEST_P(DevicePortTest, FilesKeepOrChangeTheirIdentityAsWrittenAndVersionsFollowEveryWrite) {
    ASSERT_TRUE(root.writeFile("/var/../s.plist", bytesOf("first, rather long"), false));
    const auto first = root.status("/s.plist");
    ASSERT_TRUE(first && first->kind == FileKind::File);
    EXPECT_EQ(root.status("../../s.plist"), first);  // ".." stops at the top

    ASSERT_TRUE(root.writeFile("/s.plist", bytesOf("second"), false));
    const auto inPlace = root.status("/s.plist");
    EXPECT_EQ(root.readFile("/s.plist"), bytesOf("second"));  // truncated, not overlaid
    EXPECT_EQ(inPlace->version.inode, first->version.inode);
    EXPECT_NE(inPlace->version, first->version);
    ASSERT_TRUE(root.writeFile("/s.plist", bytesOf("third"), true));
    EXPECT_NE(root.status("/s.plist")->version.inode, first->version.inode);

    ASSERT_TRUE(root.appendFile("/s.plist", bytesOf(" and more")));
    ASSERT_TRUE(root.appendFile("/log.txt", bytesOf("made")));
    EXPECT_EQ(root.readFile("/s.plist"), bytesOf("third and more"));
    EXPECT_EQ(root.readFile("/log.txt"), bytesOf("made"));
    EXPECT_FALSE(root.readFile("/s.plist", 5));  // over the limit: refused, not cut

    EXPECT_FALSE(root.writeFile("/missing/file", bytesOf("x"), true));
    EXPECT_FALSE(root.writeFile("/missing/file", bytesOf("x"), false));
    EXPECT_FALSE(root.appendFile("/missing/file", bytesOf("x")));
    EXPECT_FALSE(root.status("/missing"));
}

TEST_P(DevicePortTest, FoldersAreMadeListedMovedAndRemovedWithReasons) {
    // A failure's reason names the path (a success has none).
    EXPECT_THAT(root.createDirectory("/tree/deep", false).error(), HasSubstr("/tree/deep"));
    EXPECT_TRUE(root.createDirectory("/tree/deep", true));
    EXPECT_TRUE(root.createDirectory("/tree/deep", true));  // existing is fine with intermediates
    EXPECT_FALSE(root.createDirectory("/tree/deep", false));
    bool isDirectory = false;
    EXPECT_TRUE(root.fileExists("/tree/deep", &isDirectory) && isDirectory);
    // A folder is neither read nor written, and the read says why.
    EXPECT_THAT(root.readFile("/tree/deep").error(), HasSubstr("not a regular file"));
    EXPECT_FALSE(root.writeFile("/tree/deep", bytesOf("x"), true));
    EXPECT_FALSE(root.appendFile("/tree/deep", bytesOf("x")));
    ASSERT_TRUE(root.writeFile("/tree/deep/file", bytesOf("x"), true));
    EXPECT_FALSE(root.createDirectory("/tree/deep/file/inner", true));
    ASSERT_TRUE(root.writeFile("/.hidden", bytesOf("x"), true));
    EXPECT_EQ(root.contentsOfDirectory("/"), (std::vector<std::string>{".hidden", "tree"}));
    EXPECT_TRUE(root.contentsOfDirectory("/.hidden").empty());

    // A move never replaces what is there, and takes a folder whole.
    EXPECT_THAT(root.moveItem("/.hidden", "/tree/deep/file").error(), HasSubstr("/tree/deep/file"));
    EXPECT_FALSE(root.moveItem("/nothing", "/else"));
    const auto moved = root.moveItem("/tree", "/moved");
    EXPECT_TRUE(moved) << moved.error();
    EXPECT_EQ(root.readFile("/moved/deep/file"), bytesOf("x"));
    EXPECT_FALSE(root.fileExists("/tree"));

    EXPECT_TRUE(root.removeItem("/moved"));
    EXPECT_THAT(root.removeItem("/moved").error(), HasSubstr("/moved"));
    EXPECT_FALSE(root.removeItem("/"));
    EXPECT_EQ(root.contentsOfDirectory("/"), std::vector<std::string>{".hidden"});
}

TEST_P(DevicePortTest, ProgramsBesideTheProcessSeeTheDevicesCurrentFiles) {
    const auto seen = [&]() -> std::string {
        const auto top = root.hostFolderHolding("/var/lib/dpkg");
        return top ? hostText(*top / "var/lib/dpkg/status") : "(no folder)";
    };
    ASSERT_TRUE(root.createDirectory("/var/lib/dpkg", true));
    ASSERT_TRUE(root.writeFile("/var/lib/dpkg/status", bytesOf("one"), true));
    EXPECT_EQ(seen(), "one");
    ASSERT_TRUE(root.writeFile("/var/lib/dpkg/status", bytesOf("two"), false));
    EXPECT_EQ(seen(), "two");
    ASSERT_TRUE(root.removeItem("/var/lib/dpkg/status"));
    EXPECT_EQ(seen(), "(no file)");
}

INSTANTIATE_TEST_SUITE_P(Devices, DevicePortTest, ::testing::Values("host", "memory"),
                         [](const auto& info) { return info.param; });

// A device root in a folder of a test device's; the test device's own root is the host.
TEST(HostDeviceTest, DotDotAndLinksOutOfTheRootNeverReachTheHostRemovingOneLeavesItsTarget) {
    testsupport::TestDevice host;
    const fs::path rootPath = host.root() / "device";
    fs::create_directories(rootPath);
    const HostDeviceRoot root{rootPath};
    // ".." stopping at the top is the port's rule (DevicePortTest); links are the host's own.
    EXPECT_EQ(root.resolve("/var//./mobile/x/../a.plist"), rootPath / "var/mobile/a.plist");
    host.writeText("/outside/secret.txt", "host only");

    fs::create_directory_symlink(host.root() / "outside", rootPath / "escape");
    fs::create_directory_symlink("../outside", rootPath / "relative-escape");
    // Dangling, target outside: writing through it would create the target.
    fs::create_symlink(host.root() / "outside/new.txt", rootPath / "dangling");
    EXPECT_FALSE(root.resolve("/relative-escape/secret.txt"));
    EXPECT_FALSE(root.readFile("/escape/secret.txt"));
    EXPECT_FALSE(root.writeFile("/dangling", bytesOf("x"), false));
    EXPECT_FALSE(root.removeItem("/escape/secret.txt"));
    EXPECT_FALSE(fs::exists(host.root() / "outside/new.txt"));
    EXPECT_TRUE(fs::exists(host.root() / "outside/secret.txt"));
    // A hard link: a file with another name outside, neither read nor written in place.
    host.writeText("/outside/hard.txt", "host");
    fs::create_hard_link(host.root() / "outside/hard.txt", rootPath / "linked");
    EXPECT_THAT(root.readFile("/linked").error(), HasSubstr("hard link"));
    EXPECT_FALSE(root.writeFile("/linked", bytesOf("device"), false));
    EXPECT_EQ(hostText(host.root() / "outside/hard.txt"), "host");
    // A link leading nowhere above folders not made yet: making them would make them outside.
    fs::create_directory_symlink(host.root() / "outside/made", rootPath / "nowhere");
    EXPECT_FALSE(root.createDirectory("/nowhere/a/b", true));
    EXPECT_FALSE(fs::exists(host.root() / "outside/made"));

    // Links inside the root work, and so does a root reached through a link.
    host.writeText("/device/private/var/file.txt", "inside");
    fs::create_directory_symlink("private/var", rootPath / "var");
    EXPECT_EQ(root.readFile("/var/file.txt"), bytesOf("inside"));
    fs::create_directory_symlink(rootPath, host.root() / "alias");
    EXPECT_EQ(HostDeviceRoot(host.root() / "alias/").readFile("/var/file.txt"), bytesOf("inside"));
    // A link is listed as itself, and removing it leaves its target.
    EXPECT_EQ(root.contentsOfDirectory("/"),
              (std::vector<std::string>{"dangling", "escape", "linked", "nowhere", "private",
                                        "relative-escape", "var"}));
    EXPECT_TRUE(root.removeItem("/var"));
    EXPECT_EQ(root.readFile("/private/var/file.txt"), bytesOf("inside"));
}

TEST(MemoryDeviceTest, NoTwoDevicesShareAVersion) {
    // Caches of what a file held are keyed by version: equal contents in two devices still
    // differ, so neither is ever answered with the other's.
    MemoryDeviceRoot first, second;
    ASSERT_TRUE(first.writeFile("/a", bytesOf("same"), true));
    ASSERT_TRUE(second.writeFile("/a", bytesOf("same"), true));
    EXPECT_NE(first.status("/a")->version, second.status("/a")->version);
    EXPECT_NE(first.identity(), second.identity());
}

}  // namespace
}  // namespace plat
