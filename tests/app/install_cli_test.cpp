// An install, as a user makes one: the program (stripped), its man page and its bash
// completion, the last two made from the program's own command line.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "tests/support/program_run.h"

namespace apptest {
namespace {

std::string shellOutput(const std::string& command) {
    std::string out;
    if (FILE* pipe = ::popen(command.c_str(), "r")) {
        char buffer[4096];
        while (const std::size_t n = std::fread(buffer, 1, sizeof buffer, pipe))
            out.append(buffer, n);
        ::pclose(pipe);
    }
    return out;
}

TEST(InstallCli, AnInstallHasTheStrippedProgramItsManPageAndItsCompletion) {
    ScratchFolder prefix;
    const std::string build = programPath().parent_path().parent_path().string();
    const std::string install = std::string(VELTO_CMAKE_COMMAND) + " --install '" + build +
                                "' --prefix '" + prefix.path().string() + "' > /dev/null";
    ASSERT_EQ(std::system(install.c_str()), 0);

    const auto program = prefix.path() / "bin/velto-settings";
    ASSERT_TRUE(std::filesystem::exists(program));
    // A stripped program has no symbol table, so no section is named for one.
    EXPECT_EQ(fileText(program).find(std::string(".symtab\0", 8)), std::string::npos);
    const auto version = shellOutput("'" + program.string() + "' --version");
    EXPECT_EQ(version.rfind("velto-settings ", 0), 0u) << version;

    const std::string man = fileText(prefix.path() / "share/man/man1/velto-settings.1");
    for (const char* part :
         {".TH VELTO\\-SETTINGS 1", "EXIT STATUS", "\\-\\-color", "device init", "\\-\\-family"})
        EXPECT_NE(man.find(part), std::string::npos) << part;

    // The completion offers the subcommands that begin with what was typed, and an option's
    // choices after it.
    const auto completion = prefix.path() / "share/bash-completion/completions/velto-settings";
    ASSERT_TRUE(std::filesystem::exists(completion));
    const auto complete = [&](const std::string& words, int current) {
        return shellOutput("bash -c 'source \"" + completion.string() + "\"; COMP_WORDS=(" + words +
                           "); COMP_CWORD=" + std::to_string(current) +
                           "; _velto_settings; echo \"${COMPREPLY[*]}\"'");
    };
    EXPECT_EQ(complete("velto-settings de", 1), "device defaults demo\n");
    EXPECT_EQ(complete("velto-settings --json device init x --family \"\"", 6),
              "iphone ipad ipod\n");
}

}  // namespace
}  // namespace apptest
