// The interactive session under a pseudo-terminal of our own, typed at key by key as a user
// types: Tab completion, history across sessions, Ctrl-L, colour, and a mistyped step that
// leaves the session running.

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/support/program_run.h"

namespace apptest {
namespace {

// velto-settings on the child side of a pseudo-terminal, with the environment of a user's
// terminal: a state folder, a home without an ~/.editrc, xterm, a UTF-8 locale.
class Terminal {
  public:
    Terminal(const ScratchFolder& scratch, const std::string& device, bool noColour = false) {
        winsize size{};
        size.ws_row = 50;
        size.ws_col = 120;
        pid_ = ::forkpty(&master_, nullptr, nullptr, &size);
        if (pid_ == 0) {
            ::setenv("XDG_STATE_HOME", (scratch / "state").c_str(), 1);
            ::setenv("HOME", scratch.path().c_str(), 1);
            ::setenv("TERM", "xterm", 1);
            ::setenv("LANG", "C.UTF-8", 1);
            ::unsetenv("VELTO_RESOURCES");
            if (noColour)
                ::setenv("NO_COLOR", "1", 1);
            else
                ::unsetenv("NO_COLOR");
            const std::string program = programPath().string();
            ::execl(program.c_str(), program.c_str(), "--device", device.c_str(), nullptr);
            ::_exit(127);
        }
    }
    ~Terminal() {
        if (pid_ > 0 && !exited_) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
        if (master_ >= 0) ::close(master_);
    }

    // Keys go in once the line editor holds the terminal: typed while it is still in line
    // mode (the prompt printed, the editor not yet reading), the kernel takes Ctrl-D as end of
    // file and the editor never sees it. A pty's termios are the same seen from either end.
    void type(const std::string& keys) const {
        for (int waited = 0; waited < 20000; ++waited) {
            termios modes{};
            if (::tcgetattr(master_, &modes) != 0 || !(modes.c_lflag & ICANON)) break;
            ::usleep(1000);
        }
        ASSERT_EQ(::write(master_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }

    // Reads until what the program wrote since `from` holds `text`; false when it stops
    // writing first. The next call reads on from where the text ended.
    bool waitFor(const std::string& text) {
        for (;;) {
            if (const auto at = output_.find(text, from_); at != std::string::npos) {
                from_ = at + text.size();
                return true;
            }
            if (!readMore()) return false;
        }
    }
    // True when the program ended by itself with status 0.
    bool waitForExit() {
        while (readMore()) {
        }
        if (timedOut_) return false;  // still running: the destructor ends it
        int status = 0;
        exited_ = ::waitpid(pid_, &status, 0) == pid_;
        return exited_ && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }
    const std::string& output() const { return output_; }
    bool started() const { return pid_ > 0; }

  private:
    bool readMore() {
        pollfd fd{master_, POLLIN, 0};
        // Generous: only a hung program takes this long, and then the test fails.
        if (::poll(&fd, 1, 20000) <= 0) {
            timedOut_ = true;
            return false;
        }
        char buffer[4096];
        const ssize_t n = ::read(master_, buffer, sizeof buffer);
        if (n <= 0) return false;
        output_.append(buffer, static_cast<std::size_t>(n));
        return true;
    }

    int master_ = -1;
    pid_t pid_ = -1;
    bool exited_ = false;
    bool timedOut_ = false;
    std::string output_;
    std::size_t from_ = 0;
};

class ShellTty : public ::testing::Test {
  protected:
    ScratchDevice scratch_{{"--demo"}};
    const std::string& device_ = scratch_.device;
};

TEST_F(ShellTty,
       TabCompletesStepsRowsValuesAndFilesCtrlCDropsALineAndTheHistoryOutlivesTheSession) {
    {
        Terminal terminal(scratch_, device_);
        ASSERT_TRUE(terminal.started());
        ASSERT_TRUE(terminal.waitFor("velto>")) << terminal.output();
        // A step word, then a link row ignoring case: "open Phone".
        terminal.type("op\tph\t\r");
        ASSERT_TRUE(terminal.waitFor("PhoneAppSettingsController")) << terminal.output();
        ASSERT_TRUE(terminal.waitFor("velto>")) << terminal.output();
        // Two switches begin alike: their common part, then both listed on a second Tab.
        terminal.type("toggle Pic\t\t");
        ASSERT_TRUE(terminal.waitFor("Pictures in Favorites")) << terminal.output();
        ASSERT_TRUE(terminal.waitFor("Pictures in Recents")) << terminal.output();
        terminal.type("R\ton\t\r");  // "toggle Pictures in Recents on"
        ASSERT_TRUE(terminal.waitFor("com.norvale.velto VeltoPhoneRecents")) << terminal.output();
        // Keys are typed at a prompt only: between two, the terminal is not the editor's.
        ASSERT_TRUE(terminal.waitFor("velto>")) << terminal.output();
        terminal.type("quit\r");
        EXPECT_TRUE(terminal.waitForExit()) << terminal.output();
    }
    EXPECT_TRUE(std::filesystem::exists(scratch_ / "state/velto-settings/history"));

    // A new session goes back through the old one's lines: quit, the toggle, then open Phone.
    Terminal terminal(scratch_, device_);
    ASSERT_TRUE(terminal.waitFor("velto>")) << terminal.output();
    terminal.type("\033[A\033[A\033[A\r");
    ASSERT_TRUE(terminal.waitFor("PhoneAppSettingsController")) << terminal.output();
    ASSERT_TRUE(terminal.waitFor("velto>")) << terminal.output();
    // Ctrl-C throws away the line being typed, as in a shell, and the session goes on.
    terminal.type("toggle Enab\003");
    ASSERT_TRUE(terminal.waitFor("velto>")) << terminal.output();
    // Tab completes file names after the steps that take one. The editor redraws only what
    // Tab added, so the file written shows what it completed.
    std::filesystem::create_directories(scratch_.path() / "shots-folder");
    terminal.type("screenshot " + scratch_ / "shots-f\t");
    terminal.type("a.png\r");
    ASSERT_TRUE(terminal.waitFor("wrote ")) << terminal.output();
    ASSERT_TRUE(terminal.waitFor("velto>")) << terminal.output();
    terminal.type("\004");  // Ctrl-D on an empty line ends the session
    EXPECT_TRUE(terminal.waitForExit()) << terminal.output();
    EXPECT_TRUE(std::filesystem::exists(scratch_.path() / "shots-folder/a.png"));
    EXPECT_EQ(terminal.output().find("com.norvale.velto VeltoEnabled"), std::string::npos);
}

TEST_F(ShellTty, AHistoryFileThatIsDamagedOrNotAFileNeitherHangsNorBreaksTheStart) {
    const std::filesystem::path history = scratch_.path() / "state/velto-settings/history";
    std::filesystem::create_directories(history.parent_path());
    // A backslash before a byte that is not UTF-8 once made the editor's loader read past its
    // buffer; a FIFO would make a plain open wait for a writer for ever.
    std::ofstream(history, std::ios::binary) << "open Phone\n\\\xA4\n";
    for (const bool fifo : {false, true}) {
        if (fifo) {
            std::filesystem::remove(history);
            ASSERT_EQ(::mkfifo(history.c_str(), 0600), 0);
        }
        Terminal terminal(scratch_, device_);
        ASSERT_TRUE(terminal.waitFor("velto>")) << terminal.output();
        terminal.type("quit\r");
        EXPECT_TRUE(terminal.waitForExit()) << terminal.output();
    }
}

TEST_F(ShellTty, ColourUnlessNoColourCtrlLClearsTheScreenAndErrorsDoNotEndTheSession) {
    for (const bool noColour : {false, true}) {
        Terminal terminal(scratch_, device_, noColour);
        ASSERT_TRUE(terminal.waitFor("velto>")) << terminal.output();
        const bool bold = terminal.output().find("\033[1mVelto") != std::string::npos;
        EXPECT_EQ(bold, !noColour) << terminal.output();
        terminal.type("open Nowhere\r");
        ASSERT_TRUE(terminal.waitFor("no row 'Nowhere' on this page")) << terminal.output();
        ASSERT_TRUE(terminal.waitFor("velto>")) << terminal.output();
        terminal.type("\014");
        EXPECT_TRUE(terminal.waitFor("\033[2J")) << terminal.output();
        ASSERT_TRUE(terminal.waitFor("velto>")) << terminal.output();
        terminal.type("quit\r");
        EXPECT_TRUE(terminal.waitForExit()) << terminal.output();
    }
}

}  // namespace
}  // namespace apptest
