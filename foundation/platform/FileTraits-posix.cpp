#include "foundation/platform/FileTraits-posix.h"
#include "foundation/platform/Posix.h"

#include "foundation/text/Encoding.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

namespace kx::platform::posix {

namespace {

constexpr const char* kAccessList = "system.posix_acl_access";
constexpr mode_t kModeBits = 07777;

// What the system gives in pieces of a size that it tells beforehand, and that may have changed by then.
template <typename TRead>
std::optional<std::string> ReadSized(const TRead& read) {
  for (;;) {
    const ssize_t size = read(nullptr, 0);
    if (size < 0) return std::nullopt;
    std::string value(static_cast<std::size_t>(size), '\0');
    const ssize_t filled = read(value.data(), value.size());
    if (filled >= 0 && filled <= size) return value.substr(0, static_cast<std::size_t>(filled));
    if (filled < 0 && errno != ERANGE) return std::nullopt;
  }
}

std::optional<std::string> AttributeOf(const std::string& path, const std::string& name) {
  return ReadSized(
      [&](char* buffer, std::size_t size) { return getxattr(path.c_str(), name.c_str(), buffer, size); });
}

std::optional<std::string> AttributeOf(int file, const std::string& name) {
  return ReadSized(
      [&](char* buffer, std::size_t size) { return fgetxattr(file, name.c_str(), buffer, size); });
}

// Nothing, with the error in errno, where they cannot be read.
std::optional<std::vector<std::string>> AttributeNames(const std::string& path) {
  const auto list =
      ReadSized([&](char* buffer, std::size_t size) { return listxattr(path.c_str(), buffer, size); });
  if (!list && errno != ENOTSUP) return std::nullopt;
  std::vector<std::string> names; // none where the file system knows no attributes
  for (std::size_t at = 0; list && at < list->size(); at += names.back().size() + 1)
    names.emplace_back(list->c_str() + at);
  return names;
}

std::u16string NotKept(std::string_view what, int error) {
  return u"Its " + text::FromUtf8(what) + u" cannot be kept: " + Reason(error);
}

std::u16string TakeOverAttribute(int file, const std::string& old, const std::string& name) {
  const auto value = AttributeOf(old, name);
  if (!value) return errno == ENODATA ? std::u16string() : NotKept("attribute " + name, errno);
  if (AttributeOf(file, name) == value) return {};
  const bool kept = fsetxattr(file, name.c_str(), value->data(), value->size(), 0) == 0;
  if (kept || (name.starts_with("security.") && (errno == EPERM || errno == EACCES || errno == ENOTSUP)))
    return {};
  return NotKept(name == kAccessList ? "access control list" : "attribute " + name, errno);
}

std::u16string TakeOverAttributes(int file, const std::string& old) {
  const auto names = AttributeNames(old);
  if (!names) return NotKept("attributes", errno);
  // The folder gives its new files a list that the old one need not have.
  const bool isListed = std::ranges::find(*names, kAccessList) != names->end();
  if (!isListed && fremovexattr(file, kAccessList) != 0 && errno != ENODATA && errno != ENOTSUP)
    return NotKept("access rights", errno);
  for (const auto& name : *names)
    if (auto refusal = TakeOverAttribute(file, old, name); !refusal.empty()) return refusal;
  return {};
}

std::u16string TakeOverOwner(int file, const struct stat& info) {
  struct stat made {};
  if (fstat(file, &made) != 0) return Reason(errno);
  if (made.st_uid == info.st_uid && made.st_gid == info.st_gid) return {};
  if (fchown(file, info.st_uid, info.st_gid) == 0) return {};
  if (errno != EPERM) return NotKept("owner", errno);
  return made.st_uid != info.st_uid ? u"It belongs to another user, and writing it would take it over"
                                    : u"It belongs to a group that this user is not in, which would lose it";
}

} // namespace

// The owner first: changing it takes special mode bits away. The mode last: until the list is there, the
// group's part of it means the group, afterwards it is the list's mask.
std::u16string TakeOverTraits(int file, const std::string& old, const struct stat& info) {
  if (auto refusal = TakeOverOwner(file, info); !refusal.empty()) return refusal;
  if (auto refusal = TakeOverAttributes(file, old); !refusal.empty()) return refusal;
  struct stat made {};
  if (fstat(file, &made) != 0) return Reason(errno);
  if (((made.st_mode ^ info.st_mode) & kModeBits) == 0) return {};
  return fchmod(file, info.st_mode & kModeBits) == 0 ? std::u16string() : NotKept("mode", errno);
}

void TakeOverTraitsOrKeepPrivate(int file, const std::string& old, const struct stat& info) {
  if (TakeOverTraits(file, old, info).empty()) return;
  fremovexattr(file, kAccessList);
  fchmod(file, S_IRUSR | S_IWUSR);
}

} // namespace kx::platform::posix
