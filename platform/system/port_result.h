#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace plat {

// What an operation of the device port answers: its value, or why there is none. It reads
// like std::optional (a test, *, ->, value_or) so that a caller that only cares whether it
// worked stays short, and it carries the reason for those that tell the user.
template <class T>
class PortResult {
  public:
    PortResult(T value) : value_(std::move(value)) {}
    static PortResult failure(std::string why) {
        PortResult result;
        result.error_ = std::move(why);
        return result;
    }

    bool has_value() const { return value_.has_value(); }
    explicit operator bool() const { return has_value(); }
    const T& operator*() const& { return *value_; }
    T& operator*() & { return *value_; }
    T&& operator*() && { return std::move(*value_); }
    const T* operator->() const { return &*value_; }
    T* operator->() { return &*value_; }
    template <class U>
    T value_or(U&& fallback) const& {
        return value_.value_or(std::forward<U>(fallback));
    }
    // The value as a plain optional, for code that keeps no reason.
    operator std::optional<T>() const& { return value_; }
    operator std::optional<T>() && { return std::move(value_); }
    // Why there is no value; empty when there is one.
    const std::string& error() const { return error_; }

    // Compared as optionals are: no value equals nothing but no value.
    friend bool operator==(const PortResult& result, const T& value) {
        return result.value_ == value;
    }
    friend bool operator==(const PortResult& result, const std::optional<T>& other) {
        return result.value_ == other;
    }
    friend bool operator==(const PortResult& a, const PortResult& b) {
        return a.value_ == b.value_;
    }

  private:
    PortResult() = default;
    std::optional<T> value_;
    std::string error_;
};

// The answer of an operation that gives nothing back but whether it worked.
using PortStatus = PortResult<std::monostate>;
inline PortStatus portSuccess() {
    return PortStatus(std::monostate{});
}
inline PortStatus portFailure(std::string why) {
    return PortStatus::failure(std::move(why));
}

}  // namespace plat
