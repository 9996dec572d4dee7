#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace plat::testing {

// A fresh host folder per test, removed afterwards, so device roots never share state.
class TempFolder {
  public:
    TempFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "plat-system-XXXXXX");
        if (!::mkdtemp(pattern.data())) throw std::system_error(errno, std::generic_category());
        path_ = pattern;
    }
    ~TempFolder() {
        std::error_code ec;
        std::filesystem::remove_all(path_, ec);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

    // Writes a host file, making its folders.
    void write(const std::filesystem::path& relative, const std::string& text) const {
        std::filesystem::create_directories((path_ / relative).parent_path());
        std::ofstream(path_ / relative, std::ios::binary) << text;
    }

  private:
    std::filesystem::path path_;
};

}  // namespace plat::testing
