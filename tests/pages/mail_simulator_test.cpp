// The Mail page's pick and restore flows driven the way a user drives them, through
// velto-settings with --json, on an iPhone and an iPad device root.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/pages/mail_test_support.h"
#include "tests/support/program_run.h"

using nlohmann::json;

namespace {

namespace fs = std::filesystem;

struct SimulatorRun {
    int status = -1;
    std::vector<json> shows;
};

SimulatorRun run(const std::vector<std::string>& words) {
    const apptest::ProgramResult result = apptest::runProgram(words);
    return {result.status, result.outLines()};
}

// The journal entries of one show, as "kind text-or-name-or-how".
std::vector<std::string> effects(const json& show) {
    std::vector<std::string> out;
    for (const auto& e : show.at("journal")) {
        const std::string kind = e.at("kind");
        if (kind == "log") out.push_back("log " + e.at("text").get<std::string>());
        if (kind == "notification")
            out.push_back("notification " + e.at("name").get<std::string>());
        if (kind == "reload") out.push_back("reload");
        if (kind == "dismiss")
            out.push_back("dismiss " + e.at("class").get<std::string>() + " " +
                          e.at("how").get<std::string>());
    }
    return out;
}

std::vector<std::pair<std::string, std::string>> actions(const json& presented) {
    std::vector<std::pair<std::string, std::string>> out;
    for (const auto& a : presented.at("actions"))
        out.emplace_back(a.at("title"), a.at("style"));
    return out;
}

plat::ImagePtr readHostPng(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return nullptr;
    plat::Bytes bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return plat::Image::imageWithData(bytes);
}

struct Family {
    const char* name;
    int scale;
    bool iPad;
};

class MailSimulatorTest : public ::testing::TestWithParam<Family> {
  protected:
    void SetUp() override {
        root = scratch.root() / "device";
        ASSERT_EQ(apptest::runProgram({"device", "init", root.string(), "--family", GetParam().name,
                                       "--scale", std::to_string(GetParam().scale)})
                      .status,
                  0);
        picturePath = scratch.root() / "landscape.png";
        const auto png = plat::UIImagePNGRepresentation(grid.picture().get());
        ASSERT_TRUE(png);
        std::ofstream(picturePath, std::ios::binary)
            .write(reinterpret_cast<const char*>(png->data()),
                   static_cast<std::streamsize>(png->size()));
    }

    // Runs steps on the device, from the Mail page with its rows shown.
    std::vector<json> steps(std::vector<std::string> words) {
        std::vector<std::string> all = {"--device",  root.string(),
                                        "--json",    "toggle VeltoEnabled on",
                                        "open Mail", "toggle MailEnabled on"};
        all.insert(all.end(), words.begin(), words.end());
        const SimulatorRun result = run(all);
        EXPECT_EQ(result.status, 0);
        for (const auto& show : result.shows) {
            EXPECT_FALSE(show.is_discarded());
            EXPECT_FALSE(show.contains("error")) << show.dump();
        }
        return result.shows;
    }

    fs::path host(const std::string& devicePath) const { return root / devicePath.substr(1); }

    testsupport::TestDevice scratch;
    fs::path root, picturePath;
    const mailtest::Grid grid = mailtest::landscapeGrid();
};

TEST_P(MailSimulatorTest, PickingWritesBothPicturesAndTellsTheExtension) {
    const auto shows = steps({"tap ChooseAvatar", "show", "pick " + picturePath.string(), "show"});
    ASSERT_EQ(shows.size(), 2u);

    const json& picker = shows[0].at("presented");
    EXPECT_EQ(picker.at("class"), "UIImagePickerController");
    EXPECT_EQ(picker.at("popover"), GetParam().iPad);

    EXPECT_TRUE(shows[1].at("presented").is_null());
    EXPECT_EQ(effects(shows[1]),
              (std::vector<std::string>{
                  "log Saved contact image at: " + mailtest::kImagePath,
                  "log Saved contact thumb nail image at: " + mailtest::kThumbnailPath,
                  "reload",
                  "log Posting notification....",
                  "notification " + mailtest::kAvatarNotification,
                  "dismiss UIImagePickerController dismissViewControllerAnimated",
              }));

    const auto image = readHostPng(host(mailtest::kImagePath));
    const auto thumbnail = readHostPng(host(mailtest::kThumbnailPath));
    ASSERT_TRUE(image && thumbnail);
    const auto imageSize = mailtest::imagePixels(GetParam().scale);
    const auto thumbnailSize = mailtest::thumbnailPixels(GetParam().scale);
    EXPECT_EQ(image->pixelWidth(), imageSize.width);
    EXPECT_EQ(image->pixelHeight(), imageSize.height);
    EXPECT_EQ(thumbnail->pixelWidth(), thumbnailSize.width);
    EXPECT_EQ(thumbnail->pixelHeight(), thumbnailSize.height);
    mailtest::expectStretchedGrid(*image, grid);
    mailtest::expectStretchedGrid(*thumbnail, grid);
}

TEST_P(MailSimulatorTest, CancellingThePickerLeavesNoFiles) {
    const auto shows = steps({"tap ChooseAvatar", "cancel", "show"});
    ASSERT_EQ(shows.size(), 1u);
    EXPECT_EQ(effects(shows[0]).back(),
              "dismiss UIImagePickerController dismissModalViewControllerAnimated");
    const auto done = effects(shows[0]);
    EXPECT_EQ(std::count(done.begin(), done.end(), "notification " + mailtest::kAvatarNotification),
              0);
    EXPECT_FALSE(fs::exists(host("/var/mobile/Library/Mail")));
}

TEST_P(MailSimulatorTest, RestoringLeavesTheStockThumbnailOnly) {
    const auto shows = steps({"tap ChooseAvatar", "pick " + picturePath.string(),
                              "tap RestoreAvatar", "show", "choose Default Avatar", "show"});
    ASSERT_EQ(shows.size(), 2u);

    const json& sheet = shows[0].at("presented");
    EXPECT_EQ(sheet.at("class"), "UIAlertController");
    EXPECT_TRUE(sheet.at("title").is_null());
    EXPECT_TRUE(sheet.at("message").is_null());
    using Actions = std::vector<std::pair<std::string, std::string>>;
    if (GetParam().iPad) {
        EXPECT_EQ(actions(sheet), (Actions{{"Default Avatar", "destructive"}}));
        EXPECT_EQ(sheet.at("popover"), true);
    } else {
        EXPECT_EQ(actions(sheet),
                  (Actions{{"Default Avatar", "destructive"}, {"Cancel", "cancel"}}));
        EXPECT_EQ(sheet.at("popover"), false);
    }

    const std::string removing = "log com.norvale.Velto => Infp: Removing item at path '";
    const std::string removed = "log com.norvale.Velto => Error: While removing item at path '";
    EXPECT_EQ(effects(shows[1]),
              (std::vector<std::string>{
                  "dismiss UIAlertController action",
                  removing + mailtest::kImagePath + "'..",
                  removed + mailtest::kImagePath + "' error => (null)",
                  removing + mailtest::kThumbnailPath + "'..",
                  removed + mailtest::kThumbnailPath + "' error => (null)",
                  "log Saved contact thumb nail image at: " + mailtest::kThumbnailPath,
                  "reload",
                  "notification " + mailtest::kAvatarNotification,
              }));
    EXPECT_FALSE(fs::exists(host(mailtest::kImagePath)));
    const auto thumbnail = readHostPng(host(mailtest::kThumbnailPath));
    ASSERT_TRUE(thumbnail);
    EXPECT_EQ(thumbnail->pixelWidth(), mailtest::thumbnailPixels(GetParam().scale).width);
    // The stock avatar's corners are transparent, unlike any block of the picked picture.
    EXPECT_EQ(thumbnail->pixel(0, 0) >> 24, 0u);
}

TEST_P(MailSimulatorTest, LeavingTheSheetRestoresNothing) {
    const std::string leave = GetParam().iPad ? "dismiss" : "choose Cancel";
    const auto shows = steps(
        {"tap ChooseAvatar", "pick " + picturePath.string(), "tap RestoreAvatar", leave, "show"});
    ASSERT_EQ(shows.size(), 1u);
    const auto done = effects(shows[0]);
    EXPECT_EQ(done.back(), GetParam().iPad ? "dismiss UIAlertController tap-outside"
                                           : "dismiss UIAlertController action");
    EXPECT_EQ(
        std::count_if(done.begin(), done.end(),
                      [](const std::string& e) { return e.rfind("log com.norvale", 0) == 0; }),
        0);
    EXPECT_TRUE(fs::exists(host(mailtest::kImagePath)));
    EXPECT_TRUE(fs::exists(host(mailtest::kThumbnailPath)));
}

INSTANTIATE_TEST_SUITE_P(Families, MailSimulatorTest,
                         ::testing::Values(Family{"iphone", 3, false}, Family{"ipad", 2, true}),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
