// Which file each attribute of an assembly is written to, when its sources share them out.
#pragma once

#include "foundation/text/Text.h"
#include "package/assemblyinfo/AssemblyInfo.h"
#include "package/assemblyinfo/AssemblyInfoRewriter.h"

#include <map>

namespace kx {

// The attributes of many files, each read once until somebody changes it.
class TAssemblyInfoInventories {
public:
  const TAssemblyInfoInventory& Of(const std::u16string& file);
  void Forget(const std::u16string& file) { known_.erase(file); }

private:
  std::map<std::u16string, TAssemblyInfoInventory, text::IgnoreCaseLess> known_;
};

struct TAssemblyInfoShare {
  std::u16string File;
  TAssemblyInfoValues Values;
};

struct TAssemblyInfoShares {
  std::vector<TAssemblyInfoShare> Files; // the assembly's AssemblyInfo file first, also when it gets nothing
  std::vector<std::u16string> Messages;  // of what goes nowhere
};

// An attribute goes to `file` where it stands there; else to the other sources of the assembly in which it
// stands; else it is new in `file`, unless another assembly that `file` is part of has it already.
TAssemblyInfoShares ShareAssemblyInfo(const std::u16string& file, const TAssemblyInfoValues& values,
                                      IAssemblyInfoUnits* units, TAssemblyInfoInventories& inventories);

} // namespace kx
