#include "app/commands/host_files.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace velto::app {

std::optional<plat::Bytes> readHostFile(const std::string& path, std::istream& standardInput) {
    std::ifstream file;
    if (path != "-") {
        std::error_code ec;
        // A folder or a FIFO is not a file to read whole.
        if (!std::filesystem::is_regular_file(path, ec)) return std::nullopt;
        file.open(path, std::ios::binary);
        if (!file) return std::nullopt;
    }
    std::istream& in = path == "-" ? standardInput : file;
    plat::Bytes bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>{});
    if (in.bad()) return std::nullopt;
    return bytes;
}

bool writeHostFile(const std::string& path, const plat::Bytes& bytes,
                   std::ostream& standardOutput) {
    const auto write = [&](std::ostream& out) {
        out.write(reinterpret_cast<const char*>(bytes.data()),
                  static_cast<std::streamsize>(bytes.size()));
        out.flush();
        return static_cast<bool>(out);
    };
    if (path == "-") return write(standardOutput);
    const std::filesystem::path target(path);
    const std::filesystem::path aside = target.parent_path() / ("." + target.filename().string() +
                                                                "." + std::to_string(::getpid()));
    {
        std::ofstream out(aside, std::ios::binary | std::ios::trunc);
        if (!out || !write(out)) {
            std::error_code ec;
            std::filesystem::remove(aside, ec);
            return false;
        }
    }
    std::error_code ec;
    std::filesystem::rename(aside, target, ec);
    if (!ec) return true;
    std::filesystem::remove(aside, ec);
    return false;
}

}  // namespace velto::app
