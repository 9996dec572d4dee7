#pragma once

#include <string>

#include "platform/prefs/runtime.h"
#include "platform/prefs/specifier.h"

namespace plat {

// Registers the two method shapes specifier lists name: setters "name:specifier:" taking the
// new value and the row, and actions "name:" taking the row.
template <class T>
void addSetter(Runtime& runtime, const std::string& className, const std::string& selector,
               void (T::*member)(const Value&, const SpecifierPtr&)) {
    runtime.addMethod(className, selector, bindMethod<T>([member](T& self, const Arguments& args) {
                          (self.*member)(argumentAt(args, 0), argumentAt(args, 1).as<Specifier>());
                          return Value();
                      }));
}

template <class T>
void addAction(Runtime& runtime, const std::string& className, const std::string& selector,
               void (T::*member)(const SpecifierPtr&)) {
    runtime.addMethod(className, selector, bindMethod<T>([member](T& self, const Arguments& args) {
                          (self.*member)(argumentAt(args, 0).as<Specifier>());
                          return Value();
                      }));
}

}  // namespace plat
