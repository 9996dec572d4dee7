#pragma once

#include <iostream>
#include <string>
#include <vector>

namespace velto::app {

// `plutil` for the bundle's property lists, on host files:
//   -lint FILE...                         each FILE: OK, or why it is not a property list
//   -p FILE...                            each FILE printed for people (JSON with --json)
//   -convert xml1|binary1|json FILE... [-o OUT]   rewritten in place, or into OUT ("-":
//                                         standard output; one FILE only)
// `arguments` are what follows `plutil`. Answers the exit status: 0 when every file passed,
// 1 when one failed, 2 for arguments that make no command.
int runPlutil(const std::vector<std::string>& arguments, bool json, std::ostream& out = std::cout,
              std::ostream& err = std::cerr, std::istream& in = std::cin);

}  // namespace velto::app
