// What a file has beside its content, for the file that takes its place.
#pragma once

#include <string>
#include <sys/stat.h>

namespace kx::platform::posix {

// Owner, group, mode, access control list and the other extended attributes of `old` go to the open file,
// which nobody else can read before (it was made with the mode 0600). Nothing is granted on the way that
// `old` does not grant. Empty, or why one of them cannot be kept; then the file is of no use. Labels that the
// system gives by its own rules ("security.*") are kept where it lets this user set them.
std::u16string TakeOverTraits(int file, const std::string& old, const struct stat& info);

// The same for a copy, which may belong to another user than its original: what cannot be had as it is there
// is for this user alone.
void TakeOverTraitsOrKeepPrivate(int file, const std::string& old, const struct stat& info);

} // namespace kx::platform::posix
