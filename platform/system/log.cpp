#include "platform/system/log.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <ctime>

#include "platform/system/journal.h"
#include "platform/system/process.h"

namespace plat {

namespace {

void toStandardError(const std::string& line) {
    std::string withNewline = line + "\n";
    std::fwrite(withNewline.data(), 1, withNewline.size(), stderr);
}

long threadId() {
    return static_cast<long>(::syscall(SYS_gettid));
}

}  // namespace

void Logger::log(const std::string& message) {
    std::string line = formatLine(message);
    // One lock around both: the journal and the sink see lines from several threads in the
    // same order.
    std::lock_guard lock(mutex_);
    journal_.log(message);
    if (sink_)
        sink_(line);
    else
        toStandardError(line);
}

void Logger::setSink(std::function<void(const std::string& line)> sink) {
    std::lock_guard lock(mutex_);
    sink_ = std::move(sink);
}

std::string Logger::formatLine(const std::string& message) const {
    using namespace std::chrono;
    auto now = system_clock::now();
    std::time_t seconds = system_clock::to_time_t(now);
    auto millis = duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000;
    if (millis < 0) millis += 1000;
    std::tm local{};
    ::localtime_r(&seconds, &local);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", &local);
    char head[128];
    std::snprintf(head, sizeof head, "%s.%03d ", stamp, static_cast<int>(millis));
    char ids[64];
    std::snprintf(ids, sizeof ids, "[%d:%lx] ", static_cast<int>(::getpid()),
                  static_cast<unsigned long>(threadId()));
    std::string line = head;
    line += processName_;
    line += ids;
    line += message;
    return line;
}

void NSLog(const std::string& message) {
    if (Process* process = Process::tryCurrent()) {
        process->logger().log(message);
        return;
    }
    // Outside any process (a tool's start-up, say) the line still reaches standard error.
    toStandardError(message);
}

}  // namespace plat
