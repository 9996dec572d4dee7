#pragma once

#include <atomic>
#include <filesystem>
#include <memory>
#include <vector>

#include "platform/prefs/list_controller.h"
#include "platform/system/journal.h"
#include "platform/system/process.h"
#include "platform/ui/navigation_controller.h"

namespace velto::app {

// The Settings application hosting the bundle on one device: its process, the navigation
// stack of pages with the bundle's root page at the bottom, and the extension answering on
// the device's behalf. Made current for its whole life.
class Session {
  public:
    // Loads the bundle, starts the process on the device and shows the root page. Throws
    // std::runtime_error when the root page cannot be made.
    explicit Session(const std::filesystem::path& deviceRoot) : Session(deviceRoot, true) {}
    // With `startInterface` false the process runs but no page exists until
    // restartInterface(), so that a caller can look at a root page that fails to build.
    Session(const std::filesystem::path& deviceRoot, bool startInterface);
    // On any device, one in memory included.
    Session(std::shared_ptr<plat::DeviceRoot> device, bool startInterface);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    plat::Process& process() { return *process_; }
    std::shared_ptr<plat::ListController> topPage() const;
    std::size_t depth() const { return navigation_->viewControllers().size(); }
    // The pages on the navigation stack, the root page first.
    std::vector<std::shared_ptr<plat::ListController>> pages() const;

    // Taps a link row of the top page: makes its page with initForContentSize:, hands it the
    // row, pushes it and asks it for its rows. StepError when the row leads nowhere or its
    // page class does not exist yet; nothing is pushed then.
    // `made`, when given, receives the page as soon as it exists, so that a caller can look at
    // a page that failed.
    void open(const plat::SpecifierPtr& row, std::shared_ptr<plat::ListController>* made = nullptr);
    // Pops the top page, which is released. StepError at the root page.
    void back();

    // Runs the main queue and waits for notification delivery until both are quiet, and
    // carries out a restart of the user interface the bundle asked for meanwhile.
    void settle();

    // What the journal recorded since the previous call.
    std::vector<plat::JournalEntry> takeJournal();

    // Starts the user interface afresh, as a restart of it would: every page and every
    // process-wide object goes and the root page is made anew.
    void restartInterface();

    // How many times the user interface was restarted.
    int restarts() const { return restarts_; }

  private:
    void startUserInterface();
    plat::Size contentSize() const;

    Session(std::unique_ptr<plat::Process> process, bool startInterface);

    std::unique_ptr<plat::Process> process_;
    std::unique_ptr<plat::ProcessScope> scope_;
    std::shared_ptr<plat::NavigationController> navigation_;
    std::atomic<bool> restartRequested_{false};
    std::size_t journalMark_ = 0;
    int restarts_ = 0;
};

}  // namespace velto::app
