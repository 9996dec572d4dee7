// velto-settings-docs MAN_PAGE COMPLETION: writes the man page and the bash completion script
// from velto-settings' own command line, at build time.

#include <fstream>
#include <iostream>

#include "app/command_line.h"
#include "app/docs/bash_completion.h"
#include "app/docs/man_page.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: velto-settings-docs MAN_PAGE COMPLETION\n";
        return 2;
    }
    const velto::app::CommandLine commandLine;
    std::ofstream man(argv[1]);
    velto::app::writeManPage(commandLine.description(), man);
    std::ofstream completion(argv[2]);
    velto::app::writeBashCompletion(commandLine.description(), completion);
    man.close();
    completion.close();
    if (!man || !completion) {
        std::cerr << "velto-settings-docs: cannot write " << argv[1] << " or " << argv[2] << "\n";
        return 1;
    }
    return 0;
}
