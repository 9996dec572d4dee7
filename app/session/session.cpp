#include "app/session/session.h"

#include <stdexcept>

#include "app/session/step_error.h"
#include "app/session/ui_restart.h"
#include "bundle/bundle_classes.h"
#include "device/extension_responder.h"
#include "platform/prefs/runtime.h"

namespace velto::app {

namespace {

const char* const kRootClass = "VeltoSettingsController";

plat::Process::Options processOptions() {
    plat::Process::Options options;
    options.name = "Preferences";
    // NSLog lines are journaled and shown with the page; they must not litter the terminal.
    options.echoLog = false;
    return options;
}

}  // namespace

Session::Session(const std::filesystem::path& deviceRoot, bool startInterface)
    : Session(std::make_unique<plat::Process>(deviceRoot, processOptions()), startInterface) {}

Session::Session(std::shared_ptr<plat::DeviceRoot> device, bool startInterface)
    : Session(std::make_unique<plat::Process>(std::move(device), processOptions()),
              startInterface) {}

Session::Session(std::unique_ptr<plat::Process> process, bool startInterface)
    : process_(std::move(process)),
      scope_(std::make_unique<plat::ProcessScope>(*process_)),
      navigation_(std::make_shared<plat::NavigationController>()) {
    velto::registerBundleClasses();
    process_->logger().setSink([](const std::string&) {});
    device::attachExtension(*process_);
    process_->shell().setInterceptor([this](const std::string& command) {
        return interceptRestart(command, [this] { restartRequested_ = true; });
    });
    if (!startInterface) return;
    startUserInterface();
    settle();
}

Session::~Session() {
    // Pages go before the process whose journal and slots they use.
    navigation_->clear();
    process_->shell().setInterceptor({});
}

plat::Size Session::contentSize() const {
    switch (process_->deviceFamily()) {
        case plat::DeviceFamily::iPad:
            return {768, 1024};
        case plat::DeviceFamily::iPod:
            return {320, 568};
        case plat::DeviceFamily::iPhone:
            break;
    }
    return {390, 844};
}

void Session::startUserInterface() {
    auto root = std::dynamic_pointer_cast<plat::ListController>(
        plat::Runtime::shared().instantiate(kRootClass));
    if (!root) throw std::runtime_error(std::string("the bundle has no class ") + kRootClass);
    if (!root->initForContentSize(contentSize()))
        throw std::runtime_error(std::string(kRootClass) + " answered nil to initForContentSize:");
    navigation_->setRootViewController(root);
    root->specifiers();
}

std::shared_ptr<plat::ListController> Session::topPage() const {
    return std::dynamic_pointer_cast<plat::ListController>(navigation_->topViewController());
}

std::vector<std::shared_ptr<plat::ListController>> Session::pages() const {
    std::vector<std::shared_ptr<plat::ListController>> pages;
    for (const auto& controller : navigation_->viewControllers())
        if (auto page = std::dynamic_pointer_cast<plat::ListController>(controller))
            pages.push_back(std::move(page));
    return pages;
}

void Session::open(const plat::SpecifierPtr& row, std::shared_ptr<plat::ListController>* made) {
    const std::string& className = row->detailControllerClass();
    if (className.empty())
        throw StepError("row '" + row->name().value_or("") + "' does not lead to a page");
    auto page = std::dynamic_pointer_cast<plat::ListController>(
        plat::Runtime::shared().instantiate(className));
    if (!page) {
        if (plat::Runtime::shared().classExists(className) &&
            plat::Runtime::shared().isSubclass(className, "PSListController"))
            throw StepError("page class " + className + " cannot be made");
        if (plat::Runtime::shared().classExists(className))
            throw StepError(className + " is not a settings page");
        throw StepError("page class " + className + " is not available yet");
    }
    if (!page->initForContentSize(contentSize()))
        throw StepError(className + " answered nil to initForContentSize:");
    page->setSpecifier(row);
    if (made) *made = page;
    // As UIKit loads a list controller's view: the rows are built first (the resource's title
    // with them), then viewDidLoad runs, and may build on that title. A page that fails to
    // build its rows never appears.
    page->specifiers();
    navigation_->pushViewController(page, true);
}

void Session::back() {
    if (depth() <= 1) throw StepError("already on the root page");
    navigation_->popViewControllerAnimated(true);
}

void Session::settle() {
    // A restart rebuilds the root page, which may ask for more work; a few rounds at most.
    for (int round = 0; round < 8; ++round) {
        for (int pass = 0; pass < 1000; ++pass) {
            process_->darwin().waitUntilDelivered();
            if (process_->mainQueue().drain() == 0) break;
        }
        if (!restartRequested_.exchange(false)) return;
        restartInterface();
    }
}

void Session::restartInterface() {
    // The whole interface goes, as when backboardd dies: every page and every process-wide
    // object the Settings application held.
    navigation_->clear();
    process_->slots().clear();
    ++restarts_;
    startUserInterface();
}

std::vector<plat::JournalEntry> Session::takeJournal() {
    auto entries = process_->journal().since(journalMark_);
    journalMark_ += entries.size();
    return entries;
}

}  // namespace velto::app
