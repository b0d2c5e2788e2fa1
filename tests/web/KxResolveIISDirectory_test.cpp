#include "package/web/KxResolveIISDirectory.h"

#include "contract/Services.h"
#include "foundation/platform/System.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "package/web/WebAddress.h"
#include "tests/support/DryRun.h"
#include "tests/support/Failure.h"

#include <gmock/gmock.h>
#include <map>

namespace kx {
namespace {

// The text that a call gives, or why it failed.
template <class TCall>
std::string Outcome(const TCall& call) {
  std::string given;
  return tests::FailureOf([&] { given = text::ToUtf8(call()); }) + given;
}

struct TDirectory : IKxDirectoryService {
  TDirectory() { SetServices({.Directory = this}); }
  ~TDirectory() override { SetServices({}); }
  std::optional<platform::DirectoryObject> FindObject(std::u16string_view path) override {
    const auto found = Classes.find(path);
    if (found == Classes.end()) return std::nullopt;
    return platform::DirectoryObject{found->second, u"C:\\web"};
  }
  std::map<std::u16string, std::u16string, std::less<>> Classes;
};

TEST(ResolveIISDirectory, WalksUpToTheVirtualDirectory) {
  const std::u16string here = platform::MachineName();
  TDirectory directory;
  directory.Classes = {{u"IIS://localHOST/w3svc/3/ROOT/My Web", u"IIsWebVirtualDir"},
                       {u"IIS://localHOST/w3svc/3/ROOT/My Web/a", u"IIsWebDirectory"},
                       {u"IIS://localHOST/w3svc/3/ROOT/My Web/a/b", u"IIsWebDirectory"},
                       {u"IIS://h/w3svc/3/ROOT/a", u"IIsWebDirectory"},
                       {u"IIS://h/w3svc/3/ROOT", u"IIsWebServer"},
                       {u"IIS://h/w3svc/3/ROOT/", u"IIsWebVirtualDir"},
                       {u"IIS://" + here + u"/w3svc/3/ROOT/w", u"IIsWebVirtualDir"}};
  const std::pair<std::u16string, std::string_view> cases[] = {
      {u"http://localHOST:8080/My%20Web/p.csproj", "C:\\web\\p.csproj"},
      {u"http://localHOST/My%20Web/a/b/p.csproj", "C:\\webab\\p.csproj"},
      {u"http://localHOST/None/p.csproj", "Unable to resolve to physical path - no object found"},
      {u"http://" + here + u"/w/p", "C:\\web\\p"},
      {u"http://h", "\\\\h\\C$\\web\\"},
      {u"http://h/a/p",
       "Unable to resolve to physical path - found IIsWebServer\rOriginal IIS uri: http://h/a/p"},
  };
  for (const auto& [url, result] : cases)
    EXPECT_EQ(Outcome([&] { return GetPhysicalDirFromIISDir(url, 3); }), result);
}

TEST(ResolveIISDirectory, AddressesAreSplitAndDecodedOnce) {
  const std::pair<std::u16string_view, std::string_view> cases[] = {
      {u"http://H/a/b/p.csproj", "\\\\H\\s$\\a/b\\p.csproj"},
      {u"HTTP://u:p@h:8080/a.cs?x/y#z", "\\\\h\\s$\\\\a.cs"},
      {u"http://[::1]:81\\Web\\a.cs", "\\\\[::1]\\s$\\Web\\a.cs"},
      {u"http://h/a%20b/%C3%A9%2541%zz%", "\\\\h\\s$\\a b\\\xC3\xA9%41%zz%"},
  };
  for (const auto& [url, share] : cases)
    EXPECT_EQ(Outcome([&] { return BuildShareName(url, u"s$"); }), share);
  for (const auto url :
       {u"http:///a.cs", u"h/a.cs", u"http://./a.cs", u"http://h/../a.cs", u"http://h/%2e%2E/a.cs",
        u"http://h/w/..%2Fa.cs", u"http://h/w/..%5Ca.cs", u"http://h/w/a%00.cs"})
    EXPECT_THROW(BuildShareName(url, u"s$"), EKxException) << text::ToUtf8(url);
}

TEST(WebDavFiles, AreReachedAsTheirAddressSays) {
  const std::pair<std::u16string, std::string> cases[] = {
      {u"http://127.0.0.1:1/a/p.csproj", "\"http://127.0.0.1:1/\""},
      {u"HTTPS://127.0.0.1:1/a/p.csproj", "\"https://127.0.0.1:1/\""},
      {u"https://[::1]:1/p.csproj", "\"https://[::1]:1/\""},
  };
  for (const auto& [address, shown] : cases) {
    EXPECT_TRUE(IsWebAddress(address)) << text::ToUtf8(address);
    const auto client = TKxWebDavClient::Create();
    std::u16string folder;
    EXPECT_THAT(Outcome([&] { return GetProjectFileUsingWebDAV(client.get(), address, folder); }),
                testing::AllOf(testing::HasSubstr(shown), testing::EndsWith(")."))) // the system's reason
        << shown;
  }
  EXPECT_FALSE(IsWebAddress(u"C:\\https\\p.csproj"));
}

TEST(WebDavFiles, OnlyPlainFileNamesAreKept) {
  for (const auto name : {u"a.cs", u".x", u"a b é.cs", u"console.cs", u"COM.cs", u"com10.cs", u"nul1.cs"})
    EXPECT_TRUE(IsPlainFileName(name)) << text::ToUtf8(name);
  for (const auto name : {u"", u".", u"..", u"a/b", u"a\\b", u"C:a", u"a.cs:x", u"/a", u"NUL", u"nul.txt",
                          u"Con .cs", u"COM1.a", u"lpt\u00B2", u"a.", u"a ", u"a\n", u"a?"})
    EXPECT_FALSE(IsPlainFileName(name)) << text::ToUtf8(name);
}

TEST(WebDavFiles, AreRefusedBeforeTheyAreAskedFor) {
  std::u16string folder;
  const auto client = TKxWebDavClient::Create();
  EXPECT_EQ(Outcome([&] { return GetProjectFileUsingWebDAV(nullptr, u"http://h/a", folder); }),
            "Assertion failure (KxResolveIISDirectory, line 133)");
  EXPECT_EQ(Outcome([&] { return GetFileUsingWebDAV(client.get(), u"w", u"..\\a"); }),
            "\"..\\a\" is not a file name that the temporary folder can hold; nothing was downloaded.");
}

TEST(WebDavFiles, ADryRunSendsNothing) {
  const auto client = TKxWebDavClient::Create();
  client->ServerName = u"127.0.0.1";
  client->ServerPort = 1; // where nobody listens
  {
    const tests::TFakeDryRun dryRun;
    EXPECT_TRUE(client->UploadFile(u"a", u"/"));
  }
  EXPECT_FALSE(client->Connect());
  client->ServerName = u"no host";
  EXPECT_FALSE(client->Connect());
}

} // namespace
} // namespace kx
