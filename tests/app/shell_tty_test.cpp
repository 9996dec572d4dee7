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

    // Types the keys (none: only reads), then reads until the program has written each text in
    // turn, each after the one before. The next call reads on from where the last text ended.
    ::testing::AssertionResult answers(const std::string& keys,
                                       const std::vector<std::string>& texts) {
        if (!keys.empty()) type(keys);
        for (const std::string& text : texts) {
            std::size_t at;
            while ((at = output_.find(text, from_)) == std::string::npos)
                if (!readMore())
                    return ::testing::AssertionFailure() << "no \"" << text << "\" in\n" << output_;
            from_ = at + text.size();
        }
        return ::testing::AssertionSuccess();
    }
    // Types the keys; success when the program then ends by itself with status 0.
    ::testing::AssertionResult endsAfter(const std::string& keys) {
        type(keys);
        while (readMore()) {
        }
        int status = 0;
        // Still running after the wait: the destructor ends it.
        exited_ = !timedOut_ && ::waitpid(pid_, &status, 0) == pid_;
        if (exited_ && WIFEXITED(status) && WEXITSTATUS(status) == 0)
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << "it did not end with status 0:\n" << output_;
    }
    const std::string& output() const { return output_; }

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
        ASSERT_TRUE(terminal.answers("", {"velto>"}));
        // A step word, then a link row ignoring case: "open Phone".
        ASSERT_TRUE(terminal.answers("op\tph\t\r", {"PhoneAppSettingsController", "velto>"}));
        // Two switches begin alike: their common part, then both listed on a second Tab.
        ASSERT_TRUE(
            terminal.answers("toggle Pic\t\t", {"Pictures in Favorites", "Pictures in Recents"}));
        // "toggle Pictures in Recents on". Keys are typed at a prompt only: between two, the
        // terminal is not the editor's.
        ASSERT_TRUE(
            terminal.answers("R\ton\t\r", {"com.norvale.velto VeltoPhoneRecents", "velto>"}));
        EXPECT_TRUE(terminal.endsAfter("quit\r"));
    }
    EXPECT_TRUE(std::filesystem::exists(scratch_ / "state/velto-settings/history"));

    // A new session goes back through the old one's lines: quit, the toggle, then open Phone.
    Terminal terminal(scratch_, device_);
    ASSERT_TRUE(terminal.answers("", {"velto>"}));
    ASSERT_TRUE(terminal.answers("\033[A\033[A\033[A\r", {"PhoneAppSettingsController", "velto>"}));
    // Ctrl-C throws away the line being typed, as in a shell, and the session goes on.
    ASSERT_TRUE(terminal.answers("toggle Enab\003", {"velto>"}));
    // Tab completes file names after the steps that take one. The editor redraws only what
    // Tab added, so the file written shows what it completed.
    std::filesystem::create_directories(scratch_.path() / "shots-folder");
    terminal.type("screenshot " + scratch_ / "shots-f\t");
    ASSERT_TRUE(terminal.answers("a.png\r", {"wrote ", "velto>"}));
    EXPECT_TRUE(terminal.endsAfter("\004"));  // Ctrl-D on an empty line ends the session
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
        ASSERT_TRUE(terminal.answers("", {"velto>"}));
        EXPECT_TRUE(terminal.endsAfter("quit\r"));
    }
}

TEST_F(ShellTty, ColourUnlessNoColourCtrlLClearsTheScreenAndErrorsDoNotEndTheSession) {
    for (const bool noColour : {false, true}) {
        Terminal terminal(scratch_, device_, noColour);
        ASSERT_TRUE(terminal.answers("", {"velto>"}));
        const bool bold = terminal.output().find("\033[1mVelto") != std::string::npos;
        EXPECT_EQ(bold, !noColour) << terminal.output();
        ASSERT_TRUE(
            terminal.answers("open Nowhere\r", {"no row 'Nowhere' on this page", "velto>"}));
        ASSERT_TRUE(terminal.answers("\014", {"\033[2J", "velto>"}));
        EXPECT_TRUE(terminal.endsAfter("quit\r"));
    }
}

}  // namespace
}  // namespace apptest
