#include "package/solution/VSNETSLN.Paths.h"

#include "contract/Utilities.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/WindowsPath.h"

namespace kx {

TProjectPaths::TProjectPaths(std::u16string_view folder)
    : folder_(folder), plain_(TPathUtils::ExpandRelativePath(u"x", folder)), base_(plain_.size() - 1),
      separator_(text::IsPosixPath(plain_) ? u'/' : u'\\') {}

std::u16string_view TProjectPaths::Expand(std::string_view path) {
  if (AppendPlain(path)) return plain_;
  other_ = TPathUtils::ExpandRelativePath(text::FromUtf8(path), folder_);
  return other_;
}

// Only ASCII, no drive, and no step that is empty or begins with a dot.
bool TProjectPaths::AppendPlain(std::string_view path) {
  plain_.resize(base_ + path.size());
  char16_t* target = plain_.data() + base_;
  bool stepBegins = true;
  for (const char c : path) {
    const bool isSeparator = c == '\\' || c == '/';
    const bool isOther = static_cast<unsigned char>(c) >= 0x80 || c == ':';
    if (isOther || (stepBegins && (isSeparator || c == '.'))) return false;
    *target++ = isSeparator ? separator_ : static_cast<char16_t>(c);
    stepBegins = isSeparator;
  }
  return !stepBegins;
}

} // namespace kx
