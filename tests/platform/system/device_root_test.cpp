// The device port's contract, held by both devices: one in a host folder, one in memory. What
// only a host folder has (symbolic links, FIFOs, the real location check) is tested with the
// process.
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
    const auto refused = root.createDirectory("/tree/deep", false);
    EXPECT_FALSE(refused);
    EXPECT_NE(refused.error().find("/tree/deep"), std::string::npos) << refused.error();
    EXPECT_TRUE(root.createDirectory("/tree/deep", true));
    EXPECT_TRUE(root.createDirectory("/tree/deep", true));  // existing is fine with intermediates
    EXPECT_FALSE(root.createDirectory("/tree/deep", false));
    bool isDirectory = false;
    EXPECT_TRUE(root.fileExists("/tree/deep", &isDirectory) && isDirectory);
    // A folder is neither read nor written, and the read says why.
    EXPECT_NE(root.readFile("/tree/deep").error().find("not a regular file"), std::string::npos);
    EXPECT_FALSE(root.writeFile("/tree/deep", bytesOf("x"), true));
    EXPECT_FALSE(root.appendFile("/tree/deep", bytesOf("x")));
    ASSERT_TRUE(root.writeFile("/tree/deep/file", bytesOf("x"), true));
    EXPECT_FALSE(root.createDirectory("/tree/deep/file/inner", true));
    ASSERT_TRUE(root.writeFile("/.hidden", bytesOf("x"), true));
    EXPECT_EQ(root.contentsOfDirectory("/"), (std::vector<std::string>{".hidden", "tree"}));
    EXPECT_TRUE(root.contentsOfDirectory("/.hidden").empty());

    // A move never replaces what is there, and takes a folder whole.
    const auto kept = root.moveItem("/.hidden", "/tree/deep/file");
    EXPECT_FALSE(kept);
    EXPECT_NE(kept.error().find("/tree/deep/file"), std::string::npos) << kept.error();
    EXPECT_FALSE(root.moveItem("/nothing", "/else"));
    const auto moved = root.moveItem("/tree", "/moved");
    EXPECT_TRUE(moved) << moved.error();
    EXPECT_EQ(root.readFile("/moved/deep/file"), bytesOf("x"));
    EXPECT_FALSE(root.fileExists("/tree"));

    EXPECT_TRUE(root.removeItem("/moved"));
    const auto gone = root.removeItem("/moved");
    EXPECT_FALSE(gone);
    EXPECT_NE(gone.error().find("/moved"), std::string::npos) << gone.error();
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

TEST(HostDeviceTest, AFileWithAnotherNameOutsideTheDeviceIsNeitherReadNorWrittenInPlace) {
    testsupport::TestDevice host;
    host.writeText("/secret", "host");
    fs::create_directories(host.root() / "device/var");
    fs::create_hard_link(host.root() / "secret", host.root() / "device/var/linked");
    const HostDeviceRoot root(host.root() / "device");
    EXPECT_NE(root.readFile("/var/linked").error().find("hard link"), std::string::npos);
    EXPECT_FALSE(root.writeFile("/var/linked", bytesOf("device"), false));
    EXPECT_EQ(hostText(host.root() / "secret"), "host");
}

TEST(MemoryDeviceTest, NoTwoDevicesShareAVersion) {
    MemoryDeviceRoot first;
    ASSERT_TRUE(first.writeFile("/a", bytesOf("same"), true));
    // Caches of what a file held are keyed by version: equal contents in two devices still
    // differ, so neither is ever answered with the other's.
    MemoryDeviceRoot second;
    ASSERT_TRUE(second.writeFile("/a", bytesOf("same"), true));
    EXPECT_NE(first.status("/a")->version, second.status("/a")->version);
    EXPECT_NE(first.identity(), second.identity());
}

}  // namespace
}  // namespace plat
