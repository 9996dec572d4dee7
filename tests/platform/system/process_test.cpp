// A process on its device: which process is current, its log lines and shell, and what is read
// from its device root (bundles, the device facts).

#include "platform/system/process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <regex>
#include <stdexcept>
#include <thread>
#include <tuple>

#include "platform/system/bundle.h"
#include "tests/support/test_device.h"

namespace plat {
namespace {

namespace fs = std::filesystem;

using testsupport::bytesOf;

Process::Options quiet(const char* name = "Preferences") {
    return Process::Options{name, false};
}

std::string readAll(Pipe& pipe) {
    std::string out;
    char line[256];
    while (pipe.fgets(line, sizeof line))
        out += line;
    return out;
}

TEST(ProcessTest, ScopesNestServicesShareTheJournalAndNSLogLinesAreStamped) {
    testsupport::TestDevice host;  // current outside the scopes below
    Process outer(host.root() / "outer", quiet());
    Process inner(host.root() / "inner", quiet());
    {
        ProcessScope a(outer);
        {
            ProcessScope b(inner);
            EXPECT_EQ(&Process::current(), &inner);
            Process* seenOnWorker = nullptr;
            std::thread([&] { seenOnWorker = Process::tryCurrent(); }).join();
            EXPECT_EQ(seenOnWorker, &inner);
        }
        EXPECT_EQ(&Process::current(), &outer);
    }
    EXPECT_EQ(&Process::current(), &host.process());

    // A destroyed process stops being current, and with none current there is none to get.
    auto gone = std::make_unique<Process>(host.root() / "gone", quiet());
    ProcessScope scope(*gone);
    gone.reset();
    EXPECT_EQ(Process::tryCurrent(), nullptr);
    EXPECT_THROW(Process::current(), std::logic_error);

    // A missing root is made, a file in the way refused.
    host.writeText("/plain-file", "x");
    EXPECT_THROW(Process(host.root() / "plain-file", quiet()), std::system_error);
    Process process(host.root() / "not/yet/there", quiet("Settings"));
    EXPECT_TRUE(fs::is_directory(host.root() / "not/yet/there"));
    ProcessScope settings(process);
    std::vector<std::string> lines;
    process.logger().setSink([&](const std::string& line) { lines.push_back(line); });

    NSLog("saved 3 values, 100%");
    std::thread([&] { process.logger().log("from a worker"); }).join();
    process.notificationCenter().postNotificationName("Local", nullptr, nullptr);
    process.darwin().postNotification("com.example.darwin", false);
    process.messageCenters().centerNamed("c")->sendMessageAndReceiveReplyName("m", nullptr);
    process.shell().system("true");
    std::vector<std::string> kinds;
    for (const auto& e : process.journal().entries())
        kinds.push_back(kindName(e));
    EXPECT_EQ(kinds, (std::vector<std::string>{"log", "log", "local-notification", "notification",
                                               "request", "shell"}));
    EXPECT_EQ(process.journal().entriesOf<plat::journal::Log>()[0].text, "saved 3 values, 100%");

    // Local time to the millisecond, process name, process and thread identifiers, message.
    const auto stamped = [](const std::string& message) {
        return std::regex(R"(\d{4}-\d{2}-\d{2} \d{2}:\d{2}:\d{2}\.\d{3} Settings\[)" +
                          std::to_string(::getpid()) + R"(:([0-9a-f]+)\] )" + message);
    };
    ASSERT_EQ(lines.size(), 2u);
    std::smatch main, worker;
    ASSERT_TRUE(std::regex_match(lines[0], main, stamped("saved 3 values, 100%"))) << lines[0];
    ASSERT_TRUE(std::regex_match(lines[1], worker, stamped("from a worker"))) << lines[1];
    EXPECT_NE(main[1], worker[1]);
}

TEST(ShellTest, PipesReadLikeCInTheDeviceRootAndInterceptedCommandsNeverReachTheHost) {
    testsupport::TestDevice host;
    Shell& shell = host.process().shell();
    host.writeText("/marker.txt", "from the device\n");
    auto pipe = shell.popen(
        "printf 'abcdefgh\\nx\\n'; cat marker.txt; cat; echo noise >&2; printf last; exit 5", "r");
    ASSERT_NE(pipe, nullptr);
    char buffer[8];
    ASSERT_TRUE(pipe->fgets(buffer, 5));  // at most size-1 bytes, terminated
    EXPECT_STREQ(buffer, "abcd");
    ASSERT_TRUE(pipe->fgets(buffer, sizeof buffer));  // stops after the newline
    EXPECT_STREQ(buffer, "efgh\n");
    // `cat` found no input; standard error stays out.
    EXPECT_EQ(readAll(*pipe), "x\nfrom the device\nlast");
    std::strcpy(buffer, "kept");
    EXPECT_FALSE(pipe->fgets(buffer, sizeof buffer));  // end: false, buffer untouched
    EXPECT_STREQ(buffer, "kept");
    EXPECT_EQ(WEXITSTATUS(pipe->pclose()), 5);

    EXPECT_EQ(shell.system("echo made > made.txt; exit 3"), 3 << 8);  // a wait status: exited, 3
    EXPECT_TRUE(host.exists("/made.txt"));

    pipe = shell.popen("yes", "r");  // dropped unread: it leaves no child behind
    ASSERT_TRUE(pipe && pipe->fgets(buffer, sizeof buffer));
    pipe.reset();
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);

    const auto mark = host.journal().size();
    shell.setInterceptor([](const std::string& command) -> std::optional<ShellResult> {
        if (command.rfind("touch ", 0) == 0) return ShellResult{2, "line one\nline two\n"};
        return std::nullopt;
    });
    pipe = shell.popen("touch  popen.txt", "r");
    ASSERT_NE(pipe, nullptr);
    EXPECT_EQ(readAll(*pipe), "line one\nline two\n");
    EXPECT_EQ(WEXITSTATUS(pipe->pclose()), 2);
    EXPECT_EQ(WEXITSTATUS(shell.system("touch system.txt")), 2);
    EXPECT_EQ(shell.system("echo real > real.txt"), 0);  // declined: runs for real
    EXPECT_EQ(shell.popen("cat", "w"), nullptr);         // only reading is supported

    EXPECT_FALSE(host.exists("/popen.txt") || host.exists("/system.txt"));
    EXPECT_TRUE(host.exists("/real.txt"));
    EXPECT_EQ(host.journalLines(mark),
              (std::vector<std::string>{"shell touch  popen.txt", "shell touch system.txt",
                                        "shell echo real > real.txt", "shell cat"}));
}

TEST(BundleTest, ResourcesAndTranslationsComeFromTheFolderThenEnglish) {
    testsupport::TestDevice device;
    const std::string path = "/System/Library/PreferenceBundles/Example.bundle";
    const Bundle bundle{path};
    device.writeText(path + "/icon@2x.png", "x");
    EXPECT_EQ(bundle.pathForResource("icon@2x", "png"), path + "/icon@2x.png");
    EXPECT_EQ(bundle.pathForResource("icon", "png"), "");
    EXPECT_EQ(Bundle::mainBundle().bundlePath(), "/Applications/Preferences.app");

    device.writeText(path + "/Localizable.strings", "bplist");  // broken: skipped
    device.writePlist(path + "/en.lproj/Localizable.strings",
                      Value::dictionary({{"TITLE", "English"}, {"NUMBER", Value::integer(3)}}));
    device.writePlist(path + "/Root.strings", Value::dictionary({{"TITLE", "Root"}}));
    device.writePlist(path + "/en.lproj/Root.strings", Value::dictionary({{"TITLE", "Shadowed"}}));
    EXPECT_EQ(bundle.localizedStringForKey("TITLE", "", ""), "English");
    EXPECT_EQ(bundle.localizedStringForKey("TITLE", "", "Root"), "Root");
    // Without a translation: the value, else the key.
    EXPECT_EQ(bundle.localizedStringForKey("MISSING", "Fallback", ""), "Fallback");
    EXPECT_EQ(bundle.localizedStringForKey("MISSING", "", "NoSuchTable"), "MISSING");
    EXPECT_EQ(bundle.localizedStringForKey("NUMBER", "", ""), "NUMBER");  // not a string
    // Tables are kept between lookups, but an edited one is read again.
    device.writePlist(path + "/Root.strings", Value::dictionary({{"TITLE", "Edited root"}}));
    EXPECT_EQ(bundle.localizedStringForKey("TITLE", "", "Root"), "Edited root");
}

TEST(DeviceFactsTest, AnUnreadableDeviceIsARecentIPhoneFactsAreReadAfreshVersionsAreNumbers) {
    testsupport::TestDevice device;
    const auto facts = [&] {
        const DeviceFacts f = device.process().deviceFacts();
        return std::string(familyName(f.family)) + " " + f.productType + " " + f.systemVersion +
               " @" + std::to_string(static_cast<int>(f.screenScale)) +
               (f.faceTime ? " FaceTime" : "");
    };
    device.writeText("/DeviceProfile.plist", "<x");
    EXPECT_THAT(facts(), ::testing::MatchesRegex("iPhone iPhone[0-9,]+ 14\\.4 @3 FaceTime"));

    device.setSystemVersion("12.5.7");
    device.setProfile("iPad", 2, false);
    EXPECT_THAT(facts(), ::testing::MatchesRegex("iPad iPad[0-9,]+ 12\\.5\\.7 @2"));

    // Missing or nonsense keys follow the family: no iPod had a 3x screen.
    device.setSystemVersion("15.1");
    device.writePlist("/DeviceProfile.plist",
                      Value::dictionary({{"DeviceFamily", "iPod"},
                                         {"ProductType", "iPod7,1"},
                                         {"ScreenScale", Value::real(7.5)}}),
                      true);
    EXPECT_EQ(facts(), "iPod iPod7,1 15.1 @2 FaceTime");

    // System versions compare numerically, not as text.
    using Case = std::tuple<const char*, int, int, bool>;
    for (const auto& [version, major, minor, atLeast] :
         {Case{"9.3", 10, 0, false}, Case{"10.0", 9, 3, true}, Case{"13", 13, 0, true},
          Case{"13", 13, 1, false}, Case{"13.10", 13, 9, true}, Case{"14.4.1", 14, 4, true},
          Case{"14.3.9", 14, 4, false}}) {
        DeviceFacts probe;
        probe.systemVersion = version;
        EXPECT_EQ(probe.systemVersionAtLeast(major, minor), atLeast) << version;
    }
}

}  // namespace
}  // namespace plat
