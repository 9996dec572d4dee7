#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/foundation/object.h"
#include "platform/foundation/value.h"

namespace plat {

using Arguments = std::vector<Value>;
// An instance method reachable by selector: (receiver, arguments) -> result (nil for void).
using Method = std::function<Value(Object& self, const Arguments& args)>;
// Makes an uninitialised instance (alloc); the caller sends the initialiser.
using Factory = std::function<ObjectPtr()>;

struct ClassInfo {
    std::string name;
    std::string superclass;  // "" for the root class
    Factory factory;         // empty: not instantiable by name
    std::string bundlePath;  // device path of the bundle holding the class ("" = none)
    std::map<std::string, Method> methods;
};

// The Objective-C runtime as far as specifier lists need it: classes by name (what
// NSClassFromString answers, absent included), their base-class chain, the bundle each class
// lives in, and selectors dispatched along the chain. Classes are code, not state, so the
// table is shared by every process; registration is idempotent.
class Runtime {
  public:
    static Runtime& shared();

    // Registers (or re-registers) a class and answers its record for adding methods.
    ClassInfo& registerClass(const std::string& name, const std::string& superclass,
                             Factory factory = {}, const std::string& bundlePath = "");
    // Registers an instantiable class from its C++ type: the names come from the types'
    // kClassName, so the runtime's class chain cannot drift from the C++ one, and alloc
    // makes a T.
    template <class T, class Base>
    ClassInfo& registerClass(const std::string& bundlePath = "") {
        static_assert(std::is_base_of_v<Base, T>, "a class is registered under its own base");
        return registerClass(
            T::kClassName, Base::kClassName, [] { return std::make_shared<T>(); }, bundlePath);
    }
    // Adds a method to a registered class.
    void addMethod(const std::string& className, const std::string& selector, Method method);

    bool classExists(const std::string& name) const;
    // The class and its ancestors, nearest first; just {name} for an unknown class.
    std::vector<std::string> classChain(const std::string& name) const;
    bool isSubclass(const std::string& name, const std::string& ancestor) const;
    // The bundle of the nearest class in the chain that names one ("" when none does).
    std::string bundlePathForClass(const std::string& name) const;
    // alloc of a class by name; nullptr when the class is unknown or has no factory.
    ObjectPtr instantiate(const std::string& name) const;

    bool respondsToSelector(const std::string& className, const std::string& selector) const;
    // objc_msgSend: walks the class chain of the receiver. Raises DispatchError ("unrecognized
    // selector") when nothing answers; never takes the host down by itself.
    Value perform(Object& receiver, const std::string& selector, const Arguments& args = {}) const;

  private:
    Runtime();
    const ClassInfo* find(const std::string& name) const;
    Method lookup(const std::string& className, const std::string& selector) const;

    mutable std::recursive_mutex mutex_;
    std::map<std::string, ClassInfo> classes_;
};

// Binds a member function of T as a selector's implementation. T must be the registered
// class (or derive from it); the receiver is cast with dynamic_cast.
template <class T>
Method bindMethod(std::function<Value(T&, const Arguments&)> body) {
    return [body = std::move(body)](Object& self, const Arguments& args) -> Value {
        auto* receiver = dynamic_cast<T*>(&self);
        if (!receiver) return Value();
        return body(*receiver, args);
    };
}

// The argument at an index, or nil when the caller passed fewer (as a missing register would
// read in a real message send with too few arguments: our callers never rely on it).
inline Value argumentAt(const Arguments& args, std::size_t index) {
    return index < args.size() ? args[index] : Value();
}

}  // namespace plat
