#include "host/VersionInfo.h"

#include "text/Text.h"

namespace kx {

void TVersionInfoContainer::SetProductVersion(std::u16string_view value) {
  const std::u16string line = u"ProductVersion=" + std::u16string(value);
  if (const auto index = values_.Strings.IndexOfName(u"ProductVersion")) {
    values_.Strings.Set(*index, line);
  } else {
    values_.Strings.Add(line);
  }
}

} // namespace kx
