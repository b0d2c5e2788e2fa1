// A folder that lives as long as the test.
#pragma once

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

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
  ~TTemporaryFolder() {
    namespace fs = std::filesystem;
    std::error_code error; // what is left in the system's temporary folder does no harm
    // Windows removes no file that may only be read.
    std::error_code walk;
    for (fs::recursive_directory_iterator at(path_, walk), end; !walk && at != end; at.increment(walk))
      if (at->is_regular_file(error) && !at->is_symlink(error))
        fs::permissions(at->path(), fs::perms::owner_write, fs::perm_options::add, error);
    fs::remove_all(path_, error);
  }
  TTemporaryFolder(const TTemporaryFolder&) = delete;
  TTemporaryFolder& operator=(const TTemporaryFolder&) = delete;

  std::u16string Path() const { return path_.u16string(); }
  std::u16string Path(std::string_view name) const { return Native(name).u16string(); }
  // The name is in UTF-8, with "/" as separator.
  std::filesystem::path Native(std::string_view name) const {
    return (path_ / text::FromUtf8(name)).make_preferred();
  }

  // The text, which may be JSON, with DIR for the folder, and in the path that follows it "/" on every
  // system.
  std::string Plain(std::string_view text) const {
    const std::u16string escaped = text::ReplaceAll(Path(), u"\\", u"\\\\");
    const std::u16string wide = text::ReplaceAll(text::FromUtf8(text), escaped, u"DIR");
    std::string plain = text::ToUtf8(text::ReplaceAll(wide, Path(), u"DIR"));
    for (std::size_t at = plain.find("DIR"); at != std::string::npos; at = plain.find("DIR", at))
      for (; at < plain.size() && std::string_view("\" \n").find(plain[at]) == std::string_view::npos; ++at)
        if (plain[at] == '\\') plain.replace(at, plain.compare(at, 2, "\\\\") == 0 ? 2 : 1, "/");
    return plain;
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
