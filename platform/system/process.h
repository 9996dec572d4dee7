#pragma once

#include <any>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <type_traits>

#include "platform/system/darwin_notify_center.h"
#include "platform/system/device_facts.h"
#include "platform/system/device_root.h"
#include "platform/system/journal.h"
#include "platform/system/log.h"
#include "platform/system/main_queue.h"
#include "platform/system/message_center.h"
#include "platform/system/notification_center.h"
#include "platform/system/shell.h"
#include "platform/system/slot_key.h"

namespace plat {

// Process-wide slots (static variables of the bundle's code): message centers, cached product
// information, picker slots. Kept here so that a test can start a fresh "process".
class ProcessSlots {
  public:
    // The slot's current object (nullptr while empty).
    template <class T>
    std::shared_ptr<T> get(const SlotKey<T>& key) const {
        std::lock_guard lock(mutex_);
        auto it = slots_.find(key.name);
        return it == slots_.end() ? nullptr : std::any_cast<std::shared_ptr<T>>(it->second);
    }
    template <class T>
    void set(const SlotKey<T>& key, std::type_identity_t<std::shared_ptr<T>> object) {
        std::lock_guard lock(mutex_);
        slots_[key.name] = std::move(object);
    }
    // The slot's object, made by `make` when the slot is empty. Safe from any thread: the
    // shared-settings object is first reached from notification delivery threads too.
    template <class T>
    std::shared_ptr<T> getOrMake(
        const SlotKey<T>& key,
        const std::type_identity_t<std::function<std::shared_ptr<T>()>>& make) {
        std::lock_guard lock(mutex_);
        auto& slot = slots_[key.name];
        if (!slot.has_value() || !std::any_cast<std::shared_ptr<T>>(slot)) slot = make();
        return std::any_cast<std::shared_ptr<T>>(slot);
    }
    void clear() {
        std::lock_guard lock(mutex_);
        slots_.clear();
    }

  private:
    mutable std::mutex mutex_;
    std::map<std::string, std::any> slots_;
};

// One running Settings application: its device, journal, notification centers, main queue,
// message centers, shell, log and process-wide slots. Code reaches the current one through
// Process::current(), as Objective-C code reaches its process's singletons.
class Process {
  public:
    struct Options {
        std::string name = "Preferences";
        bool echoLog = true;  // NSLog lines to standard error
    };

    // A device in a host folder, made (with its parents) when it is not there yet.
    explicit Process(std::filesystem::path deviceRoot);
    Process(std::filesystem::path deviceRoot, Options options);
    // Any device: one in memory, say.
    Process(std::shared_ptr<DeviceRoot> deviceRoot, Options options);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // The process the code runs in. Throws std::logic_error when none is current.
    static Process& current();
    static Process* tryCurrent();
    // Journals an event of the current process. Code may run outside any process (a unit
    // test of a page's pieces); it then leaves no trace.
    static void record(JournalEntry entry);

    const std::string& name() const { return options_.name; }
    DeviceRoot& root() { return *root_; }
    // For what must keep the device beyond a call (the extension's answers).
    const std::shared_ptr<DeviceRoot>& sharedRoot() { return root_; }
    Journal& journal() { return journal_; }
    Logger& logger() { return logger_; }
    DarwinNotifyCenter& darwin() { return darwin_; }
    NotificationCenter& notificationCenter() { return notificationCenter_; }
    MainQueue& mainQueue() { return mainQueue_; }
    MessageCenters& messageCenters() { return messageCenters_; }
    Shell& shell() { return shell_; }
    ProcessSlots& slots() { return slots_; }
    // Read afresh from the device root on every call.
    DeviceFacts deviceFacts() const;
    // One fact at a time, read afresh as well. Code that needs one fact asks for that one, so
    // that a tool watching what a run depends on (the resource check) learns which it used.
    DeviceFamily deviceFamily() const;
    bool systemVersionAtLeast(int major, int minor = 0) const;
    bool hasFaceTime() const;
    double screenScale() const;

    // Told the name of every fact asked for ("family", "systemVersion", "faceTime",
    // "screenScale"; "all" for deviceFacts()), from any thread.
    using FactObserver = std::function<void(const char* fact)>;
    void setFactObserver(FactObserver observer) { factObserver_ = std::move(observer); }

  private:
    Options options_;
    std::shared_ptr<DeviceRoot> root_;
    Journal journal_;
    Logger logger_;
    NotificationCenter notificationCenter_;
    MainQueue mainQueue_;
    MessageCenters messageCenters_;
    Shell shell_;
    ProcessSlots slots_;
    FactObserver factObserver_;
    DarwinNotifyCenter darwin_;  // last: its delivery thread stops first
};

// Makes a process current for a scope (a test, the simulator's run) and restores the
// previous one afterwards.
class ProcessScope {
  public:
    explicit ProcessScope(Process& process);
    ~ProcessScope();
    ProcessScope(const ProcessScope&) = delete;
    ProcessScope& operator=(const ProcessScope&) = delete;

  private:
    Process* previous_;
};

}  // namespace plat
