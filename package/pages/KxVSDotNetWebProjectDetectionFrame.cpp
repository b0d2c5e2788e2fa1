#include "package/pages/KxVSDotNetWebProjectDetectionFrame.h"

namespace kx {

namespace {

TKxPageField Choice(std::u16string name, std::u16string label, std::u16string method) {
  return {.Name = std::move(name),
          .Kind = TKxFieldKind::Choice,
          .Label = std::move(label),
          .Property = u"ProjLocationDetectMethod",
          .Means = std::move(method),
          .Group = u"ProjLocationDetectMethod"};
}

} // namespace

const TKxPageClass& TVSDotNetWebProjectLocationFrame::Class() {
  return PageClassOf<TVSDotNetWebProjectLocationFrame>(u"TVSDotNetWebProjectLocationFrame");
}

void TVSDotNetWebProjectLocationFrame::InitFrame() {
  AddHeading(u"Web Project Location Detection");
  Add({.Kind = TKxFieldKind::Note,
       .Label = u"Project Location detection is only required if Assembly Info requires updating, \r\n"
                u"and the project is a web project "});
  Add(Choice(u"rbWMI", u"Use WMI - Specify website number", u"useWMI"));
  Add({.Name = u"spiWebsiteNumber", .Kind = TKxFieldKind::Integer, .Property = u"WMIWebsiteNum"});
  Add(Choice(u"rbNetworkShare", u"Use Network Share - specify share name", u"useShare"));
  Add({.Name = u"edtShare", .Property = u"SharePath"});
  Add(Choice(u"rbWebDAV", u"Use WebDAV", u"useWebDAV"));
  Add({.Name = u"edtUser", .Label = u"Username", .Property = u"WebDAVUsername"});
  Add({.Name = u"edtPassword",
       .Kind = TKxFieldKind::Secret,
       .Label = u"Password",
       .Property = u"WebDAVPassword"});
}

} // namespace kx
