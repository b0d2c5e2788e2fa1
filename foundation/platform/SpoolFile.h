// The system's part of Spool.
#pragma once

#include "foundation/platform/Spool.h"

namespace kx::platform {

class Spool::File {
public:
  static Result<std::unique_ptr<File>> Make(std::u16string_view folder);
  ~File();
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  Status Append(std::string_view bytes);
  // Nothing less than `size` bytes.
  Status Read(std::uint64_t from, char* buffer, std::size_t size) const;

private:
  struct State;
  explicit File(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};

} // namespace kx::platform
