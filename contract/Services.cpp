#include "contract/Services.h"

namespace kx {

namespace {

TKxServices services;

template <typename T>
T& Require(T* service, const char16_t* name) {
  if (service == nullptr) throw EKxException(std::u16string(u"This host offers no ") + name + u".");
  return *service;
}

} // namespace

void SetServices(const TKxServices& offered) {
  services = offered;
}
const TKxServices& CurrentServices() {
  return services;
}

IKxActionService& ActionService() {
  return Require(services.Actions, u"action service");
}
IKxCoreScriptingService& CoreScriptingService() {
  return Require(services.Scripting, u"scripting service");
}
IKxOptionsService& OptionsService() {
  return Require(services.Options, u"options service");
}
IKxDesignService& DesignService() {
  return Require(services.Design, u"design service");
}
IKxPropertySetDesignServices& KxPropertySetDesignServices() {
  return Require(services.PropertySetDesign, u"editor of property sets");
}
IKxDotNetInfo& KxDotNetInfo() {
  return Require(services.DotNet, u".NET framework information");
}

} // namespace kx
