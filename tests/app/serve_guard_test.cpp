// The preview server's front door: what a page of another site, or a careless script, can
// send it, and that each refusal leaves the device as it was.

#include <gtest/gtest.h>
#include <httplib.h>

#include "app/serve/preview_server.h"
#include "tests/support/program_run.h"

namespace apptest {
namespace {

using velto::app::EventHub;
using velto::app::PreviewServer;
using velto::app::PreviewSession;

TEST(ServeGuard, ForeignHostsOriginsBigBodiesAndPathsAreRefusedAndChangeNothing) {
    ScratchDevice scratch({"--demo"});
    const std::string& device = scratch.device;
    EventHub hub;
    PreviewSession session({{device, std::nullopt}}, hub);
    PreviewServer server(session, hub);
    const int port = server.start(0);
    ASSERT_GT(port, 0);
    const std::string self = "http://127.0.0.1:" + std::to_string(port);
    const std::string settings = device + "/var/mobile/Library/Preferences/com.norvale.velto.plist";
    const std::string before = fileText(settings);
    httplib::Client client("127.0.0.1", port);
    const std::string toggle = R"({"steps": ["toggle Enabled off"]})";
    const auto post = [&](const httplib::Headers& headers, const std::string& body) {
        auto answer = client.Post("/api/steps", headers, body, "application/json");
        return answer ? answer->status : -1;
    };

    // A name that resolves here, but is not this server's (DNS rebinding).
    auto rebound = client.Get("/api/page", {{"Host", "attacker.example:" + std::to_string(port)}});
    ASSERT_TRUE(rebound);
    EXPECT_EQ(rebound->status, 421);
    EXPECT_EQ(post({{"Host", "localhost.attacker.example"}, {"Origin", self}}, toggle), 421);
    // A POST without an origin, or from another site's page.
    EXPECT_EQ(post({}, toggle), 403);
    EXPECT_EQ(post({{"Origin", "http://attacker.example"}}, toggle), 403);
    EXPECT_EQ(post({{"Origin", "http://127.0.0.1:" + std::to_string(port + 1)}}, toggle), 403);
    EXPECT_EQ(post({{"Origin", self}}, std::string(70 * 1024, ' ') + toggle), 413);
    EXPECT_EQ(fileText(settings), before);

    for (const char* path : {"/../../etc/passwd", "/%2e%2e/%2e%2e/etc/passwd", "/index.html/..",
                             "/web/preview.js", "/api/../CMakeLists.txt"}) {
        auto answer = client.Get(path);
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->status, 404) << path;
    }
    auto page = client.Get("/");
    ASSERT_TRUE(page);
    EXPECT_NE(page->body.find("preview.js"), std::string::npos);

    // The same request from the server's own page does change the device.
    EXPECT_EQ(post({{"Origin", self}}, toggle), 200);
    EXPECT_NE(fileText(settings), before);
    server.stop();
}

}  // namespace
}  // namespace apptest
