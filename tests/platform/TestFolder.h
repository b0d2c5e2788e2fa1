// What tests of the file system share: a folder of the test's own, gone when the test ends, and changes of
// the environment that end with their scope.
#pragma once

#include "platform/Files.h"
#include "text/Encoding.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>

namespace kx::platform {

class ScopedVariable {
public:
  ScopedVariable(const char* name, const std::optional<std::string>& value) : name_(name) {
    if (const char* old = getenv(name)) old_ = old;
    Set(value);
  }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;
  ~ScopedVariable() { Set(old_); }

private:
  void Set(const std::optional<std::string>& value) const {
    if (value) {
      setenv(name_, value->c_str(), 1);
    } else {
      unsetenv(name_);
    }
  }

  const char* name_;
  std::optional<std::string> old_;
};

class TestFolder : public testing::Test {
protected:
  TestFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "kx-test-XXXXXX").string();
    root_ = mkdtemp(name.data());
  }
  ~TestFolder() override { std::filesystem::remove_all(root_); }

  std::filesystem::path Native(std::string_view name) const { return root_ / name; }
  // The path as the code under test gets it.
  std::u16string Path(std::string_view name) const { return text::FromUtf8(Native(name).string()); }

  void Write(std::string_view name, std::string_view bytes = "") const {
    std::filesystem::create_directories(Native(name).parent_path());
    std::ofstream(Native(name), std::ios::binary) << bytes;
  }

  std::string Read(std::string_view name) const {
    std::ifstream file(Native(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  std::size_t EntryCount() const {
    const std::filesystem::directory_iterator entries(root_);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
  }

private:
  std::filesystem::path root_;
};

} // namespace kx::platform
