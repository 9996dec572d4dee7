// The interactive session under a real terminal (a tmux pane), typed at as a user would.

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "tests/support/program_run.h"

namespace apptest {
namespace {

// Drives one tmux server of our own (its own socket), so nothing else running is touched.
class Terminal {
  public:
    explicit Terminal(std::string socket) : socket_("tmux -L " + socket + " -f /dev/null ") {}
    ~Terminal() { tmux("kill-server"); }

    int tmux(const std::string& arguments) const {
        return std::system((socket_ + arguments + " >/dev/null 2>&1").c_str());
    }
    std::string screen() const {
        std::string text;
        FILE* pipe =
            ::popen((socket_ + "capture-pane -p -J -S -200 -t main 2>/dev/null").c_str(), "r");
        for (int c; pipe && (c = std::fgetc(pipe)) != EOF;)
            text += static_cast<char>(c);
        if (pipe) ::pclose(pipe);
        return text;
    }
    void type(const std::string& line) const {
        tmux("send-keys -t main -l '" + line + "'"), tmux("send-keys -t main Enter");
    }

    // Polls until the screen shows the text `count` times.
    bool waitFor(const std::string& text, int count = 1) const {
        return poll([&] {
            const std::string shown = screen();
            int found = 0;
            for (auto at = shown.find(text); at != std::string::npos; at = shown.find(text, at + 1))
                ++found;
            return found >= count;
        });
    }
    bool waitForExit() const {
        return poll([&] { return tmux("has-session -t main") != 0; });
    }

  private:
    template <class Done>
    static bool poll(Done done) {
        for (int attempt = 0; attempt < 300; ++attempt) {
            if (done()) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        return false;
    }
    std::string socket_;
};

TEST(InteractiveTty, AUserFlipsTheSwitchSeesTheNotificationAndErrorsDoNotEndTheSession) {
    if (std::system("command -v tmux >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "tmux is not installed";
    ScratchFolder scratch;
    const std::string device = scratch / "device";
    initDevice(device);

    Terminal terminal("velto-test-" + std::to_string(::getpid()));
    const std::string command = "env XDG_STATE_HOME=" + scratch / "state" + " " +
                                programPath().string() + " --device " + device;
    ASSERT_EQ(terminal.tmux("new-session -d -s main -x 120 -y 50 '" + command + "'"), 0);
    ASSERT_TRUE(terminal.waitFor("velto> ")) << terminal.screen();
    EXPECT_NE(terminal.screen().find("[off]"), std::string::npos);

    terminal.type("toggle Enabled");
    ASSERT_TRUE(terminal.waitFor("velto> ", 2)) << terminal.screen();
    const std::string screen = terminal.screen();
    EXPECT_NE(screen.find("[ on]"), std::string::npos) << screen;
    EXPECT_NE(screen.find("com.norvale.veltosettingschanged"), std::string::npos) << screen;

    terminal.type("open Nowhere");
    ASSERT_TRUE(terminal.waitFor("no row 'Nowhere' on this page")) << terminal.screen();
    ASSERT_TRUE(terminal.waitFor("velto> ", 3)) << terminal.screen();
    terminal.type("help");  // and the session goes on
    ASSERT_TRUE(terminal.waitFor("toggle ROW [on|off]")) << terminal.screen();
    terminal.type("quit");
    EXPECT_TRUE(terminal.waitForExit()) << terminal.screen();

    // What the user did is on the device.
    const auto stored = runProgram(
        {"--device", device, "--json", "defaults", "read", "com.norvale.velto", "VeltoEnabled"});
    EXPECT_EQ(stored.out, "true\n");
}

}  // namespace
}  // namespace apptest
