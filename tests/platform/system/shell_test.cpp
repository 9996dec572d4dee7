#include "platform/system/shell.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstring>

#include "platform/system/device_root.h"
#include "platform/system/journal.h"
#include "tests/platform/system/temp_folder.h"

namespace plat {
namespace {

std::string readAll(Pipe& pipe) {
    std::string out;
    char line[256];
    while (pipe.fgets(line, sizeof line))
        out += line;
    return out;
}

class ShellTest : public ::testing::Test {
  protected:
    testing::TempFolder host;
    DeviceRoot root{host.path()};
    Journal journal;
    Shell shell{journal, root};
};

TEST_F(ShellTest, FgetsOverARealCommandBehavesLikeC) {
    auto pipe = shell.popen("printf 'abcdefgh\\nx\\nlast'", "r");
    ASSERT_NE(pipe, nullptr);
    char buffer[8];
    ASSERT_TRUE(pipe->fgets(buffer, 5));  // at most size-1 bytes, terminated
    EXPECT_STREQ(buffer, "abcd");
    ASSERT_TRUE(pipe->fgets(buffer, sizeof buffer));  // stops after the newline
    EXPECT_STREQ(buffer, "efgh\n");
    EXPECT_EQ(readAll(*pipe), "x\nlast");
    std::strcpy(buffer, "kept");
    EXPECT_FALSE(pipe->fgets(buffer, sizeof buffer));  // end: false, buffer untouched
    EXPECT_STREQ(buffer, "kept");
    EXPECT_EQ(pipe->pclose(), 0);
}

TEST_F(ShellTest, ExitStatusesComeBackAsWaitStatuses) {
    int status = shell.system("exit 3");
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 3);
    auto pipe = shell.popen("echo partial; echo noise >&2; exit 5", "r");
    ASSERT_NE(pipe, nullptr);
    EXPECT_EQ(readAll(*pipe), "partial\n");  // standard error stays out
    EXPECT_EQ(WEXITSTATUS(pipe->pclose()), 5);
}

TEST_F(ShellTest, CommandsRunInTheDeviceRootWithNoInput) {
    host.write("marker.txt", "from the device\n");
    auto pipe = shell.popen("cat marker.txt; cat; echo end", "r");
    ASSERT_NE(pipe, nullptr);
    EXPECT_EQ(readAll(*pipe), "from the device\nend\n");
    pipe->pclose();
    EXPECT_EQ(shell.system("echo made > made.txt"), 0);
    EXPECT_TRUE(std::filesystem::exists(host.path() / "made.txt"));
}

TEST_F(ShellTest, DpkgQueryReadsTheDevicesPackageDatabase) {
    if (shell.system("command -v dpkg-query >/dev/null") != 0)
        GTEST_SKIP() << "dpkg-query is not installed";
    host.write("var/lib/dpkg/status",
               "Package: com.example.tweak\n"
               "Status: install ok installed\n"
               "Version: 2.7.1-4\n"
               "Architecture: iphoneos-arm\n"
               "Maintainer: Example Maker <maker@example.com>\n"
               "Description: A tweak that only this device has\n\n");
    auto pipe = shell.popen("dpkg-query -W -f='${Version}' com.example.tweak", "r");
    ASSERT_NE(pipe, nullptr);
    EXPECT_EQ(readAll(*pipe), "2.7.1-4");
    EXPECT_EQ(pipe->pclose(), 0);
}

TEST_F(ShellTest, InterceptedCommandsNeverReachTheHostAndAllAreJournaled) {
    shell.setInterceptor([](const std::string& command) -> std::optional<ShellResult> {
        if (command.rfind("touch ", 0) == 0) return ShellResult{2, "line one\nline two\n"};
        return std::nullopt;
    });
    auto pipe = shell.popen("touch  popen.txt", "r");
    ASSERT_NE(pipe, nullptr);
    EXPECT_EQ(readAll(*pipe), "line one\nline two\n");
    EXPECT_EQ(WEXITSTATUS(pipe->pclose()), 2);
    EXPECT_EQ(WEXITSTATUS(shell.system("touch system.txt")), 2);
    EXPECT_EQ(shell.system("echo real > real.txt"), 0);  // declined: runs for real
    EXPECT_EQ(shell.popen("cat", "w"), nullptr);         // only reading is supported

    EXPECT_FALSE(std::filesystem::exists(host.path() / "popen.txt"));
    EXPECT_FALSE(std::filesystem::exists(host.path() / "system.txt"));
    EXPECT_TRUE(std::filesystem::exists(host.path() / "real.txt"));
    std::vector<std::string> commands;
    for (const auto& e : journal.entries()) {
        EXPECT_EQ(e.kind, JournalEntry::Kind::Shell);
        commands.push_back(e.text);
    }
    EXPECT_EQ(commands, (std::vector<std::string>{"touch  popen.txt", "touch system.txt",
                                                  "echo real > real.txt", "cat"}));
}

TEST_F(ShellTest, ADroppedPipeLeavesNoChildBehind) {
    {
        auto pipe = shell.popen("yes", "r");
        char line[8];
        ASSERT_TRUE(pipe && pipe->fgets(line, sizeof line));
    }
    int status = 0;
    EXPECT_EQ(::waitpid(-1, &status, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

}  // namespace
}  // namespace plat
