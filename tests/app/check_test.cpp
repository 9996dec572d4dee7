// `velto-settings check` on the shipped resources and on resources broken the ways the pages
// cannot survive: each break must be found with the smallest device state that triggers it.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>

#include "app/check/check_run.h"
#include "app/check/check_static.h"
#include "bundle/bundle_classes.h"
#include "platform/foundation/plist.h"
#include "platform/system/host_device_root.h"
#include "platform/system/plist_file.h"
#include "tests/support/program_run.h"
#include "tests/support/record_schema.h"

namespace apptest {
namespace {

namespace fs = std::filesystem;
using velto::app::DeviceConfig;
using velto::app::Finding;

fs::path shippedResources() {
    return fs::path(VELTO_SOURCE_DIR) / "resources";
}

// A copy of the shipped resources with one specifier list's items edited.
class BrokenResources {
  public:
    BrokenResources() { fs::copy(shippedResources(), path(), fs::copy_options::recursive); }
    fs::path path() const { return scratch_.path() / "resources"; }

    void edit(const std::string& list, const std::function<void(plat::Value& items)>& change) {
        const plat::HostDeviceRoot root(path());
        plat::Value file = plat::dictionaryWithContentsOfFile(root, "/" + list + ".plist");
        plat::Value items = file.objectForKey("items");
        ASSERT_TRUE(items.isArray()) << list;
        change(items);
        file.setValueForKey("items", items);
        ASSERT_TRUE(plat::writePropertyListToFile(root, file, "/" + list + ".plist", false));
    }

    // Removes the rows whose "id" or "label" is `name`.
    void removeRows(const std::string& list, const std::string& name) {
        edit(list, [&](plat::Value& items) {
            std::erase_if(*items.asArray(), [&](const plat::Value& item) {
                return item.objectForKey("id").str() == name ||
                       item.objectForKey("label").str() == name;
            });
        });
    }

  private:
    ScratchFolder scratch_;
};

// The part of the matrix a case needs: the whole matrix on the shipped resources is `check`'s
// own job in CI, which fails on any error there.
std::vector<DeviceConfig> devices(plat::DeviceFamily family, std::vector<unsigned> appSets,
                                  const std::string& version = "13.0") {
    std::vector<DeviceConfig> configs;
    for (const DeviceConfig& config : velto::app::deviceMatrix())
        if (config.family == family && config.systemVersion == version && config.faceTime &&
            std::count(appSets.begin(), appSets.end(), config.apps))
            configs.push_back(config);
    return configs;
}

const Finding* find(const velto::app::FindingSet& findings, const std::string& kind,
                    const std::string& resource) {
    for (const Finding& f : findings.all())
        if (f.kind == kind && f.resource == resource) return &f;
    return nullptr;
}

TEST(Check, AFaultTwoStepsAwayIsFoundWithTheStepsThatReplayIt) {
    using velto::app::kRecents;
    BrokenResources broken;
    // Six Phone rows: the page builds, but turning the page on and then favourites on takes
    // rows 2 to 7 of a fresh load and runs past the end. No stored state alone shows it.
    broken.edit("PhoneApp", [](plat::Value& items) { items.asArray()->resize(6); });
    // A root list for iPad without "Recents": the row must exist when the app is installed.
    broken.removeRows("VeltoiPad", "Recents");
    // A switch whose setter nobody answers.
    broken.edit("MailApp", [](plat::Value& items) {
        for (plat::Value& item : *items.asArray())
            if (item.objectForKey("cell").str() == "PSSwitchCell")
                item.setValueForKey("set", std::string("mailAppNowhere:specifier:"));
    });

    const auto phone =
        velto::app::checkBundle(broken.path(), devices(plat::DeviceFamily::iPhone, {0}));
    const Finding* favourites = find(phone.findings, "range-error", "PhoneApp");
    ASSERT_NE(favourites, nullptr);
    EXPECT_EQ(favourites->page, "PhoneAppSettingsController");
    const std::vector<std::string> steps{"open Phone", "toggle Enabled on",
                                         "toggle Pictures in Favorites on"};
    EXPECT_EQ(favourites->steps, steps);
    // Reported once, however many ways lead there.
    EXPECT_EQ(std::count_if(phone.findings.all().begin(), phone.findings.all().end(),
                            [](const Finding& f) { return f.error() && f.resource == "PhoneApp"; }),
              1);
    const Finding* setter = find(phone.findings, "missing-setter", "MailApp");
    ASSERT_NE(setter, nullptr);
    EXPECT_THAT(setter->reason, HasSubstr("mailAppNowhere:specifier:"));
    EXPECT_NE(find(phone.findings, "unrecognized-selector", "MailApp"), nullptr);

    // The steps replay on a device made as the finding says.
    ScratchFolder scratch;
    const std::string device = scratch / "device";
    const auto run = [&](const std::vector<std::string>& arguments) {
        return runProgram(arguments, "", {{"VELTO_RESOURCES", broken.path().string()}});
    };
    ASSERT_TRUE(ended(run(joined({"device", "init", device}, favourites->device)), 0));
    for (const auto& write : favourites->defaults)
        ASSERT_TRUE(ended(run(joined({"--device", device, "defaults", "write"}, write)), 0));
    EXPECT_TRUE(ended(run(joined({"--device", device}, favourites->steps)), 4,
                      "index 6 beyond bounds [0 .. 6)"));

    const auto pad =
        velto::app::checkBundle(broken.path(), devices(plat::DeviceFamily::iPad, {0, kRecents}));
    const Finding* recents = find(pad.findings, "range-error", "VeltoiPad");
    ASSERT_NE(recents, nullptr);
    // Recents alone is the smallest device that shows it; without it the list builds.
    EXPECT_THAT(recents->state, HasSubstr("iPad, iOS 13.0, FaceTime, recents;"));
    EXPECT_TRUE(recents->steps.empty());
}

// The static checks alone: what they find needs no device.
TEST(Check, BrokenListsAndPicturesAreFoundWithoutADeviceSayingWhereAndWhatSize) {
    velto::registerBundleClasses();
    BrokenResources broken;
    std::ofstream(broken.path() / "Recents.plist")
        << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n"
           "\t<key>items</key>\n\t<array><string>x</strng>\n\t</array>\n</dict>\n</plist>\n";
    std::ofstream(broken.path() / "avatar_group@3x.png", std::ios::binary) << "not a picture";
    // Pictures of the right form but the wrong size: an icon drawn at 1x where 3x belongs,
    // and a 3x stock avatar made at 2x.
    fs::copy_file(broken.path() / "icon_nc.png", broken.path() / "icon_nc@3x.png",
                  fs::copy_options::overwrite_existing);
    fs::copy_file(shippedResources() / "nav@3x.png", broken.path() / "recent@3x.png",
                  fs::copy_options::overwrite_existing);
    velto::app::FindingSet findings;
    velto::app::checkResources(broken.path(), {}, findings);

    for (const auto& [kind, resource, error, says] :
         std::vector<std::tuple<std::string, std::string, bool, std::string>>{
             {"unreadable-list", "Recents", true, "line 5, column 26"},
             {"bad-image", "avatar_group@3x.png", true, ""},
             {"image-size", "icon_nc@3x.png", false, "29x29 pixels where 87x87"},
             {"image-size", "recent@3x.png", false, "120x120 pixels where 180x180"}}) {
        const Finding* found = find(findings, kind, resource);
        ASSERT_NE(found, nullptr) << resource;
        EXPECT_EQ(found->error(), error) << resource;
        EXPECT_THAT(found->reason, HasSubstr(says));
    }
    // The shipped pictures are the sizes they are drawn at; others have no expected size.
    EXPECT_EQ(std::count_if(findings.all().begin(), findings.all().end(),
                            [](const Finding& f) { return f.kind == "image-size"; }),
              2);
}

TEST(CheckCli, ExitStatusJsonFindingsAndBadArguments) {
    BrokenResources broken;
    broken.removeRows("VeltoiPad", "Recents");
    const auto found = runProgram({"check", "--resources", broken.path().string(), "--json",
                                   "--family", "ipad", "--system-version", "12.4"});
    EXPECT_EQ(found.status, 1) << found.err;
    const auto lines = found.outLines();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back()["type"], "summary");
    EXPECT_EQ(lines.back()["devices"], 32);
    // Streamed as found, by several workers: still each fault once, all before the summary,
    // and counted there; and no progress line where no terminal watches.
    bool recents = false;
    std::size_t errors = 0, summaries = 0;
    for (const auto& line : lines) {
        EXPECT_TRUE(recordProblems(line).empty()) << line;
        EXPECT_EQ(summaries, 0u) << "a line after the summary: " << line;
        summaries += line["type"] == "summary";
        errors += line["type"] == "finding" && line["severity"] == "error";
        recents |= line["type"] == "finding" && line["resource"] == "VeltoiPad" &&
                   line["kind"] == "range-error";
    }
    EXPECT_TRUE(recents) << found.out;
    EXPECT_EQ(lines.back()["errors"], errors);
    EXPECT_TRUE(found.err.empty()) << found.err;

    EXPECT_EQ(runProgram({"check", "--resources", "/nonexistent"}).status, 2);
    EXPECT_EQ(runProgram({"check", "--family", "watch"}).status, 2);
    EXPECT_EQ(runProgram({"check", "--device", "/tmp", "show"}).status, 2);
}

}  // namespace
}  // namespace apptest
