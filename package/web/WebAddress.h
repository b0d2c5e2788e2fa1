// The parts of a web address.
#pragma once

#include <string>
#include <string_view>

namespace kx {

// "http://user@host:8080/a/b%20c/file.cs?x#y": host "host", port "8080", path "/a/b c/", document "file.cs".
struct TWebAddress {
  bool IsSecure = false; // "https://"
  std::u16string Host;   // "[::1]" with its brackets
  std::u16string Port;   // as written; empty when absent
  std::u16string Path;   // the folders with leading and trailing "/"; empty when nothing follows the host
  std::u16string Document;
};

// Whether a solution names a project by an address on a web server: with "http://" or "https://" anywhere, in
// any letter case.
bool IsWebAddress(std::u16string_view location);

// Percent escapes are decoded once, as UTF-8; a raw "\" counts as "/". Raises EKxException for an address
// without a server, and for a segment that would be something else on a disk: "..", "a%2Fb", control
// characters.
TWebAddress ParseWebAddress(std::u16string_view url);

// A name that stays in the folder it is put into, on Windows too: no separators, drives, streams or devices
// (NUL, COM1.txt), no trailing dot or blank.
bool IsPlainFileName(std::u16string_view name);

std::u16string AddTrailingSlash(std::u16string_view text); // empty stays empty
std::u16string RemoveTrailingSlash(std::u16string_view text);
std::u16string TrimSlashes(std::u16string_view text); // one at each end
// "/a/b/" becomes "/a", and "b" is the result. Without a "/" before a name nothing is split off.
std::u16string SplitLastSegment(std::u16string& path);

} // namespace kx
