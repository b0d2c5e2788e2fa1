// Any bytes as a resource script: it is read and rewritten, or refused with a message; a rewritten one is
// read again with the same values and changes no more.
#include "host/Exceptions.h"
#include "platform/TextFiles.h"
#include "versioninfo/VersionBlock.h"

#include <cstdlib>
#include <string>

namespace {

kx::TVersionInfoContainer Read(const kx::text::TStringList& lines) {
  kx::TVersionInfoContainer info;
  kx::ReadVersionBlock(lines, u"", info);
  return info;
}

void Stamp(const kx::text::TStringList& lines) {
  const auto info = Read(lines);
  const auto once = kx::RewriteVersionBlock(lines, u"", info);
  const auto again = Read(once);
  if (again.Values().Strings != info.Values().Strings) std::abort();
  static_cast<void>(kx::FindLosses(lines, u"", info));
  const auto twice = kx::RewriteVersionBlock(once, u"", again);
  if (kx::RewriteVersionBlock(twice, u"", Read(twice)) != twice) std::abort();
  static_cast<void>(kx::DefinesVersionName(once, [](std::u16string_view) { return u"#include \"a.h\""; }));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  kx::text::TStringList lines;
  lines.SetText(kx::platform::DecodeTextFile({reinterpret_cast<const char*>(data), size}));
  try {
    Stamp(lines);
  } catch (const kx::EKxException&) {
  }
  return 0;
}
