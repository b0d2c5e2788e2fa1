// Web addresses: what is taken leads to no other folder, and the way to a share is made of the parts.
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "fuzz/FuzzTarget.h"
#include "package/web/KxResolveIISDirectory.h"
#include "package/web/WebAddress.h"

#include <algorithm>

namespace kx::fuzz {
namespace {

void CheckParts(const TWebAddress& address) {
  Require(!address.Host.empty(), "an address has a server");
  Require(address.Path.empty() || (address.Path.front() == u'/' && address.Path.back() == u'/'),
          "the folders stand between slashes");
  Require(address.Document.find(u'/') == address.Document.npos, "a document is no folder");
  const std::u16string whole = address.Path + address.Document;
  for (const auto segment : text::Split(whole, u'/'))
    Require(segment != u"..", "no folder leads up");
  Require(std::ranges::none_of(whole, [](char16_t c) { return c < u' ' || c == u'\\'; }),
          "neither controls nor other separators are left");
}

void Check(std::string_view bytes) {
  const std::u16string url = text::FromUtf8(bytes);
  if (IsPlainFileName(url))
    Require(url.find_first_of(u"/\\:") == url.npos && url != u"." && url != u"..",
            "a plain name stays in its folder");
  try {
    CheckParts(ParseWebAddress(url));
    static_cast<void>(BuildShareName(url, u"share"));
  } catch (const EKxException&) {
  }
}

const TRegistration registration({"web_address", Check});

} // namespace
} // namespace kx::fuzz
