#include "app/docs/bash_completion.h"

#include <CLI/CLI.hpp>
#include <map>

#include "app/session/step.h"

namespace velto::app {

namespace {

// Subcommands that take their arguments unparsed, with the words they know.
const std::map<std::string, std::string> kUnparsedWords = {
    {" plutil", "-lint -p -convert -o"},
    {" defaults write", "-bool -int -float -string -data -date -array -array-add -dict -dict-add"}};

// The choices a validator allows, from a type name such as "TEXT:{auto,always,never}".
std::string choicesOf(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    const std::size_t open = type.find('{');
    const std::size_t close = type.find('}', open);
    if (open == std::string::npos || close == std::string::npos) return "";
    std::string choices = type.substr(open + 1, close - open - 1);
    for (char& c : choices)
        if (c == ',') c = ' ';
    return choices;
}

struct Level {
    std::string words;   // options and subcommands
    bool files = false;  // a positional argument: a file, folder or step
};

void collect(const CLI::App& command, const std::string& path, std::map<std::string, Level>& levels,
             std::map<std::string, std::string>& valueOptions) {
    Level& level = levels[path];
    for (const CLI::Option* option : command.get_options([](const CLI::Option*) { return true; })) {
        if (option->get_positional()) {
            level.files = true;
            continue;
        }
        for (const std::string& name : option->get_lnames()) {
            level.words += " --" + name;
            if (option->get_expected_max() > 0) valueOptions["--" + name] = choicesOf(*option);
        }
    }
    for (const CLI::App* sub : command.get_subcommands([](const CLI::App*) { return true; })) {
        level.words += " " + sub->get_name();
        collect(*sub, path + " " + sub->get_name(), levels, valueOptions);
    }
    if (const auto unparsed = kUnparsedWords.find(path); unparsed != kUnparsedWords.end()) {
        levels[path].words += " " + unparsed->second;
        levels[path].files = true;
    }
}

}  // namespace

void writeBashCompletion(const CLI::App& commandLine, std::ostream& out) {
    std::map<std::string, Level> levels;
    std::map<std::string, std::string> valueOptions;
    collect(commandLine, "", levels, valueOptions);
    // At the top a positional argument is a step, not a file.
    levels[""].files = false;
    for (const auto& [word, takesArgument] : stepWords())
        levels[""].words += " " + word;

    std::string subcommandPaths;
    for (const auto& [path, level] : levels)
        if (!path.empty()) subcommandPaths += "|" + path;

    out << "# bash completion for velto-settings, made from its own command line.\n"
        << "_velto_settings() {\n"
        << "    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}\n"
        << "    local path= i word\n"
        << "    for ((i = 1; i < COMP_CWORD; i++)); do\n"
        << "        word=${COMP_WORDS[i]}\n"
        << "        case $word in\n";
    std::string takingValues;
    for (const auto& [name, choices] : valueOptions)
        takingValues += (takingValues.empty() ? "" : "|") + name;
    out << "            " << takingValues << ") ((i++)); continue ;;\n"
        << "        esac\n"
        << "        [[ \"" << subcommandPaths << "|\" == *\"|${path} ${word}|\"* ]] && "
        << "path=\"${path} ${word}\"\n"
        << "    done\n"
        << "    case $prev in\n";
    for (const auto& [name, choices] : valueOptions) {
        out << "        " << name << ") ";
        if (choices.empty())
            out << "COMPREPLY=($(compgen -f -- \"$cur\")); compopt -o filenames 2>/dev/null";
        else
            out << "COMPREPLY=($(compgen -W \"" << choices << "\" -- \"$cur\"))";
        out << "; return ;;\n";
    }
    out << "        -convert) COMPREPLY=($(compgen -W \"xml1 binary1 json\" -- \"$cur\")); "
           "return ;;\n"
        << "    esac\n"
        << "    local words= files=\n"
        << "    case $path in\n";
    for (const auto& [path, level] : levels)
        out << "        \"" << path << "\") words=\"" << level.words.substr(1) << " --help\""
            << (level.files ? "; files=1" : "") << " ;;\n";
    out << "    esac\n"
        << "    COMPREPLY=($(compgen -W \"$words\" -- \"$cur\"))\n"
        << "    if [[ -n $files && $cur != -* ]]; then\n"
        << "        COMPREPLY+=($(compgen -f -- \"$cur\"))\n"
        << "        compopt -o filenames 2>/dev/null\n"
        << "    fi\n"
        << "}\n"
        << "complete -F _velto_settings velto-settings\n";
}

}  // namespace velto::app
