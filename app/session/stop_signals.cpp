#include "app/session/stop_signals.h"

namespace velto::app {

namespace {

volatile std::sig_atomic_t stopRequested = 0;

void onStop(int) {
    stopRequested = 1;
}

}  // namespace

StopSignals::StopSignals(std::initializer_list<int> signals) {
    stopRequested = 0;
    struct sigaction action {};
    action.sa_handler = onStop;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0;  // no restart: a wait in progress ends at once
    for (int signal : signals) {
        struct sigaction before {};
        ::sigaction(signal, &action, &before);
        previous_.emplace_back(signal, before);
    }
}

StopSignals::~StopSignals() {
    for (const auto& [signal, before] : previous_)
        ::sigaction(signal, &before, nullptr);
}

bool StopSignals::requested() {
    return stopRequested != 0;
}

}  // namespace velto::app
