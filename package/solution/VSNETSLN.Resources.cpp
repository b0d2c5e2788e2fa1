#include "package/solution/VSNETSLN.Resources.h"

#include "contract/Utilities.h"
#include "foundation/formats/Xml.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>
#include <cstring>

namespace kx {

namespace {

constexpr std::u16string_view MSBuildNamespace = u"http://schemas.microsoft.com/developer/msbuild/2003";

std::shared_ptr<TXmlDocument> LoadProject(std::u16string_view projectFile) {
  auto document = NewXMLDocument();
  if (document->Load(projectFile)) return document;
  throw EKxParseError(u"Error parsing project file : " + document->ParseError() + u" in " +
                      std::u16string(projectFile));
}

class TScriptCollector {
public:
  explicit TScriptCollector(std::u16string_view projectFile) : folder_(text::ExtractFileDir(projectFile)) {}

  void Collect(const TXmlElement& element, std::u16string_view attribute) {
    const auto path = element.GetAttribute(attribute);
    if (!path || !text::EqualsIgnoreCase(text::ExtractFileExt(*path), u".rc")) return;
    files_.Add(TPathUtils::ExpandRelativePath(*path, folder_));
  }
  text::TStringList Take() { return std::move(files_); }

private:
  std::u16string folder_;
  text::TStringList files_;
};

// Visual Studio 2010.
text::TStringList ScriptsOfVcxproj(std::u16string_view projectFile) {
  const auto document = LoadProject(projectFile);
  document->SetSelectionNamespace(u"def", MSBuildNamespace);
  TScriptCollector scripts(projectFile);
  for (const TXmlElement& item : document->SelectNodes(u"/def:Project/def:ItemGroup/def:ResourceCompile"))
    scripts.Collect(item, u"Include");
  return scripts.Take();
}

// Visual Studio 2002 to 2008. Files that stand outside any filter are not looked at.
text::TStringList ScriptsOfVcproj(std::u16string_view projectFile) {
  const auto document = LoadProject(projectFile);
  const auto root = document->DocumentElement();
  if (!root || root->Name() != u"VisualStudioProject") return {};
  TScriptCollector scripts(projectFile);
  for (const TXmlElement& filter : document->SelectNodes(u"VisualStudioProject/Files/Filter")) {
    for (const TXmlElement& file : filter.GetElementsByTagName(u"File"))
      scripts.Collect(file, u"RelativePath");
  }
  return scripts.Take();
}

// "VERSIONINFO" in the bytes of a text file of this kind.
std::string BytesOfKeyword(text::ByteOrderMark mark) {
  std::string bytes;
  for (const char c : std::string_view("VERSIONINFO")) {
    if (mark == text::ByteOrderMark::Utf16BE) bytes.push_back('\0');
    bytes.push_back(c);
    if (mark == text::ByteOrderMark::Utf16LE) bytes.push_back('\0');
  }
  return bytes;
}

// The text is searched as it comes, in pieces: a script is named by a file that anybody may have written, so
// it can be anything, of any size.
class TKeywordSearch {
public:
  explicit TKeywordSearch(platform::FileReader file) : file_(std::move(file)) {}

  bool Run() {
    if (!Read()) return false;
    const auto mark = text::DetectByteOrderMark({buffer_.data(), filled_});
    unit_ = mark == text::ByteOrderMark::Utf16LE || mark == text::ByteOrderMark::Utf16BE ? 2 : 1;
    keyword_ = BytesOfKeyword(mark);
    do {
      if (Holds()) return true;
      Forget();
    } while (Read());
    return false;
  }

private:
  static constexpr std::size_t Piece = std::size_t{64} << 10;
  static constexpr std::uint64_t MostBytes = std::uint64_t{1}
                                             << 30; // more is no text that anybody could load

  bool Read() {
    if (total_ >= MostBytes) return false;
    const auto count = file_.Read(buffer_.data() + filled_, buffer_.size() - filled_);
    if (!count || *count == 0) return false;
    filled_ += *count;
    total_ += *count;
    return true;
  }

  bool Holds() const {
    const std::string_view bytes(buffer_.data(), filled_);
    std::size_t at = bytes.find(keyword_);
    // Pieces begin at a whole unit of UTF-16.
    while (at != std::string_view::npos && at % unit_ != 0)
      at = bytes.find(keyword_, at + 1);
    return at != std::string_view::npos;
  }

  // Keeps what a keyword may begin with that the next piece completes.
  void Forget() {
    std::size_t gone = filled_ - std::min(filled_, keyword_.size() - 1);
    gone -= gone % unit_;
    std::memmove(buffer_.data(), buffer_.data() + gone, filled_ - gone);
    filled_ -= gone;
  }

  platform::FileReader file_;
  std::string buffer_ = std::string(Piece, '\0');
  std::string keyword_;
  std::size_t unit_ = 1;
  std::size_t filled_ = 0;
  std::uint64_t total_ = 0;
};

bool MentionsVersionInfo(std::u16string_view script) {
  auto file = platform::FileReader::Open(script);
  return file && TKeywordSearch(*std::move(file)).Run();
}

text::TStringList ScriptsOf(std::u16string_view projectFile, platform::FileLookup& files) {
  const std::u16string extension = text::ToLower(text::ExtractFileExt(projectFile));
  const bool vcproj = extension == u".vcproj";
  const bool vcxproj = extension == u".vcxproj";
  if ((!vcproj && !vcxproj) || !files.FileExists(projectFile)) return {};
  return vcproj ? ScriptsOfVcproj(projectFile) : ScriptsOfVcxproj(projectFile);
}

} // namespace

TProjectResources ScanForResources(std::u16string_view projectFile, platform::FileLookup& files) {
  TProjectResources found{ScriptsOf(projectFile, files), {}};
  const auto script = std::ranges::find_if(found.Files, MentionsVersionInfo);
  if (script != found.Files.end()) found.WithVersionInfo = *script;
  return found;
}

} // namespace kx
