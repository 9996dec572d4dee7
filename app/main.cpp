#include "app/command_line.h"

int main(int argc, char** argv) {
    return velto::app::runCommandLine(argc, argv);
}
