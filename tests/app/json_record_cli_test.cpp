// The JSON record as a script reads it: every line as docs/json.md describes it, and what the
// record promises beyond field types, on the demo device driven through switches, a write,
// requests to the extension and a sheet.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "tests/support/program_run.h"
#include "tests/support/record_schema.h"

namespace apptest {
namespace {

using nlohmann::json;
using ::testing::IsEmpty;

TEST(JsonRecordCli, EveryLineIsAsDocumentedAndSaysWhatHappened) {
    ASSERT_GE(documentedSchema(), 1);
    ScratchFolder scratch;
    const std::string device = scratch / "device";
    const auto made = runProgram({"device", "init", device, "--demo", "--json"});
    ASSERT_TRUE(ended(made, 0));
    const std::string picture =
        device + "/System/Library/PreferenceBundles/VeltoSettings.bundle/recent@3x.png";
    const auto run =
        runProgram({"--device", device, "--json", "toggle VeltoEnabled off",
                    "toggle VeltoEnabled on", "show", "open Mail", "toggle MailEnabled on",
                    "tap ChooseAvatar", "pick " + picture, "tap RestoreAvatar", "show", "help",
                    "screenshot " + (scratch / "shot.png"), "open Nowhere"});
    ASSERT_TRUE(ended(run, 4));

    std::set<std::string> types;
    for (const auto& lines : {made.outLines(), run.outLines(), run.errLines()})
        for (const json& line : lines) {
            EXPECT_THAT(recordProblems(line), IsEmpty()) << line.dump();
            types.insert(line.value("type", ""));
        }
    EXPECT_EQ(types, (std::set<std::string>{"device", "page", "note", "screenshot", "error"}));

    std::vector<json> pages;
    for (const json& line : run.outLines())
        if (line.at("type") == "page") pages.push_back(line);
    ASSERT_GE(pages.size(), 2u);
    const json& root = pages[0];
    const json& mail = pages[1];

    // What the master switch wrote, in order (where it stores is its resource's to say).
    const auto writes = journalOf(root, "preference-write");
    ASSERT_EQ(writes.size(), 2u);
    EXPECT_EQ(writes[0].at("value"), false);
    EXPECT_EQ(writes[1].at("value"), true);

    // Rows inserted and then rebuilt are named where the page shows them.
    const auto inserts = journalOf(root, "insert");
    ASSERT_FALSE(inserts.empty());
    for (const json& insert : inserts) {
        if (insert.at("index").is_null()) continue;
        const json& shown = root.at("rows").at(insert.at("index").get<std::size_t>());
        EXPECT_TRUE(shown.at("id") == insert.at("row") || shown.at("label") == insert.at("row"))
            << insert.dump() << " names " << shown.dump();
    }

    // An icon request names its application; the reply decodes to the picture the row shows.
    bool phoneIcon = false;
    for (const json& request : journalOf(root, "request")) {
        if (request.at("userInfo").value("VeltoServiceMessageData", "") != "com.apple.mobilephone")
            continue;
        const json picture =
            request.at("reply").at("VeltoServiceMessageData").at("archived").at("image");
        const json* phone = row(root, "Phone");
        ASSERT_NE(phone, nullptr);
        EXPECT_EQ(picture, phone->at("icon"));
        EXPECT_EQ(picture.at("hash").get<std::string>().size(), 12u);
        phoneIcon = true;
    }
    EXPECT_TRUE(phoneIcon) << root.at("journal").dump();

    EXPECT_EQ(mail.at("stack"), json::array({"VeltoSettingsController", mail.at("page")}));
    ASSERT_FALSE(mail.at("presented").is_null()) << mail.dump();
}

}  // namespace
}  // namespace apptest
