#include "contract/PropertySets.h"

namespace kx {

text::TStringList GetWin32PropertySetsStrs(const IPropertySetService& service) {
  return service.GetNames(TPropertySetKind::Win32);
}

text::TStringList GetDotNetPropertySetStrs(const IPropertySetService& service) {
  return service.GetNames(TPropertySetKind::DotNet);
}

} // namespace kx
