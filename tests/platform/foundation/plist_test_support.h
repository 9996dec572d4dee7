#pragma once

#include <unistd.h>

#include <algorithm>
#include <cstdio>
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

// A binary plist put together by hand (objects as raw marker + payload), so
// tests can make files no writer would: cycles, shared children, dangling references.
// References are 4 bytes.
inline plat::Bytes bplist(const std::vector<plat::Bytes>& objects) {
    plat::Bytes out = bytesOf("bplist00");
    std::vector<std::uint64_t> offsets;
    for (const auto& object : objects) {
        offsets.push_back(out.size());
        out.insert(out.end(), object.begin(), object.end());
    }
    const std::uint64_t table = out.size();
    for (std::uint64_t offset : offsets)
        for (int shift = 24; shift >= 0; shift -= 8)
            out.push_back(offset >> shift & 0xff);
    out.insert(out.end(), 6, 0);
    out.push_back(4);  // offset size
    out.push_back(4);  // reference size
    for (std::uint64_t field : {std::uint64_t(objects.size()), std::uint64_t{0}, table})
        for (int shift = 56; shift >= 0; shift -= 8)
            out.push_back(field >> shift & 0xff);
    return out;
}

// An array object of bplist() referring to the given objects.
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
    std::string text = "<plist version=\"1.0\">";
    for (std::size_t i = 0; i < levels; ++i)
        text += "<array>";
    for (std::size_t i = 0; i < levels; ++i)
        text += "</array>";
    return bytesOf(text + "</plist>");
}

inline plat::Value nestedValue(std::size_t levels) {
    plat::Value v = plat::Value::array();
    for (std::size_t i = 1; i < levels; ++i)
        v = plat::Value::array({v});
    return v;
}

// How many arrays are nested at the first element of each.
inline std::size_t depthOf(plat::Value v) {
    std::size_t depth = 0;
    for (; v.isArray(); ++depth)
        v = v.count() ? v.objectAtIndex(0) : plat::Value();
    return depth;
}

// Runs a Python snippet over `input` (as `data`); the snippet sets `result` to a property list
// in bytes, which is read back. nil when Python fails.
inline plat::Value throughPlistlib(const plat::Bytes& input, const std::string& snippet) {
    const auto dir =
        std::filesystem::temp_directory_path() / ("velto-plistlib-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    std::ofstream(dir / "in", std::ios::binary)
        .write(reinterpret_cast<const char*>(input.data()), input.size());
    std::ofstream(dir / "run.py") << "import plistlib, datetime\n"
                                  << "data = open('" << (dir / "in").string() << "', 'rb').read()\n"
                                  << snippet << "\n"
                                  << "open('" << (dir / "out").string()
                                  << "', 'wb').write(result)\n";
    const std::string command = "python3 '" + (dir / "run.py").string() + "'";
    const bool ok = std::system(command.c_str()) == 0;
    plat::Value value = ok ? plat::propertyListFromData(readHostFile(dir / "out")) : plat::Value();
    std::filesystem::remove_all(dir);
    return value;
}

}  // namespace plisttest
