#pragma once

#include <functional>
#include <mutex>
#include <string>

namespace plat {

class Journal;

// NSLog: "<local date time.ms> <process>[<pid>:<tid>] <message>" on standard error, and the
// exact message text in the journal.
class Logger {
  public:
    Logger(Journal& journal, std::string processName)
        : journal_(journal), processName_(std::move(processName)) {}

    void log(const std::string& message);
    // Where formatted lines go (standard error by default; hosts may silence or capture them).
    void setSink(std::function<void(const std::string& line)> sink);
    std::string formatLine(const std::string& message) const;

  private:
    Journal& journal_;
    std::string processName_;
    std::mutex mutex_;
    std::function<void(const std::string&)> sink_;
};

// NSLog with the message already formatted (see format.h), on the current process.
void NSLog(const std::string& message);

}  // namespace plat
