#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>

#include "platform/foundation/plist.h"
#include "tests/support/test_device.h"

// Helpers shared by the property-list and keyed-archive tests.
namespace plisttest {

inline plat::Bytes readHostFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return plat::Bytes(std::istreambuf_iterator<char>(in), {});
}

// A file written by Apple's Foundation, kept in the test data.
inline plat::Bytes oracle(const std::string& name) {
    return readHostFile(testsupport::sourceDir() / "tests/data/oracles" / name);
}

using testsupport::bytesOf;

inline bool contains(const plat::Bytes& haystack, std::initializer_list<std::uint8_t> needle) {
    return std::search(haystack.begin(), haystack.end(), needle.begin(), needle.end()) !=
           haystack.end();
}

// Where two values differ in value or in kind (boolean, integer, unsigned, real...); "" if
// nowhere. operator== alone would take 1, 1.0 and true... as equal numbers.
inline std::string difference(const plat::Value& a, const plat::Value& b, const std::string& at) {
    if (a.type() != b.type() || a.isUnsignedBig() != b.isUnsignedBig() || !(a == b))
        return at + ": " + a.description() + " vs " + b.description();
    std::string d;
    for (std::size_t i = 0; a.isArray() && i < a.count() && d.empty(); ++i)
        d = difference(a.objectAtIndex(i), b.objectAtIndex(i), at + "/" + std::to_string(i));
    if (const auto* entries = a.asDictionary())
        for (auto it = entries->begin(); it != entries->end() && d.empty(); ++it)
            d = difference(it->second, b.objectForKey(it->first), at + "/" + it->first);
    return d;
}
inline void expectSame(const plat::Value& actual, const plat::Value& expected) {
    EXPECT_EQ(difference(actual, expected, ""), "");
}

// How many arrays deep the first elements go.
inline std::size_t depthOf(plat::Value v) {
    std::size_t depth = 0;
    for (; v.isArray(); ++depth)
        v = v.count() ? v.objectAtIndex(0) : plat::Value();
    return depth;
}

inline bool hasPlistlib() {
    return std::system("python3 -c 'import plistlib' >/dev/null 2>&1") == 0;
}

// Runs a Python snippet with `data` holding `input`; the snippet sets `result` to a property
// list in bytes, which is read back. nil when Python fails.
inline plat::Value throughPlistlib(const plat::Bytes& input, const std::string& snippet) {
    const auto dir =
        std::filesystem::temp_directory_path() / ("velto-plistlib-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    std::ofstream(dir / "in", std::ios::binary)
        .write(reinterpret_cast<const char*>(input.data()), input.size());
    std::ofstream(dir / "run.py") << "import plistlib, datetime\ndata = open('"
                                  << (dir / "in").string() << "', 'rb').read()\n"
                                  << snippet << "\nopen('" << (dir / "out").string()
                                  << "', 'wb').write(result)\n";
    const bool ok = std::system(("python3 '" + (dir / "run.py").string() + "'").c_str()) == 0;
    plat::Value value = ok ? plat::propertyListFromData(readHostFile(dir / "out")) : plat::Value();
    std::filesystem::remove_all(dir);
    return value;
}

}  // namespace plisttest
