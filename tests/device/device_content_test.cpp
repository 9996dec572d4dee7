// What `device init` is made of: the `--app` and `--package` options, generated home-screen
// icons, and the package database as written for dpkg-query and read for the extension.

#include "device/app_choice.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "device/app_icon.h"
#include "device/installed_app_list.h"
#include "device/package_database.h"
#include "platform/system/process.h"
#include "platform/ui/image.h"
#include "platform/ui/png_encoding.h"
#include "tests/platform/ui/pictures.h"
#include "tests/support/test_device.h"

namespace velto::device {
namespace {

TEST(AppChoice, ShortNamesOrIdentifierNameAndKind) {
    for (const auto& [text, expected] : std::vector<std::pair<std::string, AppChoice>>{
             // The short names are a table; biteSMS's row carries a rule: the bundle finds it in
             // /Applications under exactly this name.
             {"bitesms", {"com.bitesms", "biteSMS", true}},
             {"com.example.Chat", {"com.example.Chat", "Chat", false}},
             {"com.example.chat,Chat Pro", {"com.example.chat", "Chat Pro", false}},
             {"com.example.chat,Chat,system", {"com.example.chat", "Chat", true}},
             {"com.example.chat,,user", {"com.example.chat", "chat", false}}})
        EXPECT_EQ(parseAppChoice(text), expected) << text;
    for (const char* text :
         {"", "has space", ".leading", "com.x,Name,kernel", "com.x,a/b", "a,b,system,more"}) {
        std::string error;
        EXPECT_FALSE(parseAppChoice(text, &error)) << text;
        EXPECT_FALSE(error.empty()) << text;
    }
}

TEST(PackageChoice, IdentifierEqualsVersion) {
    const auto package = parsePackageChoice("com.norvale.velto2=1:2.0~beta-1");
    ASSERT_TRUE(package);
    EXPECT_EQ(package->identifier, "com.norvale.velto2");
    EXPECT_EQ(package->version, "1:2.0~beta-1");
    for (const char* text : {"p", "=1", "p=", "p q=1", "p=1 2"})
        EXPECT_FALSE(parsePackageChoice(text)) << text;
}

TEST(AppIcon, ARoundedSquareInTheAppsOwnColourWithItsInitialInWhite) {
    const auto icon = drawAppIcon("com.example.Tea", "tea", 100, 2);
    ASSERT_TRUE(icon);
    EXPECT_EQ(icon->pixelHeight(), 100);
    EXPECT_EQ(icon->scale(), 2);
    // Rounded: the corners are transparent, the edges' middles are not.
    EXPECT_EQ(uitest::alpha(icon->pixel(0, 0)), 0u);
    EXPECT_EQ(uitest::alpha(icon->pixel(99, 99)), 0u);
    EXPECT_EQ(uitest::alpha(icon->pixel(50, 1)), 255u);
    const IconColor color = iconColorFor("com.example.Tea");
    const auto byte = [](double c) { return static_cast<std::uint32_t>(c * 255 + 0.5); };
    const std::uint32_t argb =
        0xff000000 | byte(color.red) << 16 | byte(color.green) << 8 | byte(color.blue);
    EXPECT_TRUE(uitest::near(icon->pixel(10, 50), argb, 1)) << std::hex << icon->pixel(10, 50);
    const IconColor other = iconColorFor("com.bitesms");
    EXPECT_TRUE(color.red != other.red || color.green != other.green || color.blue != other.blue);

    // The initial is white ink on the colour: the T's bar, its stem, none beside the stem.
    EXPECT_EQ(icon->pixel(32, 23), 0xffffffffu);
    EXPECT_EQ(icon->pixel(50, 70), 0xffffffffu);
    EXPECT_NE(icon->pixel(32, 70), 0xffffffffu);
}

TEST(AppIcon, TheExtensionAnswersNoMoreThanAHomeScreenIconAndDecodesOnlyTheLargestItMay) {
    testsupport::TestDevice device;
    auto& root = device.process().root();
    const InstalledApp app{"com.example.Poster", "Poster", false, "/Applications/Poster.app"};
    ASSERT_TRUE(root.createDirectory(app.folder, true));
    auto writeIcon = [&](const std::string& name, int side) {
        const auto png =
            plat::UIImagePNGRepresentation(drawAppIcon(app.bundleIdentifier, "p", side, 1).get());
        ASSERT_TRUE(png);
        ASSERT_TRUE(root.writeFile(app.folder + "/" + name, *png, true));
    };
    writeIcon("AppIcon60x60@2x.png", 120);
    writeIcon("AppIcon1024.png", 1024);
    auto icon = largestIcon(root, app);
    ASSERT_TRUE(icon);
    EXPECT_EQ(std::pair(icon->pixelWidth(), icon->pixelHeight()), std::pair(180, 180));
    // A header claiming 20000 x 20000 is passed over without decoding; the next best is used.
    auto forged =
        *plat::UIImagePNGRepresentation(drawAppIcon(app.bundleIdentifier, "p", 8, 1).get());
    for (int at : {16, 20}) {
        forged[at] = 0, forged[at + 1] = 0, forged[at + 2] = 0x4e, forged[at + 3] = 0x20;
    }
    ASSERT_TRUE(root.writeFile(app.folder + "/AppIcon1024.png", forged, true));
    icon = largestIcon(root, app);
    ASSERT_TRUE(icon);
    EXPECT_EQ(icon->pixelWidth(), 120);

    // That icon goes out as the file it is: encoded otherwise than encodePng would, so a
    // decode and re-encode on the way would show.
    const plat::Bytes file =
        plat::encodePngQuickly(drawAppIcon(app.bundleIdentifier, "q", 120, 2)->surface(), true);
    ASSERT_TRUE(root.writeFile(app.folder + "/AppIcon60x60@2x.png", file, true));
    EXPECT_EQ(plat::UIImagePNGRepresentation(largestIcon(root, app).get()), file);
}

TEST(PackageDatabase, VersionsOfInstalledPackagesOnlyAndTheDevicesDpkgQueryReadsIt) {
    testsupport::TestDevice device;
    auto& root = device.process().root();
    ASSERT_TRUE(writePackageDatabase(root, {{"com.norvale.velto2", "2.1.0-1"}, {"other", "1.0"}}));
    EXPECT_EQ(installedPackageVersion(root, "com.norvale.velto2"), "2.1.0-1");
    EXPECT_EQ(installedPackageVersion(root, "other"), "1.0");
    EXPECT_EQ(installedPackageVersion(root, "com.norvale.velto"), std::nullopt);
    if (std::system("command -v dpkg-query >/dev/null 2>&1") == 0) {
        auto pipe = device.process().shell().popen(
            "'/usr/bin/dpkg-query' '-Wf' '${Version}' 'com.norvale.velto2'", "r");
        ASSERT_TRUE(pipe);
        char buffer[256] = "";
        EXPECT_TRUE(pipe->fgets(buffer, sizeof buffer));
        EXPECT_STREQ(buffer, "2.1.0-1");
        EXPECT_EQ(pipe->pclose(), 0);
        // An empty database is still one: dpkg-query simply knows nothing.
        ASSERT_TRUE(writePackageDatabase(root, {}));
        pipe = device.process().shell().popen("dpkg-query -W com.norvale.velto2 2>/dev/null", "r");
        ASSERT_TRUE(pipe);
        EXPECT_NE(pipe->pclose(), 0);
    }

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

}  // namespace
}  // namespace velto::device
