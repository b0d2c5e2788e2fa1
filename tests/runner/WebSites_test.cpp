#include "program/runner/WebSites.h"

#include "foundation/text/Exceptions.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace kx {
namespace {

constexpr std::string_view Config = R"(<configuration><system.applicationHost><sites>
<site name="Other" id="1"><application path="/"><virtualDirectory path="/" physicalPath="X:\"/></application></site>
<site name="Web" id="3">
  <application path="/"><virtualDirectory path="/" physicalPath="%SystemDrive%\inetpub\%kx_unknown%"/></application>
  <application path="/MyWeb">
    <virtualDirectory path="/" physicalPath="D:\100%\web"/><virtualDirectory path="/img" physicalPath="E:\"/>
    <virtualDirectory path="/w" physicalPath="%SystemRoot%\%windir%|%"/>
  </application>
</site></sites></system.applicationHost></configuration>)";

TEST(WebSites, AreFoundInTheServersConfiguration) {
  const tests::TTemporaryFolder folder;
  TOptionsStore store;
  store.Set({u"WebSites", u"ApplicationHostConfig"}, folder.Write("applicationHost.config", Config));
  TWebSites sites(store);
  const auto find = [&sites](const char* name) {
    const auto object = sites.FindObject(text::FromUtf8(name));
    return object ? text::ToUtf8(object->Class + u" " + object->Path) : "nothing";
  };
  const std::pair<const char*, std::string_view> cases[] = {
      {"IIS://h/w3svc/3/ROOT/", "IIsWebVirtualDir C:\\inetpub\\%kx_unknown%"},
      {"IIS://h/W3SVC/3/root/myweb", "IIsWebVirtualDir D:\\100%\\web"},
      {"IIS://h/w3svc/3/ROOT/MyWeb/img", "IIsWebVirtualDir E:\\"},
      {"IIS://h/w3svc/3/ROOT/MyWebs/a", "IIsWebDirectory "},
      {"IIS://h/w3svc/3/ROOT/MyWeb/w", "IIsWebVirtualDir C:\\Windows\\C:\\Windows|%"},
      {"IIS://h/w3svc/3/ROOT/My", "IIsWebDirectory "},
      {"IIS://h/w3svc/2/ROOT/MyWeb", "nothing"},
      {"IIX://h/w3svc/3/ROOT/MyWeb", "nothing"},
      {"IIS://h/w4svc/3/ROOT/MyWeb", "nothing"},
      {"IIS://h/w3svc/3/ROO/MyWeb", "nothing"},
      {"IIS://h/w3svc/x/ROOT/MyWeb", "nothing"},
      {"IIS://h/w3svc/3", "nothing"},
  };
  for (const auto& [name, object] : cases)
    EXPECT_THAT(find(name), testing::StrCaseEq(std::string(object)))
        << name; // as the system writes its folders
  store.Set({u"WebSites", u"ApplicationHostConfig"}, folder.Path("missing.config"));
  EXPECT_THROW(find("IIS://h/w3svc/3/ROOT"), EKxException);
}

} // namespace
} // namespace kx
