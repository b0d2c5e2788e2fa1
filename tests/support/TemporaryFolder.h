// A folder that lives as long as the test.
#pragma once

#include "platform/Files.h"
#include "text/Encoding.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace kx::tests {

// A path of any system as text with "/" only, for comparing.
inline std::string Generic(std::string path) {
  std::ranges::replace(path, '\\', '/');
  return path;
}

class TTemporaryFolder {
public:
  TTemporaryFolder() {
    // The file reserves a name; a folder takes its place.
    path_ = *platform::CreateTemporaryFile(platform::TemporaryDirectory(), u"kxtest");
    std::filesystem::remove(path_);
    std::filesystem::create_directory(path_);
  }
  ~TTemporaryFolder() { std::filesystem::remove_all(path_); }
  TTemporaryFolder(const TTemporaryFolder&) = delete;
  TTemporaryFolder& operator=(const TTemporaryFolder&) = delete;

  std::u16string Path() const { return path_.u16string(); }
  std::u16string Path(std::string_view name) const { return Native(name).u16string(); }
  // The name is in UTF-8, with "/" as separator.
  std::filesystem::path Native(std::string_view name) const {
    return (path_ / text::FromUtf8(name)).make_preferred();
  }

  // Makes a file, its folders too; its full path.
  std::u16string Write(std::string_view name, std::string_view bytes = "") const {
    const std::filesystem::path file = Native(name);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
    return file.u16string();
  }

  std::string Read(std::string_view name) const {
    std::ifstream file(path_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

private:
  std::filesystem::path path_;
};

} // namespace kx::tests
