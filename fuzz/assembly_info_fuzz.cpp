// Any bytes as an AssemblyInfo file of any language: stamped or refused with a message, and stamping again
// changes nothing.
#include "host/AssemblyInfoRewriter.h"
#include "host/Exceptions.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  if (size == 0) return 0;
  const auto language = static_cast<kx::TAssemblyInfoLanguage>(data[0] % 5);
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  const kx::TAssemblyInfoValues values{
      {u"AssemblyVersion", u"1.2.3.4"}, {u"AssemblyTitle", u"\"\\\n*/?\?/"}, {u"AssemblyComment", u"x"}};
  try {
    const std::string once = kx::RewriteAssemblyInfo(bytes, language, values).Bytes;
    if (kx::RewriteAssemblyInfo(once, language, values).Bytes != once) std::abort();
  } catch (const kx::EKxException&) {
  }
  return 0;
}
