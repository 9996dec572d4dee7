#include "platform/system/device_root.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/platform/system/temp_folder.h"

namespace plat {
namespace {

namespace fs = std::filesystem;

Bytes bytesOf(const std::string& s) {
    return Bytes(s.begin(), s.end());
}

ino_t inodeOf(const fs::path& path) {
    struct stat info {};
    EXPECT_EQ(::stat(path.c_str(), &info), 0) << path;
    return info.st_ino;
}

class DeviceRootTest : public ::testing::Test {
  protected:
    testing::TempFolder host;
    fs::path rootPath = host.path() / "device";
    DeviceRoot root{rootPath};

    void SetUp() override { fs::create_directories(rootPath); }
};

TEST_F(DeviceRootTest, PathsResolveUnderTheRootAndDotDotStopsThere) {
    EXPECT_EQ(root.resolve("/var//./mobile/x/../a.plist"), rootPath / "var/mobile/a.plist");
    EXPECT_EQ(root.resolve("var/mobile/a.plist"), rootPath / "var/mobile/a.plist");
    EXPECT_EQ(root.resolve("/"), rootPath);
    EXPECT_EQ(root.resolve("../../etc/passwd"), rootPath / "etc/passwd");
    host.write("secret.txt", "host only");
    EXPECT_FALSE(root.fileExists("/../secret.txt"));
}

TEST_F(DeviceRootTest, SymbolicLinksOutOfTheRootAreRefused) {
    host.write("outside/secret.txt", "host only");
    fs::create_directory_symlink(host.path() / "outside", rootPath / "escape");
    fs::create_directory_symlink("../outside", rootPath / "relative-escape");
    // Dangling, target outside: writing through it would create the target.
    fs::create_symlink(host.path() / "outside/new.txt", rootPath / "dangling");

    EXPECT_FALSE(root.resolve("/relative-escape/secret.txt").has_value());
    EXPECT_FALSE(root.readFile("/escape/secret.txt").has_value());
    EXPECT_FALSE(root.writeFile("/dangling", bytesOf("x"), false));
    EXPECT_FALSE(root.removeItem("/escape/secret.txt"));
    EXPECT_FALSE(fs::exists(host.path() / "outside/new.txt"));
    EXPECT_TRUE(fs::exists(host.path() / "outside/secret.txt"));
}

TEST_F(DeviceRootTest, LinksInsideTheRootAndARootReachedThroughALinkWork) {
    host.write("device/private/var/file.txt", "inside");
    fs::create_directory_symlink("private/var", rootPath / "var");
    EXPECT_EQ(root.readFile("/var/file.txt"), bytesOf("inside"));

    fs::create_directory_symlink(rootPath, host.path() / "alias");
    DeviceRoot aliased(host.path() / "alias/");
    EXPECT_EQ(aliased.readFile("/var/file.txt"), bytesOf("inside"));
}

TEST_F(DeviceRootTest, AtomicWritesReplaceTheFileInPlaceWritesKeepIt) {
    ASSERT_TRUE(root.writeFile("/s.plist", bytesOf("first version, rather long"), false));
    ino_t original = inodeOf(rootPath / "s.plist");
    ASSERT_TRUE(root.writeFile("/s.plist", bytesOf("second"), false));
    EXPECT_EQ(inodeOf(rootPath / "s.plist"), original);
    EXPECT_EQ(root.readFile("/s.plist"), bytesOf("second"));  // truncated, not overlaid

    Bytes binary{0, 1, 255, 0, 10};
    ASSERT_TRUE(root.writeFile("/s.plist", binary, true));
    EXPECT_NE(inodeOf(rootPath / "s.plist"), original);
    EXPECT_EQ(root.readFile("/s.plist"), binary);
    EXPECT_EQ(root.contentsOfDirectory("/"), std::vector<std::string>{"s.plist"});  // no temp

    EXPECT_FALSE(root.writeFile("/missing/file", binary, true));
    EXPECT_FALSE(root.writeFile("/missing/file", binary, false));
}

TEST_F(DeviceRootTest, CreateDirectoryWithAndWithoutIntermediates) {
    std::string error;
    EXPECT_FALSE(root.createDirectory("/a/b", false, &error));
    EXPECT_NE(error.find("/a/b"), std::string::npos) << error;
    EXPECT_TRUE(root.createDirectory("/a/b", true));
    EXPECT_TRUE(root.createDirectory("/a/b", true));  // existing is fine with intermediates
    EXPECT_FALSE(root.createDirectory("/a/b", false));
    bool isDirectory = false;
    EXPECT_TRUE(root.fileExists("/a/b", &isDirectory));
    EXPECT_TRUE(isDirectory);

    ASSERT_TRUE(root.writeFile("/blocker", bytesOf("x"), true));
    error.clear();
    EXPECT_FALSE(root.createDirectory("/blocker/inner", true, &error));
    EXPECT_FALSE(error.empty());
    EXPECT_FALSE(root.readFile("/a").has_value());  // a folder is not a file
    EXPECT_FALSE(root.writeFile("/a", bytesOf("x"), true));
}

TEST_F(DeviceRootTest, RemoveItemTakesFilesFoldersAndLinksButNotTheirTargets) {
    ASSERT_TRUE(root.createDirectory("/tree/deep", true));
    ASSERT_TRUE(root.writeFile("/tree/deep/file", bytesOf("x"), true));
    ASSERT_TRUE(root.writeFile("/.hidden", bytesOf("x"), true));
    fs::create_directory_symlink("tree", rootPath / "link");
    EXPECT_EQ(root.contentsOfDirectory("/"), (std::vector<std::string>{".hidden", "link", "tree"}));

    EXPECT_TRUE(root.removeItem("/link"));
    EXPECT_TRUE(root.fileExists("/tree/deep/file"));
    std::string error;
    EXPECT_TRUE(root.removeItem("/tree", &error)) << error;
    EXPECT_EQ(root.contentsOfDirectory("/"), std::vector<std::string>{".hidden"});
    EXPECT_FALSE(root.removeItem("/tree", &error));
    EXPECT_NE(error.find("/tree"), std::string::npos) << error;
    EXPECT_FALSE(root.removeItem("/"));
    EXPECT_TRUE(fs::is_directory(rootPath));
}

}  // namespace
}  // namespace plat
