#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/value.h"

namespace plat {

// +[NSString stringWithFormat:] over Values instead of C varargs. Each conversion reads its
// argument the way the C type named by the conversion would be read from a Value:
//   %@          description (nil prints "(null)")
//   %d %i       signed decimal; %u unsigned; %x %X hex; %o octal. With no length modifier the
//               value is an int (32 bits), with h a short, hh a char, and with l, ll, q, z, t
//               or j a 64-bit integer, so %x of -1 is "ffffffff" and %llX is "FFFFFFFFFFFFFFFF".
//   %f %e %g %a (and capitals)  double
//   %s          the string's UTF-8; %c a character; %C a UTF-16 unichar; %p a pointer; %% a "%"
// Flags (-+ #0), width and precision, including "*", behave as in printf; widths of %@ and %s
// count UTF-16 units, as NSString lengths do. "%2$@" takes the second argument. A missing
// argument reads as nil (so "(null)" or 0) and an unknown conversion is copied as written. Text
// outside conversions, UTF-8 included, passes through untouched.
std::string stringWithFormat(std::string_view format, std::initializer_list<Value> args);
std::string stringWithFormat(std::string_view format, const std::vector<Value>& args);

}  // namespace plat
