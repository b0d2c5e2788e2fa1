#include "program/runner/WebSites.h"

#include "foundation/formats/Xml.h"
#include "foundation/platform/System.h"
#include "foundation/text/Text.h"

namespace kx {

namespace {

struct TDirectoryName {
  std::int32_t Site = 0;
  std::u16string Path; // "/a/b"; empty is the root
};

std::u16string WithoutOuterSlashes(std::u16string_view path) {
  const auto first = path.find_first_not_of(u'/');
  if (first == std::u16string_view::npos) return {};
  return std::u16string(path.substr(first, path.find_last_not_of(u'/') + 1 - first));
}

std::u16string JoinVirtual(std::u16string_view a, std::u16string_view b) {
  const std::u16string front = WithoutOuterSlashes(a);
  const std::u16string back = WithoutOuterSlashes(b);
  return (front.empty() ? u"" : u"/" + front) + (back.empty() ? u"" : u"/" + back);
}

// "IIS://server/w3svc/1/ROOT/a/b"
std::optional<TDirectoryName> ParseName(std::u16string_view name) {
  const auto parts = text::Split(name, u'/');
  if (parts.size() < 6 || !text::EqualsIgnoreCase(parts[0], u"IIS:") ||
      !text::EqualsIgnoreCase(parts[3], u"w3svc") || !text::EqualsIgnoreCase(parts[5], u"ROOT"))
    return std::nullopt;
  const auto site = text::ToInteger(parts[4]);
  if (!site) return std::nullopt;
  const auto end = static_cast<std::size_t>(parts[5].data() - name.data()) + parts[5].size();
  return TDirectoryName{*site, JoinVirtual(name.substr(end), u"")};
}

// The server's variables may not be known here: those of the drive and of Windows are nearly always these.
std::optional<std::u16string> ValueOf(std::u16string_view variable) {
  if (auto value = platform::EnvironmentVariable(variable)) return value;
  if (text::EqualsIgnoreCase(variable, u"SystemDrive")) return u"C:";
  if (text::EqualsIgnoreCase(variable, u"SystemRoot") || text::EqualsIgnoreCase(variable, u"windir"))
    return u"C:\\Windows";
  return std::nullopt;
}

std::u16string ExpandVariables(std::u16string_view path) {
  std::u16string expanded;
  while (!path.empty()) {
    const auto open = path.find(u'%');
    const auto close = open == std::u16string_view::npos ? open : path.find(u'%', open + 1);
    if (close == std::u16string_view::npos) break;
    const auto value = ValueOf(path.substr(open + 1, close - open - 1));
    expanded += path.substr(0, open);
    expanded += value ? *value : std::u16string(path.substr(open, close - open));
    path.remove_prefix(value ? close + 1 : close);
  }
  return expanded += path;
}

std::optional<platform::DirectoryObject> FindIn(const TXmlElement& site, std::u16string_view wanted) {
  std::optional<platform::DirectoryObject> found;
  for (const TXmlElement& application : site.SelectNodes(u"application")) {
    for (const TXmlElement& folder : application.SelectNodes(u"virtualDirectory[@physicalPath]")) {
      const std::u16string path = JoinVirtual(application.GetAttribute(u"path").value_or(u""),
                                              folder.GetAttribute(u"path").value_or(u""));
      if (text::EqualsIgnoreCase(path, wanted))
        return platform::DirectoryObject{u"IIsWebVirtualDir",
                                         ExpandVariables(*folder.GetAttribute(u"physicalPath"))};
      if (text::StartsWithIgnoreCase(wanted, path + u"/"))
        found = platform::DirectoryObject{u"IIsWebDirectory", {}};
    }
  }
  return found;
}

} // namespace

TWebSites::TWebSites(const TOptionsStore& store) : store_(store) {}

std::optional<platform::DirectoryObject> TWebSites::FindObject(std::u16string_view path) {
  if (auto object = platform::ReadDirectoryObject(path)) return object;
  const auto file = store_.Get(ApplicationHostConfigOption());
  const auto name = ParseName(path);
  if (!file || file->empty() || !name) return std::nullopt;
  TXmlDocument document;
  if (!document.Load(*file))
    throw EKxException(u"The option WebSites.ApplicationHostConfig names " + *file +
                       u", which cannot be read: " + document.ParseError());
  for (const TXmlElement& site : document.SelectNodes(u"//sites/site")) {
    if (text::ToInteger(site.GetAttribute(u"id").value_or(u"")) == name->Site)
      return FindIn(site, name->Path);
  }
  return std::nullopt;
}

} // namespace kx
