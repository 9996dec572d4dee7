// `watch` as a tweak developer uses it: the page in one window, the device's files changed
// from another.

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <memory>

#include "tests/support/program_run.h"

namespace apptest {
namespace {

using nlohmann::json;

// The program's output, read a line at a time while it runs.
class Watching {
  public:
    explicit Watching(const std::string& command) : pipe_(::popen(command.c_str(), "r")) {}
    ~Watching() {
        if (pipe_) ::pclose(pipe_);
    }
    Watching(const Watching&) = delete;
    Watching& operator=(const Watching&) = delete;

    // The next line, parsed; null when the program ended first.
    json next() {
        std::string line;
        for (int c; pipe_ && (c = std::fgetc(pipe_)) != EOF && c != '\n';)
            line += static_cast<char>(c);
        return line.empty() ? json() : json::parse(line, nullptr, false);
    }
    int status() {
        const int status = ::pclose(pipe_);
        pipe_ = nullptr;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    FILE* pipe_;
};

TEST(WatchCli, RedrawsWhenAnotherProcessChangesASettingOrAPicture) {
    ScratchDevice scratch({"--demo"});
    // The timeout only keeps a broken watch from hanging the suite.
    Watching watch("'" + programPath().string() + "' --device '" + scratch.device +
                   "' --json watch --redraws 2 --timeout 120 </dev/null");
    const json first = watch.next();
    ASSERT_EQ(first.value("type", ""), "page") << first;
    ASSERT_NE(row(first, "Phone"), nullptr) << first;

    // Another process switches Velto off: the page shows what the page makes of that.
    ASSERT_TRUE(ended(
        scratch.run({"defaults", "write", "com.norvale.velto", "VeltoEnabled", "-bool", "NO"}), 0));
    EXPECT_NE(watch.next()
                  .value("note", "")
                  .find("/var/mobile/Library/Preferences/com.norvale.velto.plist"),
              std::string::npos);
    const json second = watch.next();
    EXPECT_EQ(rowValue(second, "VeltoEnabled"), false);
    EXPECT_EQ(row(second, "Phone"), nullptr);

    // A picture of the bundle is replaced: its row's icon has another hash.
    const auto bundle = std::filesystem::path(scratch.device) /
                        "System/Library/PreferenceBundles/VeltoSettings.bundle";
    const json* about = row(second, "About");
    ASSERT_NE(about, nullptr);
    const std::string before = about->at("icon").at("hash");
    // Renamed into place in one go, as editors save; the demo device draws at 3x.
    std::filesystem::copy_file(bundle / "recent@3x.png", scratch / "new.png");
    std::filesystem::rename(scratch / "new.png", bundle / "icon_about@3x.png");
    watch.next();  // what changed
    const json third = watch.next();
    ASSERT_NE(row(third, "About"), nullptr) << third;
    EXPECT_NE(row(third, "About")->at("icon").at("hash"), before);
    EXPECT_EQ(watch.status(), 0);
}

}  // namespace
}  // namespace apptest
