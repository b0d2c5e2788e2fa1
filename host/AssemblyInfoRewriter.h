// The rewriting of one AssemblyInfo file in memory.
#pragma once

#include "host/AssemblyInfoSource.h"

#include <utility>

namespace kx {

using TAssemblyInfoValues = std::vector<std::pair<std::u16string, std::u16string>>; // name and value

struct TAssemblyInfoRewrite {
  std::string Bytes;                    // the whole file; the old bytes where nothing had to change
  TAssemblyInfoValues Entries;          // what stands in the file now
  std::vector<std::u16string> Messages; // what was not done, or not as the file's author may expect
};

// Sets the attributes, as IBrannicAssemblyInfoUpdater describes it. Raises EKxException, without the file's
// name, when the bytes are no text, the source is so broken that what is written would not be found again, or
// the file's encoding cannot hold a value.
TAssemblyInfoRewrite RewriteAssemblyInfo(std::string_view bytes, TAssemblyInfoLanguage language,
                                         const TAssemblyInfoValues& values);

} // namespace kx
