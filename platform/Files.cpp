#include "platform/Files.h"

#include <array>

namespace kx::platform {

Result<std::string> ReadFile(std::u16string_view path) {
  Result<FileReader> reader = FileReader::Open(path);
  if (!reader) return Failure{reader.Message()};
  std::string bytes;
  bytes.reserve(static_cast<std::size_t>(reader->Size()));
  std::array<char, 65536> block; // appending blocks spares the zeroing of a large text
  for (;;) {
    const Result<std::size_t> count = reader->Read(block.data(), block.size());
    if (!count) return Failure{count.Message()};
    if (*count == 0) return bytes;
    bytes.append(block.data(), *count);
  }
}

} // namespace kx::platform
