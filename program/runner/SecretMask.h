// Keeps secrets out of what is shown.
#pragma once

#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace kx {

// Puts "***" in the place of each secret, as it stands and in the spellings that tools have for it: encoded
// for an address (either letter case, "+" for a blank, any part of it), in XML or JSON, as the argument of a
// command line (of Windows, of a shell, of cmd), one of the first three within another, and in Base64 (of
// UTF-8 and of UTF-16, at each position in a longer text, "user:password" among them). A secret of several
// lines is looked for line by line, too, since a log is.
//
// Linear in the text, whatever the number of secrets. May be used from several threads at once.
class TSecretMask {
public:
  // Shorter ones, and shorter lines of a longer one, are not looked for: they would break up words of every
  // log.
  static constexpr std::size_t Shortest = 4; // in UTF-16 units

  void Keep(std::u16string_view secret);
  void Mask(std::u16string& text) const;
  std::string Masked(std::string_view utf8) const;

private:
  class TSearch;
  std::shared_ptr<const TSearch> Search() const; // null while there is no secret

  mutable std::mutex mutex_;
  std::set<std::u16string, std::less<>> secrets_;
  mutable std::shared_ptr<const TSearch> search_; // null when a secret has come since
};

} // namespace kx
