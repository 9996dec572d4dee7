#pragma once

#include <stdexcept>
#include <string>

namespace plat {

// Our stand-in for the platform's NSRangeException: raised where the real frameworks raise on an
// index past the end (array access, list-controller removals). Hosts catch it at the edge of a
// user action; nothing inside the platform swallows it.
class RangeError : public std::out_of_range {
  public:
    explicit RangeError(const std::string& what) : std::out_of_range(what) {}
};

// A message the runtime cannot deliver: unknown class or selector (NSInvalidArgumentException's
// "unrecognized selector"). Hosts report it; it never takes the host down.
class DispatchError : public std::runtime_error {
  public:
    explicit DispatchError(const std::string& what) : std::runtime_error(what) {}
};

// NSInvalidArgumentException for the cases the bundle can reach: a nil object put into a
// dictionary, a message the receiver does not understand.
class InvalidArgumentError : public std::invalid_argument {
  public:
    explicit InvalidArgumentError(const std::string& what) : std::invalid_argument(what) {}
};

}  // namespace plat
