#pragma once

#include <string>
#include <type_traits>

#include "platform/prefs/runtime.h"
#include "platform/prefs/specifier.h"

namespace plat {

// Registers the two method shapes specifier lists name on `Class`: setters "name:specifier:"
// taking the new value and the row, and actions "name:" taking the row. The class is named
// apart from the member, which may be inherited: a member pointer names the class that
// declares it, not the one the selector is registered on.
template <class Class, class T>
void addSetter(Runtime& runtime, const std::string& selector,
               void (T::*member)(const Value&, const SpecifierPtr&)) {
    static_assert(std::is_base_of_v<T, Class>, "the setter must be a member of the class");
    runtime.addMethod(Class::kClassName, selector,
                      bindMethod<T>([member](T& self, const Arguments& args) {
                          (self.*member)(argumentAt(args, 0), argumentAt(args, 1).as<Specifier>());
                          return Value();
                      }));
}

template <class Class, class T>
void addAction(Runtime& runtime, const std::string& selector,
               void (T::*member)(const SpecifierPtr&)) {
    static_assert(std::is_base_of_v<T, Class>, "the action must be a member of the class");
    runtime.addMethod(Class::kClassName, selector,
                      bindMethod<T>([member](T& self, const Arguments& args) {
                          (self.*member)(argumentAt(args, 0).as<Specifier>());
                          return Value();
                      }));
}

}  // namespace plat
