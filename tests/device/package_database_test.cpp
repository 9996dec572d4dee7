// The device's package database, as written for dpkg-query and read for the extension's
// product reply.

#include "device/package_database.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/system/process.h"
#include "tests/support/test_device.h"

namespace velto::device {
namespace {

TEST(PackageDatabase, VersionsOfInstalledPackagesOnly) {
    testsupport::TestDevice device;
    auto& root = device.process().root();
    ASSERT_TRUE(writePackageDatabase(root, {{"com.norvale.velto2", "2.1.0-1"}, {"other", "1.0"}}));
    EXPECT_EQ(installedPackageVersion(root, "com.norvale.velto2"), "2.1.0-1");
    EXPECT_EQ(installedPackageVersion(root, "other"), "1.0");
    EXPECT_EQ(installedPackageVersion(root, "com.norvale.velto"), std::nullopt);

    // A package removed but with its configuration kept has no version to give.
    device.writeText(kPackageDatabase,
                     "Package: gone\nStatus: deinstall ok config-files\nVersion: 1.2\n\n"
                     "Package: half\nStatus: install ok not-installed\nVersion: 0.1\n\n"
                     "Package: kept\nStatus: install ok installed\nDescription: a\n more text: "
                     "here\nVersion: 4\n");
    EXPECT_EQ(installedPackageVersion(root, "gone"), std::nullopt);
    EXPECT_EQ(installedPackageVersion(root, "half"), std::nullopt);
    EXPECT_EQ(installedPackageVersion(root, "kept"), "4");
}

TEST(PackageDatabase, TheDevicesDpkgQueryReadsIt) {
    if (std::system("command -v dpkg-query >/dev/null 2>&1") != 0) GTEST_SKIP() << "no dpkg-query";
    testsupport::TestDevice device;
    ASSERT_TRUE(writePackageDatabase(device.process().root(), {{"com.norvale.velto2", "2.1.0-1"}}));
    auto pipe = device.process().shell().popen(
        "'/usr/bin/dpkg-query' '-Wf' '${Version}' 'com.norvale.velto2'", "r");
    ASSERT_TRUE(pipe);
    std::string out;
    char buffer[256];
    while (pipe->fgets(buffer, sizeof buffer))
        out += buffer;
    EXPECT_EQ(pipe->pclose(), 0);
    EXPECT_EQ(out, "2.1.0-1");

    ASSERT_TRUE(writePackageDatabase(device.process().root(), {}));
    pipe = device.process().shell().popen(
        "dpkg-query -Wf '${Version}' com.norvale.velto2 2>/dev/null", "r");
    ASSERT_TRUE(pipe);
    EXPECT_NE(pipe->pclose(), 0);
}

}  // namespace
}  // namespace velto::device
