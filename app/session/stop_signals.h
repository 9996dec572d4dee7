#pragma once

#include <csignal>
#include <initializer_list>
#include <vector>

namespace velto::app {

// For as long as it lives, the given signals (Ctrl-C's SIGINT by default) end the loop that
// asks `requested()` instead of the program: a watch or a server then closes what it holds.
// The handlers in place before are put back when it goes.
class StopSignals {
  public:
    explicit StopSignals(std::initializer_list<int> signals = {SIGINT});
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    static bool requested();

  private:
    std::vector<std::pair<int, struct sigaction>> previous_;
};

}  // namespace velto::app
