#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/system/shell.h"

namespace velto::app {

// The simulator's answer to shell commands that would end the user interface of a real
// device ("killall backboardd", "killall SpringBoard", "sbreload"): the restart is asked for
// and the command reports success; it never reaches the host. Other killall targets do not
// exist in the simulator and report failure, also without reaching the host. Everything else
// (dpkg-query) runs for real: nullopt.
std::optional<plat::ShellResult> interceptRestart(const std::string& command,
                                                  const std::function<void()>& requestRestart);

}  // namespace velto::app
