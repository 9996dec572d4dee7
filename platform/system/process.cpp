#include "platform/system/process.h"

#include "platform/system/host_device_root.h"

#include <atomic>
#include <memory>
#include <stdexcept>
#include <system_error>

namespace plat {

namespace {

// Not thread_local: the Darwin delivery thread and any worker the code starts run "in" the
// same process as the thread that made it current.
std::atomic<Process*> currentProcess{nullptr};

// A fresh device starts as an empty folder; pointing a process at a path that does not exist
// yet creates it (with its parents) rather than failing on the first file operation.
std::shared_ptr<DeviceRoot> preparedRoot(std::filesystem::path root) {
    std::error_code ec;
    std::filesystem::create_directories(root, ec);
    if (ec || !std::filesystem::is_directory(root))
        throw std::system_error(ec ? ec : std::make_error_code(std::errc::not_a_directory),
                                "device root " + root.string());
    return std::make_shared<HostDeviceRoot>(std::move(root));
}

}  // namespace

Process::Process(std::filesystem::path deviceRoot) : Process(std::move(deviceRoot), Options{}) {}

Process::Process(std::filesystem::path deviceRoot, Options options)
    : Process(preparedRoot(std::move(deviceRoot)), std::move(options)) {}

Process::Process(std::shared_ptr<DeviceRoot> deviceRoot, Options options)
    : options_(std::move(options)),
      root_(std::move(deviceRoot)),
      logger_(journal_, options_.name),
      notificationCenter_(journal_),
      messageCenters_(journal_),
      shell_(journal_, *root_),
      darwin_(journal_) {
    if (!options_.echoLog) logger_.setSink([](const std::string&) {});
}

Process::~Process() {
    // A scope that outlives its process must not leave a dangling current process behind.
    Process* self = this;
    currentProcess.compare_exchange_strong(self, nullptr);
}

Process& Process::current() {
    Process* process = currentProcess.load();
    if (!process) throw std::logic_error("no current process");
    return *process;
}

Process* Process::tryCurrent() {
    return currentProcess.load();
}

void Process::record(JournalEntry entry) {
    if (Process* process = tryCurrent()) process->journal().append(std::move(entry));
}

ProcessScope::ProcessScope(Process& process) : previous_(currentProcess.exchange(&process)) {}

ProcessScope::~ProcessScope() {
    currentProcess.store(previous_);
}

DeviceFacts Process::deviceFacts() const {
    if (factObserver_) factObserver_("all");
    return DeviceFacts::read(*root_);
}

DeviceFamily Process::deviceFamily() const {
    if (factObserver_) factObserver_("family");
    return DeviceFacts::read(*root_).family;
}

bool Process::systemVersionAtLeast(int major, int minor) const {
    if (factObserver_) factObserver_("systemVersion");
    return DeviceFacts::read(*root_).systemVersionAtLeast(major, minor);
}

bool Process::hasFaceTime() const {
    if (factObserver_) factObserver_("faceTime");
    return DeviceFacts::read(*root_).faceTime;
}

double Process::screenScale() const {
    if (factObserver_) factObserver_("screenScale");
    return DeviceFacts::read(*root_).screenScale;
}

}  // namespace plat
