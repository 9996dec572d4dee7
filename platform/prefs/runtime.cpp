#include "platform/prefs/runtime.h"

#include <algorithm>

#include "platform/foundation/errors.h"
#include "platform/prefs/list_controller.h"

namespace plat {

namespace {

// The framework classes every preference bundle builds on, with their real ancestry.
void registerFrameworkClasses(Runtime& runtime) {
    runtime.registerClass("NSObject", "");
    runtime.registerClass("UIResponder", "NSObject");
    runtime.registerClass("UIViewController", "UIResponder");
    runtime.registerClass("PSViewController", "UIViewController");
    runtime.registerClass("PSListController", "PSViewController");
    runtime.registerClass("UIView", "UIResponder");
    runtime.registerClass("UITableViewCell", "UIView");
    runtime.registerClass("PSTableCell", "UITableViewCell");
    ListController::registerFrameworkMethods(runtime);
}

}  // namespace

Runtime& Runtime::shared() {
    static Runtime* runtime = [] {
        auto* r = new Runtime();
        registerFrameworkClasses(*r);
        return r;
    }();
    return *runtime;
}

Runtime::Runtime() = default;

ClassInfo& Runtime::registerClass(const std::string& name, const std::string& superclass,
                                  Factory factory, const std::string& bundlePath) {
    std::lock_guard lock(mutex_);
    ClassInfo& info = classes_[name];
    info.name = name;
    info.superclass = superclass;
    if (factory) info.factory = std::move(factory);
    if (!bundlePath.empty()) info.bundlePath = bundlePath;
    return info;
}

void Runtime::addMethod(const std::string& className, const std::string& selector, Method method) {
    std::lock_guard lock(mutex_);
    auto it = classes_.find(className);
    if (it == classes_.end())
        throw DispatchError("cannot add " + selector + " to unknown class " + className);
    it->second.methods[selector] = std::move(method);
}

const ClassInfo* Runtime::find(const std::string& name) const {
    auto it = classes_.find(name);
    return it == classes_.end() ? nullptr : &it->second;
}

bool Runtime::classExists(const std::string& name) const {
    std::lock_guard lock(mutex_);
    return find(name) != nullptr;
}

std::vector<std::string> Runtime::classChain(const std::string& name) const {
    std::lock_guard lock(mutex_);
    std::vector<std::string> chain;
    std::string current = name;
    // A registration mistake must not spin forever: a chain cannot be longer than the table.
    while (!current.empty() && chain.size() <= classes_.size()) {
        if (std::find(chain.begin(), chain.end(), current) != chain.end()) break;
        chain.push_back(current);
        const ClassInfo* info = find(current);
        if (!info) break;
        current = info->superclass;
    }
    return chain;
}

bool Runtime::isSubclass(const std::string& name, const std::string& ancestor) const {
    const auto chain = classChain(name);
    return std::find(chain.begin(), chain.end(), ancestor) != chain.end();
}

std::string Runtime::bundlePathForClass(const std::string& name) const {
    for (const std::string& cls : classChain(name)) {
        std::lock_guard lock(mutex_);
        const ClassInfo* info = find(cls);
        if (info && !info->bundlePath.empty()) return info->bundlePath;
    }
    return "";
}

ObjectPtr Runtime::instantiate(const std::string& name) const {
    Factory factory;
    {
        std::lock_guard lock(mutex_);
        const ClassInfo* info = find(name);
        if (!info || !info->factory) return nullptr;
        factory = info->factory;
    }
    return factory();
}

Method Runtime::lookup(const std::string& className, const std::string& selector) const {
    for (const std::string& cls : classChain(className)) {
        std::lock_guard lock(mutex_);
        const ClassInfo* info = find(cls);
        if (!info) continue;
        auto it = info->methods.find(selector);
        if (it != info->methods.end()) return it->second;
    }
    return {};
}

bool Runtime::respondsToSelector(const std::string& className, const std::string& selector) const {
    return static_cast<bool>(lookup(className, selector));
}

Value Runtime::perform(Object& receiver, const std::string& selector, const Arguments& args) const {
    Method method = lookup(receiver.className(), selector);
    if (!method)
        throw DispatchError("-[" + receiver.className() + " " + selector +
                            "]: unrecognized selector sent to instance");
    return method(receiver, args);
}

}  // namespace plat
