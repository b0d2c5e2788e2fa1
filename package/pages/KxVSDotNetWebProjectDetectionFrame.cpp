#include "package/pages/KxVSDotNetWebProjectDetectionFrame.h"

#include "foundation/text/Text.h"

#include <array>

namespace kx {

namespace {

struct TChoiceRow {
  std::u16string_view Name;
  TProjLocDetectMethod Method;
};
constexpr std::array<TChoiceRow, 3> Choices{{
    {u"rbWMI", TProjLocDetectMethod::useWMI},
    {u"rbNetworkShare", TProjLocDetectMethod::useShare},
    {u"rbWebDAV", TProjLocDetectMethod::useWebDAV},
}};

TKxPageField Choice(std::u16string name, std::u16string label) {
  return {.Name = std::move(name),
          .Kind = TKxFieldKind::Choice,
          .Label = std::move(label),
          .Property = u"ProjLocationDetectMethod",
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
  Add(Choice(u"rbWMI", u"Use WMI - Specify website number"));
  Add({.Name = u"spiWebsiteNumber", .Kind = TKxFieldKind::Integer, .Property = u"WMIWebsiteNum"});
  Add(Choice(u"rbNetworkShare", u"Use Network Share - specify share name"));
  Add({.Name = u"edtShare", .Property = u"SharePath"});
  Add(Choice(u"rbWebDAV", u"Use WebDAV"));
  Add({.Name = u"edtUser", .Label = u"Username", .Property = u"WebDAVUsername"});
  Add({.Name = u"edtPassword",
       .Kind = TKxFieldKind::Secret,
       .Label = u"Password",
       .Property = u"WebDAVPassword"});
}

void TVSDotNetWebProjectLocationFrame::ReadActionData() {
  const TWebProjectSettings& web = action_->WebProjects();
  for (const auto& row : Choices)
    Check(row.Name, row.Method == web.DetectMethod);
  Show(u"edtShare", web.SharePath);
  Show(u"spiWebsiteNumber", text::FromInteger(web.WMIWebsiteNum));
  Show(u"edtUser", web.WebDAVUsername);
  ShowSecret(u"edtPassword", !action_->GetWebDAVPassword().empty());
}

void TVSDotNetWebProjectLocationFrame::WriteActionData() {
  RequireNoErrors();
  TWebProjectSettings& web = action_->WebProjects();
  for (const auto& row : Choices)
    if (IsChecked(row.Name)) web.DetectMethod = row.Method;
  web.SharePath = Value(u"edtShare");
  web.WMIWebsiteNum = Number(u"spiWebsiteNumber");
  web.WebDAVUsername = Value(u"edtUser");
  if (const auto password = TakeNewSecret(u"edtPassword")) action_->SetWebDAVPassword(*password);
}

} // namespace kx
