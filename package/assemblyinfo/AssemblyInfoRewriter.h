// The rewriting of one AssemblyInfo file in memory.
#pragma once

#include "package/assemblyinfo/AssemblyInfoSource.h"

#include <utility>

namespace kx {

using TAssemblyInfoValues = std::vector<std::pair<std::u16string, std::u16string>>; // name and value

struct TAssemblyInfoRewrite {
  std::string Bytes;                    // the whole file; the old bytes where nothing had to change
  TAssemblyInfoValues Entries;          // what stands in the file now
  std::vector<std::u16string> Changed;  // the names of those that did not stand there before
  std::vector<std::u16string> Messages; // what was not done, or not as the file's author may expect
};

// Where an attribute stands in a file: under a condition that depends on the project, or for certain.
enum class TAssemblyInfoPresence : std::uint8_t { Absent, Conditional, Certain };

// The attributes of the assembly in one file. A file that is no source has none.
class TAssemblyInfoInventory {
public:
  TAssemblyInfoInventory() = default;
  TAssemblyInfoInventory(std::string_view bytes, TAssemblyInfoLanguage language);
  TAssemblyInfoPresence Find(std::u16string_view name) const;

private:
  TAssemblyInfoLanguage language_ = TAssemblyInfoLanguage::CSharp;
  std::vector<TSourceAttribute> attributes_;
};

// Whether System.Reflection has an attribute of this name with one text: these alone can be added to a file.
bool IsFrameworkAttribute(std::u16string_view name);

// Sets the attributes, as IBrannicAssemblyInfoUpdater describes it. Raises EKxException, without the file's
// name, when the bytes are no text, the source is so broken that what is written would not be found again, or
// the file's encoding cannot hold a value.
TAssemblyInfoRewrite RewriteAssemblyInfo(std::string_view bytes, TAssemblyInfoLanguage language,
                                         const TAssemblyInfoValues& values);

} // namespace kx
