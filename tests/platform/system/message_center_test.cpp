#include "platform/system/message_center.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "platform/system/journal.h"

namespace plat {
namespace {

class MessageCenterTest : public ::testing::Test {
  protected:
    Journal journal;
    MessageCenters centers{journal};

    // Sends one request and checks what the journal made of it.
    Value send(const std::string& message, bool expectReply, std::string* error) {
        Value reply = centers.centerNamed("com.example.center")
                          ->sendMessageAndReceiveReplyName(message, nullptr, error);
        auto entries = journal.entries();
        EXPECT_EQ(entries.back().kind, JournalEntry::Kind::Request);
        EXPECT_EQ(entries.back().name, message);
        EXPECT_EQ(entries.back().replied, expectReply);
        return reply;
    }
};

TEST_F(MessageCenterTest, RequestsReachTheResponderAndRepliesComeBack) {
    std::string seen;
    centers.setResponder(
        [&](const std::string& center, const std::string& message, const Value& info) {
            seen = center + " " + message + " " + info.objectForKey("id").str();
            return Value::dictionary({{"apps", Value::array({"com.example.app"})}});
        });
    auto center = centers.centerNamed("com.example.center");
    EXPECT_NE(center, centers.centerNamed("com.example.center"));
    EXPECT_EQ(centers.centersMade(), 2u);

    std::string error = "untouched";
    Value reply =
        center->sendMessageAndReceiveReplyName("getApps", Value::dictionary({{"id", "x"}}), &error);
    EXPECT_EQ(seen, "com.example.center getApps x");
    EXPECT_EQ(reply.objectForKey("apps").objectAtIndex(0), Value("com.example.app"));
    EXPECT_EQ(error, "untouched");
    EXPECT_TRUE(journal.entries().back().replied);
}

TEST_F(MessageCenterTest, NoResponderANilReplyOrAThrowGiveNilAndAnError) {
    std::string error;
    EXPECT_TRUE(send("ping", false, &error).isNil());
    EXPECT_FALSE(error.empty());
    EXPECT_TRUE(send("ping", false, nullptr).isNil());

    centers.setResponder(
        [](const std::string&, const std::string&, const Value&) { return Value(); });
    error.clear();
    EXPECT_TRUE(send("silent", false, &error).isNil());
    EXPECT_FALSE(error.empty());

    centers.setResponder([](const std::string&, const std::string& m, const Value&) -> Value {
        if (m == "odd") throw 42;
        throw std::runtime_error("extension crashed");
    });
    EXPECT_TRUE(send("crash", false, &error).isNil());
    EXPECT_NE(error.find("extension crashed"), std::string::npos) << error;
    EXPECT_TRUE(send("odd", false, &error).isNil());
}

}  // namespace
}  // namespace plat
