#include "app/docs/man_page.h"

#include <CLI/CLI.hpp>
#include <sstream>

#include "app/exit_status.h"
#include "app/session/step.h"

namespace velto::app {

namespace {

// Text as roff shows it: backslashes and hyphens escaped, no line taken for a request.
std::string roff(const std::string& text) {
    std::string out;
    bool lineStart = true;
    for (const char c : text) {
        if (lineStart && (c == '.' || c == '\'')) out += "\\&";
        if (c == '\\')
            out += "\\e";
        else if (c == '-')
            out += "\\-";
        else
            out += c;
        lineStart = c == '\n';
    }
    return out;
}

// Preformatted text, kept as written (the footers line their columns up).
void block(const std::string& text, std::ostream& out) {
    if (text.empty()) return;
    out << ".PP\n.nf\n" << roff(text) << (text.ends_with('\n') ? "" : "\n") << ".fi\n";
}

std::vector<const CLI::Option*> optionsOf(const CLI::App& command) {
    return command.get_options([](const CLI::Option*) { return true; });
}

void options(const CLI::App& command, std::ostream& out) {
    for (const CLI::Option* option : optionsOf(command)) {
        std::string name = option->get_name(false, true);
        if (option->get_positional()) name = option->get_name(true, false);
        out << ".TP\n.B " << roff(name);
        if (option->nonpositional() && option->get_expected_max() > 0)
            out << " \\fI" << roff(option->get_type_name()) << "\\fR";
        out << "\n" << roff(option->get_description()) << "\n";
    }
}

void subcommands(const CLI::App& command, const std::string& path, std::ostream& out) {
    for (const CLI::App* sub : command.get_subcommands([](const CLI::App*) { return true; })) {
        const std::string name = path + " " + sub->get_name();
        out << ".SS \"" << roff(name) << "\"\n" << roff(sub->get_description()) << "\n";
        options(*sub, out);
        block(sub->get_footer(), out);
        subcommands(*sub, name, out);
    }
}

}  // namespace

void writeManPage(const CLI::App& commandLine, std::ostream& out) {
    out << ".TH VELTO\\-SETTINGS 1 \"\" \"velto-settings " << VELTO_VERSION
        << "\" \"User Commands\"\n"
        << ".SH NAME\nvelto\\-settings \\- the Settings application for the VeltoSettings "
           "bundle, on a device root\n"
        << ".SH SYNOPSIS\n"
        << ".B velto\\-settings\n[\\fIOPTIONS\\fR] [\\fISTEP\\fR ...]\n.br\n"
        << ".B velto\\-settings\n[\\fIOPTIONS\\fR] \\fISUBCOMMAND\\fR ...\n"
        << ".SH DESCRIPTION\n"
        << roff(
               "Runs the bundle's pages as the Settings application does, on a device root "
               "folder: steps given as arguments, from a file, typed at a prompt, or watched "
               "as files change.")
        << "\n.SH OPTIONS\n";
    options(commandLine, out);
    out << ".SH SUBCOMMANDS\n";
    subcommands(commandLine, "velto-settings", out);
    out << ".SH STEPS\n";
    block(stepHelp(), out);
    out << ".SH \"EXIT STATUS\"\n";
    for (const auto& [status, meaning] : kExitStatuses)
        out << ".TP\n.B " << status << "\n" << roff(meaning) << "\n";
    out << ".SH ENVIRONMENT\n"
        << ".TP\n.B VELTO_RESOURCES\n"
        << roff("the bundle's resources folder, instead of the installed one") << "\n"
        << ".TP\n.B XDG_STATE_HOME\n"
        << roff(
               "where the demo device and the session history are kept "
               "(default: ~/.local/state)")
        << "\n"
        << ".TP\n.B NO_COLOR\n"
        << roff("set and not empty: no colour with --color=auto") << "\n"
        << ".SH FILES\n"
        << ".TP\n.I $XDG_STATE_HOME/velto\\-settings/demo\nthe demo device\n"
        << ".TP\n.I $XDG_STATE_HOME/velto\\-settings/history\n"
        << roff("the interactive session's history") << "\n";
}

}  // namespace velto::app
