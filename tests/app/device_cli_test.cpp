// Devices made with `device init` (bad options, imports from a real device), and
// `defaults` and `plutil` on a device's files.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "tests/support/program_run.h"

namespace apptest {
namespace {

using nlohmann::json;

// What makes an --app or --package value bad is AppChoice's and PackageChoice's to say.
TEST(DeviceCli, BadOptionsAreRefusedWithoutADevice) {
    ScratchFolder scratch;
    for (const std::vector<std::string>& options : {std::vector<std::string>{"--app", "not an id"},
                                                    {"--package", "novalue"},
                                                    {"--family", "watch"},
                                                    {"--scale", "4"},
                                                    {"--family", "ipad", "--scale", "3"},
                                                    {"--system-version", "fourteen"}}) {
        EXPECT_EQ(runProgram(joined({"device", "init", scratch / "device"}, options)).status, 2)
            << options[1];
        EXPECT_FALSE(std::filesystem::exists(scratch.path() / "device/DeviceProfile.plist"))
            << options[1];
    }
}

// A copy keeps /var as /private/var; its var/lib leads to the host's, a hard link reaches a
// file outside, and an archive that holds nothing wanted fails: the wanted files come in from a
// folder or a tar, nothing of the host does, and a failure leaves nothing behind.
TEST(DeviceCli, ARealDevicesFilesAreImportedAndNothingOfTheHostComesIn) {
    ScratchFolder scratch;
    namespace fs = std::filesystem;
    const fs::path source = scratch.path() / "phone", secret = scratch.path() / "secret";
    const std::string plist = "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>";
    const std::string preferences = "private/var/mobile/Library/Preferences/";
    putFile(source / preferences / "com.norvale.velto.plist",
            plist + "<key>VeltoEnabled</key><true/></dict></plist>");
    putFile(source / "Applications/biteSMS.app/Info.plist",
            plist + "<key>CFBundleIdentifier</key><string>com.bitesms</string></dict></plist>");
    putFile(source / "Applications/biteSMS.app/biteSMS", "the program, which is not wanted");
    const std::string status =
        "Package: com.norvale.velto2\nStatus: install ok installed\nVersion: 3.0.0-1\n\n";
    putFile(source / "private/var/lib/dpkg/status", status);
    putFile(secret / "dpkg/status", "Package: host-secret\n");
    fs::create_directories(source / "var");
    fs::create_symlink(secret, source / "var/lib");
    fs::create_hard_link(secret / "dpkg/status", source / preferences / "linked.plist");
    const auto tar = [&](const std::string& archive, const fs::path& folder) {
        return std::system(("tar -czf '" + archive + "' -C '" + folder.string() + "' .").c_str());
    };
    ASSERT_EQ(tar(scratch / "phone.tar.gz", source), 0);

    for (const std::string& from : {source.string(), scratch / "phone.tar.gz"}) {
        const std::string device = scratch / ("device-" + std::to_string(from.size()));
        const auto made = runProgram({"--json", "device", "init", device, "--from", from});
        ASSERT_TRUE(ended(made, 0));
        EXPECT_EQ(made.outLines().at(0).at("apps"), 1) << from;  // the imported biteSMS
        const json page = runProgram({"--device", device, "--json", "show"}).outLines().at(0);
        EXPECT_EQ(rowValue(page, "VeltoEnabled"), true) << from;
        EXPECT_NE(row(page, "biteSMS"), nullptr) << from;
        EXPECT_EQ(fileText(device + "/var/lib/dpkg/status"), status) << from;
        EXPECT_FALSE(fs::exists(device + "/Applications/biteSMS.app/biteSMS"));
        // In the archive the second name is a file of its own; in the folder it is a link.
        if (from == source.string()) {
            EXPECT_FALSE(fs::exists(device + "/var/mobile/Library/Preferences/linked.plist"));
        }
    }

    putFile(scratch / "empty/readme", "nothing of a device");
    ASSERT_EQ(tar(scratch / "empty.tar.gz", scratch / "empty"), 0);
    fs::create_directories(scratch / "tmp");
    const std::string device = scratch / "failed";
    const auto failed = runProgram({"device", "init", device, "--from", scratch / "empty.tar.gz"},
                                   "", {{"TMPDIR", scratch / "tmp"}});
    EXPECT_NE(failed.status, 0);
    EXPECT_FALSE(fs::exists(device));
    EXPECT_TRUE(fs::is_empty(scratch / "tmp"));
    for (const auto& entry : fs::directory_iterator(scratch.path()))
        EXPECT_FALSE(entry.path().filename().string().starts_with(".failed")) << entry.path();
}

class DefaultsCli : public ::testing::Test {
  protected:
    ProgramResult defaults(const std::vector<std::string>& arguments) {
        return runProgram(joined({"--device", device_, "--json", "defaults"}, arguments));
    }
    json read(const std::string& domain, const std::string& key) {
        return defaults({"read", domain, key}).outLines().at(0);
    }

    ScratchDevice scratch_;
    const std::string& device_ = scratch_.device;
};

TEST_F(DefaultsCli, WrittenValuesReadBackWithTheirTypesFromWhereTheBundleReadsThem) {
    for (const auto& [write, value] : std::vector<std::pair<std::vector<std::string>, json>>{
             {{"VeltoEnabled", "-bool", "YES"}, true},
             {{"Count", "-int", "-12"}, -12},
             {{"Ratio", "-float", "0.5"}, 0.5},
             {{"Name", "-string", "two words"}, "two words"},
             {{"Plain", "text"}, "text"}}) {
        ASSERT_TRUE(ended(defaults(joined({"write", "com.norvale.velto"}, write)), 0));
        EXPECT_EQ(read("com.norvale.velto", write[0]), value) << write[0];
    }
    EXPECT_EQ(defaults({"read", "com.norvale.velto"}).outLines().at(0).size(), 5u);

    // A binary property list in the bundle's place; that a page then shows what it holds is
    // WatchCli's to see.
    EXPECT_TRUE(fileText(device_ + "/var/mobile/Library/Preferences/com.norvale.velto.plist")
                    .starts_with("bplist00"));

    // A device path names a domain anywhere on the device.
    ASSERT_EQ(defaults({"write", "/var/mobile/Library/Other/thing", "K", "-int", "3"}).status, 0);
    EXPECT_TRUE(
        std::filesystem::exists(scratch_.path() / "device/var/mobile/Library/Other/thing.plist"));
    EXPECT_EQ(read("/var/mobile/Library/Other/thing.plist", "K"), 3);
}

TEST_F(DefaultsCli, BadValuesAreRefusedAndDeleteRemovesAKeyOrTheWholeDomain) {
    for (const std::vector<std::string>& value : {std::vector<std::string>{"-bool", "maybe"},
                                                  {"-int", "12abc"},
                                                  {"-float", ""},
                                                  {"-date", "now"},
                                                  {}}) {
        const auto result = defaults(joined({"write", "com.norvale.velto", "Key"}, value));
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.errLines().size(), 1u);
    }
    EXPECT_EQ(defaults({"read", "com.norvale.velto"}).status, 1);  // left alone

    ASSERT_EQ(defaults({"write", "com.norvale.velto", "A", "-bool", "true"}).status, 0);
    ASSERT_EQ(defaults({"write", "com.norvale.velto", "B", "-bool", "true"}).status, 0);
    ASSERT_EQ(defaults({"delete", "com.norvale.velto", "A"}).status, 0);
    EXPECT_EQ(defaults({"read", "com.norvale.velto", "A"}).status, 1);
    EXPECT_EQ(read("com.norvale.velto", "B"), true);
    ASSERT_EQ(defaults({"delete", "com.norvale.velto"}).status, 0);
    EXPECT_EQ(defaults({"read", "com.norvale.velto"}).status, 1);
    EXPECT_EQ(defaults({"delete", "com.norvale.velto"}).status, 1);
}

TEST_F(DefaultsCli, ContainersDataAndDatesRoundTripThroughExportAndImport) {
    const std::string domain = "com.norvale.velto";
    for (const std::vector<std::string>& write :
         {std::vector<std::string>{"List", "-array", "a", "-int", "2"},
          {"List", "-array-add", "-bool", "yes"},
          {"Map", "-dict", "k", "v", "n", "-float", "1.5"},
          {"Map", "-dict-add", "blob", "-data", "<0a0b 0c>"},
          {"When", "-date", "2001-01-02 00:00:00 +0000"}}) {
        ASSERT_EQ(defaults(joined({"write", domain}, write)).status, 0) << write[1];
    }
    const json all = {{"List", {"a", 2, true}},
                      {"Map", {{"k", "v"}, {"n", 1.5}, {"blob", {{"data", "CgsM"}}}}},
                      {"When", {{"date", 86400.0}}}};
    EXPECT_EQ(defaults({"read", domain}).outLines().at(0), all);
    EXPECT_EQ(defaults({"read-type", domain, "Map"}).outLines().at(0),
              json({{"type", "dictionary"}}));
    // Adding to something that is not an array changes nothing.
    EXPECT_EQ(defaults({"write", domain, "When", "-array-add", "x"}).status, 1);

    const auto exported = defaults({"export", domain, "-"});
    ASSERT_EQ(exported.status, 0);
    EXPECT_TRUE(exported.out.starts_with("<?xml")) << exported.out;
    ASSERT_TRUE(
        ended(scratch_.run({"defaults", "import", "com.example.copy", "-"}, exported.out), 0));
    EXPECT_EQ(defaults({"read", "com.example.copy"}).outLines().at(0), all);
    EXPECT_EQ(defaults({"domains"}).outLines().at(0), json({"com.example.copy", domain}));
    // Something that is not a dictionary replaces no domain.
    EXPECT_EQ(scratch_.run({"defaults", "import", domain, "-"}, "junk").status, 1);
    EXPECT_EQ(defaults({"read", domain}).outLines().at(0), all);
}

TEST(PlutilCli, LintNamesTheBadFileAndConvertRoundTrips) {
    ScratchFolder scratch;
    const std::string good = std::string(VELTO_SOURCE_DIR) + "/resources/Velto.plist";
    std::ofstream(scratch / "bad.plist") << "<plist><dict><key>a</key>";
    const auto lint = runProgram({"plutil", "-lint", good, scratch / "bad.plist"});
    EXPECT_EQ(lint.status, 1);
    EXPECT_THAT(lint.out, HasSubstr(good + ": OK"));
    EXPECT_THAT(lint.out, HasSubstr(scratch / "bad.plist" + ": not a property list"));

    ASSERT_EQ(runProgram({"plutil", "-convert", "binary1", good, "-o", scratch / "b.plist"}).status,
              0);
    ASSERT_EQ(runProgram({"plutil", "-convert", "xml1", scratch / "b.plist"}).status, 0);
    EXPECT_EQ(fileText(scratch / "b.plist"),
              runProgram({"plutil", "-convert", "xml1", good, "-o", "-"}).out);
}

TEST(PlutilCli, PrintShowsAListForPeopleAndJsonTakesOnlyWhatJsonCanHold) {
    ScratchFolder scratch;
    const std::string list = scratch / "list.plist";
    std::ofstream(list) << "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>"
                        << "<key>b</key><array><true/><integer>7</integer></array>"
                        << "<key>a</key><string>say \"hi\"</string></dict></plist>";
    const auto printed = runProgram({"plutil", "-p", list});
    EXPECT_TRUE(ended(printed, 0));
    EXPECT_EQ(
        printed.out,
        "{\n  \"a\" => \"say \\\"hi\\\"\"\n  \"b\" => [\n    0 => true\n    1 => 7\n  ]\n}\n");
    const auto converted = runProgram({"plutil", "-convert", "json", list, "-o", "-"});
    EXPECT_TRUE(ended(converted, 0));
    EXPECT_EQ(json::parse(converted.out), json({{"a", "say \"hi\""}, {"b", {true, 7}}}));

    const std::string dated = scratch / "dated.plist";
    std::ofstream(dated) << "<plist version=\"1.0\"><dict><key>d</key>"
                         << "<date>2020-01-01T00:00:00Z</date></dict></plist>";
    const auto refused = runProgram({"plutil", "-convert", "json", dated});
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.out, HasSubstr("a date, which JSON cannot hold"));
    EXPECT_EQ(runProgram({"plutil", "-p", dated}).out,
              "{\n  \"d\" => 2020-01-01 00:00:00 +0000\n}\n");
}

}  // namespace
}  // namespace apptest
