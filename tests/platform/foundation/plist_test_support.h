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
#include <vector>

#include "platform/foundation/plist.h"

// Helpers shared by the property-list and keyed-archive tests.
namespace plisttest {

inline plat::Bytes readHostFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return plat::Bytes(std::istreambuf_iterator<char>(in), {});
}

// A file of shared/oracles, written by Apple's Foundation.
inline plat::Bytes oracle(const std::string& name) {
    return readHostFile(std::filesystem::path(VELTO_SHARED_DIR) / "oracles" / name);
}

inline plat::Bytes bytesOf(const std::string& text) {
    return plat::Bytes(text.begin(), text.end());
}

inline bool contains(const plat::Bytes& haystack, std::initializer_list<std::uint8_t> needle) {
    return std::search(haystack.begin(), haystack.end(), needle.begin(), needle.end()) !=
           haystack.end();
}

// Where two values differ in value or in kind (boolean, integer, unsigned, real...); "" if
// nowhere. operator== alone would take 1, 1.0 and true... as equal numbers.
inline std::string difference(const plat::Value& a, const plat::Value& b, const std::string& at) {
    if (a.type() != b.type() || a.isUnsignedBig() != b.isUnsignedBig() || !(a == b))
        return at + ": " + a.description() + " vs " + b.description();
    for (std::size_t i = 0; a.isArray() && i < a.count(); ++i)
        if (auto d =
                difference(a.objectAtIndex(i), b.objectAtIndex(i), at + "/" + std::to_string(i));
            !d.empty())
            return d;
    if (const auto* entries = a.asDictionary())
        for (const auto& [key, item] : *entries)
            if (auto d = difference(item, b.objectForKey(key), at + "/" + key); !d.empty())
                return d;
    return "";
}
inline void expectSame(const plat::Value& actual, const plat::Value& expected) {
    EXPECT_EQ(difference(actual, expected, ""), "");
}

// A binary plist put together by hand (objects as marker + payload, 4-byte references and
// offsets, root object 0), for files no writer would make.
inline plat::Bytes bplist(const std::vector<plat::Bytes>& objects) {
    plat::Bytes out = bytesOf("bplist00"), table;
    auto put = [](plat::Bytes& to, std::uint64_t v, int width) {
        for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
            to.push_back(v >> shift & 0xff);
    };
    for (const auto& object : objects) {
        put(table, out.size(), 4);
        out.insert(out.end(), object.begin(), object.end());
    }
    const std::uint64_t tableOffset = out.size();
    out.insert(out.end(), table.begin(), table.end());
    out.insert(out.end(), {0, 0, 0, 0, 0, 0, 4, 4});
    for (std::uint64_t field : {std::uint64_t(objects.size()), std::uint64_t{0}, tableOffset})
        put(out, field, 8);
    return out;
}

// An array object for bplist().
inline plat::Bytes array(std::initializer_list<std::uint64_t> refs) {
    plat::Bytes out{static_cast<std::uint8_t>(0xA0 | refs.size())};
    for (std::uint64_t ref : refs)
        for (int shift = 24; shift >= 0; shift -= 8)
            out.push_back(ref >> shift & 0xff);
    return out;
}

// `levels` arrays, each the only element of the one before.
inline plat::Bytes nestedBinary(std::size_t levels) {
    std::vector<plat::Bytes> objects;
    for (std::size_t i = 0; i + 1 < levels; ++i)
        objects.push_back(array({i + 1}));
    objects.push_back({0xA0});
    return bplist(objects);
}
inline plat::Bytes nestedXml(std::size_t levels) {
    std::string open, close;
    for (std::size_t i = 0; i < levels; ++i)
        open += "<array>", close += "</array>";
    return bytesOf("<plist version=\"1.0\">" + open + close + "</plist>");
}
inline plat::Value nestedValue(std::size_t levels) {
    plat::Value v = plat::Value::array();
    for (std::size_t i = 1; i < levels; ++i)
        v = plat::Value::array({v});
    return v;
}
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
