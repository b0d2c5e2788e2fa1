// What is put aside on disk until it is wanted, and files that are written from it.
#pragma once

#include "foundation/platform/Result.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace kx::platform {

// Takes the next bytes of a content; a failure ends it.
using PutBytes = std::function<Status(std::string_view bytes)>;

// Bytes in a file without a name, which is gone with its process however that ends. What fits into a small
// buffer makes no file. A failure to write (a full disk) is kept; what the file has not taken then is
// dropped, and what comes behind it, too.
class Spool {
public:
  explicit Spool(std::u16string folder); // in which the file is made
  ~Spool();
  Spool(const Spool&) = delete;
  Spool& operator=(const Spool&) = delete;

  void Append(std::string_view bytes); // all of them or, where there is no memory, none
  std::uint64_t Size() const { return written_ + buffer_.size(); }
  const Status& State() const { return state_; } // the failure to write, if there was one
  // As much of a range as there is, even behind a failure to write.
  Status CopyTo(const PutBytes& put, std::uint64_t begin, std::uint64_t end) const;
  // Everything that was appended, else State.
  Status CopyTo(const PutBytes& put) const { return state_ ? CopyTo(put, 0, Size()) : state_; }

private:
  class File; // the system's
  void Flush();

  std::u16string folder_;
  std::unique_ptr<File> file_;
  Status state_ = Done{};
  std::uint64_t written_ = 0;
  std::string buffer_; // behind what is written
};

// Puts a content, one piece after the other.
using WriteContent = std::function<Status(const PutBytes& put)>;

// As SaveFile, for a content that is never in memory as a whole. Where it fails, the old file stays.
Status SaveFileInPieces(std::u16string_view path, const WriteContent& content);

} // namespace kx::platform
