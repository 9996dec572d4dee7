#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace plat {

class Journal;
class DeviceRoot;

// What an interceptor answers for a command it takes: the exit status and the standard output.
struct ShellResult {
    int status = 0;
    std::string output;
};

// An open popen stream.
class Pipe {
  public:
    virtual ~Pipe() = default;
    // fgets: at most size-1 bytes, stopping after a newline; false at end of input or error.
    virtual bool fgets(char* buffer, int size) = 0;
    // pclose: the wait status (0 when the command exited with 0).
    virtual int pclose() = 0;
};

// popen/pclose and system, run for real through /bin/sh with the device root as working
// directory and the device's package database as dpkg's admin directory. The exact command
// line is journaled. An interceptor may take chosen commands instead (the simulator turns
// "killall backboardd" into a user-interface restart); those never reach the host.
class Shell {
  public:
    using Interceptor = std::function<std::optional<ShellResult>(const std::string& command)>;

    Shell(Journal& journal, const DeviceRoot& root) : journal_(journal), root_(root) {}

    void setInterceptor(Interceptor interceptor) { interceptor_ = std::move(interceptor); }

    // popen results by command line, as wait status and whole output. A tool that builds the
    // same pages thousands of times over a device that does not change (the resource check)
    // hands one in: each command then runs once and is replayed from it afterwards.
    using RememberedOutputs = std::map<std::string, std::pair<int, std::string>>;
    void rememberOutputsIn(std::shared_ptr<RememberedOutputs> outputs) {
        remembered_ = std::move(outputs);
    }

    // popen(command, mode); only mode "r" is supported. nullptr when the command cannot start.
    std::unique_ptr<Pipe> popen(const std::string& command, const std::string& mode);
    // system(command): the wait status.
    int system(const std::string& command);

  private:
    Journal& journal_;
    const DeviceRoot& root_;
    Interceptor interceptor_;
    std::shared_ptr<RememberedOutputs> remembered_;
};

}  // namespace plat
