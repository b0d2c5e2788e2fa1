#include "program/check/SolutionFacts.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/TextFiles.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "package/solution/VSNETSLN.Syntax.h"

#include <algorithm>

namespace kx::check {

namespace {

using slnsyntax::SplitNameValue;
using slnsyntax::Trim;

constexpr std::u16string_view WebSiteType = u"{E24C65DC-7377-472B-9ABA-BC803B73C61A}";

// Lines end at CR LF, LF or CR.
int LineAt(std::string_view bytes, std::size_t at) {
  int line = 1;
  for (std::size_t i = 0; i < at; ++i)
    line += bytes[i] == '\n' || (bytes[i] == '\r' && bytes[i + 1] != '\n') ? 1 : 0; // `at` is in the text
  return line;
}

std::string ToUtf8Text(std::string_view bytes, TSolutionFacts& facts) {
  facts.Mark = text::DetectByteOrderMark(bytes);
  if (facts.Mark != text::ByteOrderMark::Utf8 && facts.Mark != text::ByteOrderMark::None)
    return text::ToUtf8(platform::DecodeTextFile(bytes));
  bytes.remove_prefix(text::LengthOf(facts.Mark));
  const auto doubt = [&](TTextDoubt what, std::size_t at) {
    facts.Doubt = what;
    facts.DoubtLine = LineAt(bytes, at);
  };
  const auto beyondAscii =
      std::ranges::find_if(bytes, [](char c) { return static_cast<unsigned char>(c) > 0x7F; });
  if (beyondAscii == bytes.end()) return std::string(bytes);
  if (const std::size_t valid = text::ValidUtf8Prefix(bytes); valid < bytes.size()) {
    doubt(TTextDoubt::Ansi, valid);
    return text::ToUtf8(platform::DecodeUtf8OrAnsi(bytes));
  }
  constexpr std::string_view lostLetter = "\xEF\xBF\xBD"; // for one that a program could not read
  if (const std::size_t lost = bytes.find(lostLetter); lost != std::string_view::npos) {
    doubt(TTextDoubt::Lost, lost);
  } else if (facts.Mark == text::ByteOrderMark::None) {
    doubt(TTextDoubt::Unmarked, static_cast<std::size_t>(beyondAscii - bytes.begin()));
  }
  return std::string(bytes);
}

class TFactsReader {
public:
  explicit TFactsReader(TSolutionFacts& facts) : facts_(facts) {}

  void Read(std::string_view text) {
    while (!text.empty()) {
      const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
      ++line_;
      TakeLine(Trim(text.substr(0, end)));
      text.remove_prefix(end);
      if (text.starts_with("\r\n")) text.remove_prefix(1);
      if (!text.empty()) text.remove_prefix(1);
    }
    CloseAll();
    for (const auto& [id, folder] : nested_)
      if (TSolutionProject* project = Find(id)) project->Folder = folder;
  }

private:
  struct TOpen {
    std::string_view End; // the line that closes it
    TLineText What;
  };
  using TTakeSection = void (TFactsReader::*)(std::string_view line);

  void TakeLine(std::string_view line) {
    if (line.empty()) return;
    if (IsBehindEnd()) {
      if (facts_.LineBehindEnd == 0) facts_.LineBehindEnd = line_;
      return;
    }
    if (line.starts_with('#')) return TakeComment(line);
    if (line.starts_with("<<<<<<<") || line.starts_with("=======") || line.starts_with(">>>>>>>")) {
      facts_.MergeMarks.push_back({text::FromUtf8(line), line_});
      return;
    }
    if (line.starts_with("Project(")) return OpenProject(line);
    if (line == "Global") return OpenGlobal();
    if (line.starts_with("ProjectSection(") || line.starts_with("GlobalSection(")) return OpenSection(line);
    if (line == "EndProject" || line == "EndGlobal" || line == "EndProjectSection" ||
        line == "EndGlobalSection")
      return Close(line);
    if (section_ != nullptr) return (this->*section_)(line);
    if (open_.empty()) TakeHeader(line);
  }

  bool IsBehindEnd() const { return facts_.GlobalLine > 0 && open_.empty(); }

  void TakeHeader(std::string_view line) {
    if (!slnsyntax::ReadHeader(line)) return;
    const std::string_view number = line.substr(line.rfind(' ') + 1);
    facts_.Headers.push_back({text::FromUtf8(number), line_});
  }

  void TakeComment(std::string_view line) {
    line = Trim(line.substr(1));
    if (facts_.Product.Line == 0 && line.starts_with("Visual ") && facts_.Projects.empty())
      facts_.Product = {text::FromUtf8(line), line_};
  }

  void OpenProject(std::string_view line) {
    CloseAll(); // no project stands in another
    const auto declared = SplitNameValue(line);
    if (!declared || items_.Split(Trim(declared->Value)) < 3) {
      facts_.BadProjects.push_back({text::FromUtf8(line), line_});
      return;
    }
    const std::size_t quote = declared->Name.find('"');
    const std::string_view type =
        quote == std::string_view::npos ? std::string_view() : declared->Name.substr(quote + 1);
    facts_.Projects.push_back({text::FromUtf8(items_[0]), text::FromUtf8(items_[1]),
                               text::FromUtf8(items_[2]), text::FromUtf8(type.substr(0, type.find('"'))),
                               line_});
    facts_.Places.try_emplace(facts_.Projects.back().Id, facts_.Projects.size() - 1);
    open_.push_back({"EndProject", {u"Project " + facts_.Projects.back().Name, line_}});
  }

  void OpenGlobal() {
    CloseAll();
    if (facts_.GlobalLine == 0) facts_.GlobalLine = line_;
    open_.push_back({"EndGlobal", {u"Global", line_}});
  }

  void OpenSection(std::string_view line) {
    if (open_.size() > 1) CloseTop();
    const bool isGlobal = line.front() == 'G';
    const std::size_t bracket = line.find('(') + 1;
    const std::string_view name = line.substr(bracket, line.find(')', bracket) - bracket);
    open_.push_back({isGlobal ? "EndGlobalSection" : "EndProjectSection",
                     {text::FromUtf8(line.substr(0, line.find(')'))) + u")", line_}});
    section_ = SectionOf(name, isGlobal);
  }

  static TTakeSection SectionOf(std::string_view name, bool isGlobal) {
    struct TRow {
      std::string_view Name;
      bool IsGlobal;
      TTakeSection Take;
    };
    static constexpr std::array<TRow, 7> rows{{
        {"ProjectDependencies", false, &TFactsReader::TakeNeed},
        {"ProjectDependencies", true, &TFactsReader::TakeOldNeed},
        {"SolutionConfiguration", true, &TFactsReader::TakeConfiguration},
        {"SolutionConfigurationPlatforms", true, &TFactsReader::TakeConfiguration},
        {"ProjectConfiguration", true, &TFactsReader::TakeMapping},
        {"ProjectConfigurationPlatforms", true, &TFactsReader::TakeMapping},
        {"NestedProjects", true, &TFactsReader::TakeNesting},
    }};
    const auto* row = std::ranges::find_if(
        rows, [&](const TRow& known) { return known.Name == name && known.IsGlobal == isGlobal; });
    return row == rows.end() ? &TFactsReader::PassOver : row->Take;
  }

  void PassOver(std::string_view /*line*/) {}

  void TakeNeed(std::string_view line) {
    const auto need = SplitNameValue(line);
    if (need && !facts_.Projects.empty())
      facts_.Projects.back().Needs.push_back({text::FromUtf8(Trim(need->Value)), line_});
  }

  void TakeOldNeed(std::string_view line) {
    const auto need = SplitNameValue(line);
    if (!need) return;
    owner_.Cut(line);
    facts_.OldNeeds.push_back(
        {std::u16string(owner_.Identifier()), text::FromUtf8(Trim(need->Value)), line_});
  }

  // "ConfigName.0 = Debug" in the oldest formats, else "Debug|Any CPU = Debug|Any CPU".
  void TakeConfiguration(std::string_view line) {
    const auto pair = SplitNameValue(line);
    if (!pair || Trim(pair->Name) == "Description") return;
    const bool isNumbered = Trim(pair->Name).starts_with("ConfigName.");
    facts_.Configurations.push_back({text::FromUtf8(Trim(isNumbered ? pair->Value : pair->Name)), line_});
  }

  void TakeMapping(std::string_view line) {
    owner_.Cut(line);
    const auto config = slnsyntax::ReadProjectConfig(owner_.Rest());
    TSolutionProject* project = config ? Find(owner_.Identifier()) : nullptr;
    if (project == nullptr) return;
    project->Mappings.push_back(
        {text::FromUtf8(config->Solution), text::FromUtf8(Trim(config->Project)), config->Active, line_});
  }

  void TakeNesting(std::string_view line) {
    const auto pair = SplitNameValue(line);
    if (pair) nested_.emplace_back(text::FromUtf8(Trim(pair->Name)), text::FromUtf8(Trim(pair->Value)));
  }

  TSolutionProject* Find(std::u16string_view id) {
    const auto place = facts_.Places.find(id);
    return place == facts_.Places.end() ? nullptr : &facts_.Projects[place->second];
  }

  void Close(std::string_view line) {
    const auto opened = std::ranges::find(open_, line, &TOpen::End);
    if (opened == open_.end()) {
      facts_.NotOpened.push_back({text::FromUtf8(line), line_});
      return;
    }
    while (open_.back().End != line)
      CloseTop();
    open_.pop_back();
    section_ = nullptr;
  }

  void CloseTop() {
    facts_.NotClosed.push_back(open_.back().What);
    open_.pop_back();
    section_ = nullptr;
  }

  void CloseAll() {
    while (!open_.empty())
      CloseTop();
  }

  TSolutionFacts& facts_;
  int line_ = 0;
  std::vector<TOpen> open_;
  TTakeSection section_ = nullptr; // takes the lines of the section that is open
  slnsyntax::TCommaItems items_;
  slnsyntax::TIdentifierCut owner_;
  std::vector<std::pair<std::u16string, std::u16string>> nested_; // identifier, that of its folder
};

} // namespace

bool TSolutionProject::IsFolder() const {
  return slnsyntax::IsFolderType(TypeId);
}

bool TSolutionProject::IsWebSite() const {
  return text::EqualsIgnoreCase(TypeId, WebSiteType) || text::FindIgnoreCase(Path, u"http://") != Path.npos ||
         text::FindIgnoreCase(Path, u"https://") != Path.npos;
}

std::int32_t TSolutionFacts::Format() const {
  if (Headers.empty()) return 0;
  const std::u16string_view number = Headers.front().Text;
  return text::ToIntegerOr(number.substr(0, number.find(u'.')), 0);
}

const TSolutionProject* TSolutionFacts::Find(std::u16string_view id) const {
  const auto place = Places.find(id);
  return place == Places.end() ? nullptr : &Projects[place->second];
}

TSolutionFacts ReadSolutionFacts(const std::u16string& file) {
  TSolutionFacts facts;
  facts.File = file;
  facts.Folder = text::ExtractFileDir(file);
  const auto bytes = platform::ReadFile(file);
  if (!bytes) {
    facts.Error = bytes.Message();
    return facts;
  }
  TFactsReader(facts).Read(ToUtf8Text(*bytes, facts));
  return facts;
}

} // namespace kx::check
