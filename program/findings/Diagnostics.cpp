#include "program/findings/Diagnostics.h"

#include "foundation/text/BlockSearch.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

namespace kx {

namespace {

using text::IsBlank;
using text::IsDigit;

constexpr char16_t Escape = u'\x1b';
constexpr char16_t WideColon = u'\uFF1A'; // what East Asian translations of gcc write
constexpr std::size_t LongestWord = 40;   // of a category, a code, a subcategory
constexpr auto NoPlace = std::u16string_view::npos;

constexpr bool IsColon(char16_t c) {
  return c == u':' || c == WideColon;
}
constexpr bool IsLetter(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c >= 0xC0;
}

// --- Categories ---

struct TCategory {
  std::u16string_view Word; // in lower case
  TFindingSeverity Severity;
};

constexpr auto Error = TFindingSeverity::Error;
constexpr auto Warning = TFindingSeverity::Warning;
constexpr auto Note = TFindingSeverity::Note;
// Tools of Microsoft keep the English words in most languages; gcc translates them.
constexpr auto Categories = std::to_array<TCategory>({
    {u"error", Error},
    {u"warning", Warning},
    {u"note", Note},
    {u"info", Note},
    {u"message", Note},
    {u"fatal", Error},
    {u"information", Note},
    {u"remark", Note},
    {u"hint", Note},
    {u"suggestion", Note},
    {u"hidden", Note},
    {u"erreur", Error},
    {u"avertissement", Warning},
    {u"attention", Warning},
    {u"remarque", Note},
    {u"fehler", Error},
    {u"warnung", Warning},
    {u"hinweis", Note},
    {u"errore", Error},
    {u"avviso", Warning},
    {u"attenzione", Warning},
    {u"nota", Note},
    {u"advertencia", Warning},
    {u"aviso", Warning},
    {u"erro", Error},
    {u"fout", Error},
    {u"waarschuwing", Warning},
    {u"fel", Error},
    {u"varning", Warning},
    {u"fejl", Error},
    {u"advarsel", Warning},
    {u"chyba", Error},
    {u"varování", Warning},
    {u"błąd", Error},
    {u"ostrzeżenie", Warning},
    {u"hata", Error},
    {u"uyarı", Warning},
    {u"ошибка", Error},
    {u"предупреждение", Warning},
    {u"エラー", Error},
    {u"警告", Warning},
    {u"错误", Error},
    {u"錯誤", Error},
    {u"오류", Error},
    {u"경고", Warning},
});

// Which letters the words of each length begin with, as bits; all that are not of ASCII share one. It spares
// most words of a log the look at the table.
constexpr std::size_t LongestCategory = 16;
constexpr std::uint32_t BitOf(char16_t first) {
  return 1U << (first >= u'a' && first <= u'z' ? static_cast<unsigned>(first - u'a') : 31U);
}
constexpr auto FirstLetters = [] {
  std::array<std::uint32_t, LongestCategory> bits{};
  for (const auto& category : Categories)
    bits.at(category.Word.size()) |= BitOf(category.Word.front());
  return bits;
}();

// Of a word that is not empty.
const TCategory* FindCategory(std::u16string_view word) {
  if (word.size() >= LongestCategory) return nullptr;
  const char16_t first = text::FoldCase(word.front());
  if ((FirstLetters[word.size()] & BitOf(first)) == 0) return nullptr;
  const auto* const found = std::ranges::find_if(Categories, [word, first](const TCategory& category) {
    return category.Word.front() == first && category.Word.size() == word.size() &&
           text::EqualsIgnoreCase(category.Word, word);
  });
  return found == Categories.end() ? nullptr : found;
}

// "CS0103", "c101008d", "#177-D", "NETSDK1045"; "1045" where a place stands before it.
bool IsCode(std::u16string_view word) {
  const auto isPart = [](char16_t c) {
    return (IsLetter(c) && c < 0x80) || IsDigit(c) || c == u'_' || c == u'-' || c == u'.' || c == u'#';
  };
  return !word.empty() && word.size() <= LongestWord && std::ranges::any_of(word, IsDigit) &&
         std::ranges::all_of(word, isPart);
}

// "ASPPARSE", "ASPCONFIG": codes of web sites.
bool IsCapitals(std::u16string_view word) {
  return word.size() > 3 && word.size() <= LongestWord &&
         std::ranges::all_of(word, [](char16_t c) { return c >= u'A' && c <= u'Z'; });
}

// The word that ends at `end`, which is behind a character that is no blank.
std::u16string_view WordBefore(std::u16string_view line, std::size_t end) {
  std::size_t begin = end;
  while (begin > 0 && end - begin <= LongestWord && !IsBlank(line[begin - 1]) && !IsColon(line[begin - 1]) &&
         line[begin - 1] != u')')
    --begin;
  return line.substr(begin, end - begin);
}

std::size_t EndOfWordBefore(std::u16string_view line, std::size_t at) {
  while (at > 0 && IsBlank(line[at - 1]))
    --at;
  return at;
}

// --- What stands before a line ---

// Whether the text begins in this form: "9" stands for a digit, "a" for a letter, "T" for what is between
// date and time, "+" for a sign.
bool BeginsAs(std::u16string_view text, std::u16string_view form) {
  return text.size() >= form.size() &&
         std::ranges::equal(text.substr(0, form.size()), form, [](char16_t c, char16_t f) {
           switch (f) {
           case u'9':
             return IsDigit(c);
           case u'a':
             return IsLetter(c);
           case u'T':
             return c == u'T' || c == u' ';
           case u'+':
             return c == u'+' || c == u'-';
           default:
             return c == f;
           }
         });
}

// The length of the first of the forms in which the text begins, or 0.
std::size_t LengthOfForm(std::u16string_view text, std::span<const std::u16string_view> forms) {
  const auto found = std::ranges::find_if(forms, [text](auto form) { return BeginsAs(text, form); });
  return found == forms.end() ? 0 : found->size();
}

// A time of day or a date with one, at the start: "10:20:30.123", "2010-04-01T10:20:30Z",
// "4/1/2010 10:20:30 AM"; its length.
std::size_t TimeStampLength(std::u16string_view line) {
  constexpr auto dates = std::to_array<std::u16string_view>(
      {u"9999-99-99T", u"9999/99/99T", u"99/99/9999T", u"9/99/9999T", u"99/9/9999T", u"9/9/9999T",
       u"99.99.9999T", u"99-99-9999T", u"99-aaa-9999T"});
  constexpr auto clocks = std::to_array<std::u16string_view>({u"99:99:99", u"9:99:99"});
  constexpr auto zones = std::to_array<std::u16string_view>({u" +9999", u" AM", u" PM"});
  const std::size_t date = LengthOfForm(line, dates);
  const std::size_t clock = LengthOfForm(line.substr(date), clocks);
  if (clock == 0) return 0;
  const std::size_t rest = line.find_first_not_of(u"0123456789.,Z+:", date + clock);
  return rest == line.npos ? line.size() : rest + LengthOfForm(line.substr(rest), zones);
}

// "12>", "1:7>" of a build of several projects; its length.
std::size_t BuildNumberLength(std::u16string_view line) {
  const std::size_t end = line.find_first_not_of(u"0123456789:");
  return end != 0 && end != line.npos && end < LongestWord && line[end] == u'>' ? end + 1 : 0;
}

// "[10:20:30]", "[exec]", "[Step 1/3]", with the letter and colon that TeamCity puts behind a time.
std::size_t BracketLength(std::u16string_view line) {
  if (line.empty() || line.front() != u'[') return 0;
  const std::size_t close = line.substr(0, LongestWord).find(u']');
  if (close == line.npos || close + 1 == line.size()) return 0;
  const std::u16string_view behind = line.substr(close + 1);
  if (IsBlank(behind.front()) || behind.front() == u'[') return close + 1;
  return behind.size() > 2 && IsLetter(behind[0]) && behind[1] == u':' && IsBlank(behind[2]) ? close + 3 : 0;
}

// "##[error]", "##[debug]"; GitLab's number of a stream behind its time, "01E "; Bamboo's "build" and a tab
// before a date.
std::size_t CiPrefixLength(std::u16string_view line) {
  const std::size_t tab = line.substr(0, 8).find(u'\t');
  if (tab != line.npos && TimeStampLength(line.substr(tab + 1)) > 0) return tab + 1;
  if (line.starts_with(u"##[")) {
    const std::size_t close = line.substr(0, LongestWord).find(u']');
    return close == line.npos ? 0 : close + 1;
  }
  const bool isStream = line.size() > 4 && IsDigit(line[0]) && IsDigit(line[1]) &&
                        (line[2] == u'O' || line[2] == u'E') && (line[3] == u' ' || line[3] == u'+');
  return isStream ? 4 : 0;
}

std::u16string_view WithoutPrefixes(std::u16string_view line) {
  constexpr std::array prefixes{TimeStampLength, BuildNumberLength, BracketLength, CiPrefixLength};
  for (bool found = true; found;) {
    line = text::TrimLeft(line);
    found = false;
    for (const auto length : prefixes) {
      const std::size_t size = length(line);
      line.remove_prefix(size);
      found = found || size > 0;
    }
  }
  return text::TrimRight(line);
}

// Without the sequences that colour a terminal.
std::u16string WithoutColours(std::u16string_view line) {
  std::u16string plain;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] != Escape) {
      plain += line[i];
      continue;
    }
    if (i + 1 < line.size() && line[i + 1] == u'[') i = line.find_first_not_of(u"0123456789;?:", i + 2);
    if (i >= line.size()) break;
  }
  return plain;
}

// --- Places ---

constexpr std::u16string_view PositionCharacters = u"0123456789,-";

// "12", "12,5", "12-14", "12,5,12,9", "12,5-13,1", "12.5-9": the first line and column.
bool ReadPosition(std::u16string_view text, TFindingPlace& place) {
  const std::size_t end = std::min(text.find_first_of(u",.-"), text.size());
  place.Line = text::ToIntegerOr(text.substr(0, end), 0);
  if (place.Line == 0) return false;
  if (end < text.size() && text[end] != u'-') {
    const std::u16string_view column = text.substr(end + 1);
    place.Column = text::ToIntegerOr(column.substr(0, column.find_first_of(u",.-")), 0);
  }
  return true;
}

// "file(12,5)", at the end of the text.
bool ReadBracketPlace(std::u16string_view origin, TFindingPlace& place) {
  if (!origin.ends_with(u')')) return false;
  const std::size_t open = origin.find_last_not_of(PositionCharacters, origin.size() - 2);
  if (open == origin.npos || open == 0 || origin[open] != u'(') return false;
  if (!ReadPosition(origin.substr(open + 1, origin.size() - open - 2), place)) return false;
  place.File = text::TrimRight(origin.substr(0, open));
  return !place.File.empty();
}

// "12" behind the last colon of the text, which is taken off; 0 for none.
int TakeNumber(std::u16string_view& origin) {
  const std::size_t digits = origin.find_last_not_of(u"0123456789");
  if (digits == origin.npos || digits == 0 || origin[digits] != u':') return 0;
  const int number = text::ToIntegerOr(origin.substr(digits + 1), 0);
  if (number > 0) origin = origin.substr(0, digits);
  return number;
}

// "file:12:5", "file:12", "file:12.5-9".
bool ReadColonPlace(std::u16string_view origin, TFindingPlace& place) {
  const std::size_t colon = origin.rfind(u':');
  if (colon != origin.npos && colon > 0 && origin.find(u'.', colon) != origin.npos &&
      origin.find_first_not_of(u"0123456789.-", colon + 1) == origin.npos &&
      ReadPosition(origin.substr(colon + 1), place)) {
    place.File = text::Trim(origin.substr(0, colon));
    return true;
  }
  const int last = TakeNumber(origin);
  if (last == 0) return false;
  const int before = TakeNumber(origin);
  place.Line = before > 0 ? before : last;
  place.Column = before > 0 ? last : 0;
  place.File = text::Trim(origin);
  return !place.File.empty();
}

bool HasFolder(std::u16string_view origin) {
  return origin.find_first_of(u"/\\") != origin.npos;
}
bool LooksLikeFile(std::u16string_view origin) {
  const std::size_t dot = origin.rfind(u'.');
  const bool hasExtension = dot != origin.npos && dot > 0 && dot + 1 < origin.size() &&
                            origin.find(u' ', dot) == origin.npos && !IsDigit(origin[dot + 1]);
  return HasFolder(origin) || hasExtension;
}

// Words of letters, at most so many.
bool IsFewWords(std::u16string_view words, int most) {
  int count = words.empty() ? 0 : 1;
  for (const char16_t c : words.substr(0, LongestWord)) {
    if (!IsLetter(c) && c != u' ' && c != u'-') return false;
    if (c == u' ') ++count;
  }
  return count <= most && words.size() <= LongestWord;
}

// --- The parts of a line ---

struct TParts {
  std::u16string_view Origin = {}; // without its colon
  std::u16string_view Subcategory = {};
  TFindingSeverity Severity = Error;
  std::u16string_view Code = {};
  std::u16string_view Text = {}; // behind the colon
  TFindingPlace Place = {};
  bool HasPlace = false;
};

// A category, or a category and a code, that ends before the colon; where it begins, else NoPlace.
std::size_t ReadCategory(std::u16string_view line, std::size_t colon, TParts& parts) {
  const std::size_t end = EndOfWordBefore(line, colon);
  const std::u16string_view last = WordBefore(line, end);
  if (last.empty()) return NoPlace;
  if (const TCategory* category = FindCategory(last)) {
    parts.Severity = category->Severity;
    return end - last.size();
  }
  const bool isCode = IsCode(last);
  if (!isCode && !IsCapitals(last)) return NoPlace;
  const std::size_t between = EndOfWordBefore(line, end - last.size());
  if (between == end - last.size()) return NoPlace;
  const std::u16string_view word = WordBefore(line, between);
  if (word.empty() || !std::ranges::all_of(word, IsLetter)) return NoPlace;
  const std::size_t begin = between - word.size();
  const TCategory* category = FindCategory(word);
  // A word of a language that is not in the table.
  const std::size_t before = EndOfWordBefore(line, begin);
  const std::size_t place = before > 0 && IsColon(line[before - 1]) ? EndOfWordBefore(line, before - 1) : 0;
  const bool isPlaced = place > 0 && line[place - 1] == u')';
  if (category == nullptr && !(isPlaced && isCode)) return NoPlace;
  if (!isCode && !isPlaced) return NoPlace;
  parts.Severity = category == nullptr ? Error : category->Severity;
  parts.Code = last;
  return begin;
}

// `head` is what stands before the category.
void ReadHead(std::u16string_view head, TParts& parts) {
  head = text::TrimRight(head);
  if (head.ends_with(u" -")) { // "app.ts:3:4 - error TS2304: ..."
    parts.Origin = text::TrimRight(head.substr(0, head.size() - 1));
    parts.HasPlace = ReadColonPlace(parts.Origin, parts.Place);
    return;
  }
  const std::size_t from = head.size() - std::min(head.size(), LongestWord + 1);
  const std::size_t colon = head.substr(from).find_last_of(u":\uFF1A");
  if (colon != head.npos) {
    parts.Origin = text::TrimRight(head.substr(0, from + colon));
    parts.Subcategory = text::Trim(head.substr(from + colon + 1));
  } else if (head.ends_with(u')')) { // "Unit1.pas(12) Error: ..."
    parts.Origin = head;
  } else {
    parts.Subcategory = head;
  }
  parts.HasPlace = ReadBracketPlace(parts.Origin, parts.Place) || ReadColonPlace(parts.Origin, parts.Place);
}

// Prose has colons and the words, too.
bool IsDiagnostic(const TParts& parts) {
  if (parts.Origin.starts_with(u"echo ")) return false; // the command is shown, then what it says
  if (parts.HasPlace) return IsFewWords(parts.Subcategory, 4);
  if (parts.Origin.ends_with(u')') && parts.Subcategory.empty() && parts.Code.empty()) return false;
  if (!parts.Code.empty())
    return !IsDigit(parts.Code.front()) && IsFewWords(parts.Subcategory, 2) &&
           (LooksLikeFile(parts.Origin) || IsFewWords(parts.Origin, 3));
  const bool isBare = parts.Subcategory.empty() || text::EqualsIgnoreCase(parts.Subcategory, u"fatal");
  const bool isNumber = parts.Text.find_first_not_of(u"0123456789 .,;") == parts.Text.npos; // "Error: 0"
  return isBare && !isNumber && parts.Severity != Note &&
         (HasFolder(parts.Origin) || parts.Origin.find(u' ') == parts.Origin.npos);
}

std::optional<TParts> ReadParts(std::u16string_view line) {
  for (std::size_t colon = line.find_first_of(u":\uFF1A"); colon != line.npos;
       colon = line.find_first_of(u":\uFF1A", colon + 1)) {
    TParts parts;
    const std::size_t begin = ReadCategory(line, colon, parts);
    if (begin == NoPlace) continue;
    ReadHead(line.substr(0, begin), parts);
    parts.Text = text::Trim(line.substr(colon + 1));
    if (!IsDiagnostic(parts)) continue;
    if (!parts.Origin.empty() || !parts.Code.empty()) return parts;
    const auto inner = ReadParts(parts.Text); // "ERROR: a.cs(1,2): error CS0103: ..." of what ran the tool
    return inner && inner->HasPlace ? inner : parts;
  }
  return std::nullopt;
}

constexpr std::u16string_view MissingLibrary = u"cannot find -l"; // behind the linker's own name

// "b.h(3) : see declaration of 'x'": what tools say without a category, behind the colon.
constexpr auto Sayings = std::to_array<TCategory>({{u"see declaration of", Note},
                                                   {u"see reference to", Note},
                                                   {u"see previous definition of", Note},
                                                   {u"voir la déclaration de", Note},
                                                   {u"siehe Deklaration von", Note},
                                                   {u"first defined here", Note},
                                                   {u"undefined reference to", Error}, // GNU's linker
                                                   {u"multiple definition of", Error},
                                                   {MissingLibrary, Error},
                                                   {u"ld returned ", Error}});

// "a.o:a.c:(.text+0x7)", "/usr/bin/ld: a.o": the file, at the end, without the section.
std::u16string_view FileOfLinker(std::u16string_view origin) {
  if (origin.ends_with(u')')) origin = text::TrimRight(origin.substr(0, origin.rfind(u":(")));
  const std::size_t colon = origin.rfind(u':');
  return text::Trim(colon == origin.npos || colon < 2 ? origin : origin.substr(colon + 1));
}

std::optional<TParts> ReadSaying(std::u16string_view line) {
  for (const auto& saying : Sayings) {
    const std::size_t found = line.find(saying.Word);
    if (found == line.npos) continue;
    const std::u16string_view head = text::TrimRight(line.substr(0, found));
    TParts parts;
    if (head.empty() || !IsColon(head.back())) continue;
    parts.Origin = text::TrimRight(head.substr(0, head.size() - 1));
    parts.HasPlace = ReadBracketPlace(parts.Origin, parts.Place) || ReadColonPlace(parts.Origin, parts.Place);
    if (!parts.HasPlace && saying.Severity == Note) continue;
    if (!parts.HasPlace) parts.Origin = saying.Word == MissingLibrary ? u"" : FileOfLinker(parts.Origin);
    parts.Severity = saying.Severity;
    parts.Text = line.substr(found);
    return parts;
  }
  return std::nullopt;
}

// --- The text ---

// The blank before the bracket that the last one, at the end of the text, closes; others may be between.
std::size_t FindLastBracket(std::u16string_view message) {
  if (!message.ends_with(u']')) return NoPlace;
  int depth = 0;
  for (std::size_t at = message.size(); at-- > 1;) {
    depth += message[at] == u']' ? 1 : message[at] == u'[' ? -1 : 0;
    if (depth == 0) return message[at - 1] == u' ' ? at - 1 : NoPlace;
  }
  return NoPlace;
}

// "text [C:\App\App.csproj]", "text [App.csproj::TargetFramework=net48]": the project, which is taken off.
std::u16string_view TakeProject(std::u16string_view& message) {
  const std::size_t open = FindLastBracket(message);
  if (open == message.npos) return {};
  std::u16string_view project = message.substr(open + 2, message.size() - open - 3);
  project = project.substr(0, project.find(u"::"));
  if (!text::EndsWithIgnoreCase(project, u"proj") && !text::EndsWithIgnoreCase(project, u".sln")) return {};
  message = text::TrimRight(message.substr(0, open));
  return project;
}

// "unused variable 'x' [-Wunused-variable]": the option that turns it off stands for a code.
std::u16string_view TakeOption(std::u16string_view& message) {
  const std::size_t open = message.rfind(u" [-W");
  if (open == message.npos || !message.ends_with(u']')) return {};
  const std::u16string_view option = message.substr(open + 2, message.size() - open - 3);
  if (option.find_first_of(u" []") != option.npos) return {};
  message = text::TrimRight(message.substr(0, open));
  return option;
}

// "CA1820 : Microsoft.Performance : ...", behind "warning :".
std::u16string_view TakeCode(std::u16string_view& message) {
  const std::size_t colon = message.substr(0, LongestWord).find(u':');
  if (colon == message.npos) return {};
  const std::u16string_view code = text::TrimRight(message.substr(0, colon));
  if (!IsCode(code) || !IsLetter(code.front()) || !IsDigit(code.back())) return {};
  message = text::TrimLeft(message.substr(colon + 1));
  return code;
}

std::u16string RuleOf(const TFinding& finding) {
  return finding.Code.empty() ? u"tool-" + text::FromAscii(WordOf(finding.Severity)) : finding.Code;
}

TFinding FindingOf(const TParts& parts) {
  TFinding finding;
  finding.Severity = parts.Severity;
  std::u16string_view message = parts.Text;
  finding.Project = TakeProject(message);
  finding.Code = parts.Code;
  if (finding.Code.empty()) finding.Code = TakeOption(message);
  if (finding.Code.empty()) finding.Code = TakeCode(message);
  finding.Message = OneLine(message);
  finding.Place = parts.Place;
  if (!parts.HasPlace && LooksLikeFile(parts.Origin)) finding.Place.File = parts.Origin;
  const std::u16string& file = finding.Place.File;
  if (!file.empty() && !finding.Project.empty() && !text::IsAbsolutePath(file))
    finding.Place.File = text::JoinPath(text::ExtractFileDir(finding.Project), file);
  finding.Rule = RuleOf(finding);
  return finding;
}

// --- The quick look ---

bool IsSaying(std::u16string_view behind) {
  if (behind.empty() || !(IsBlank(behind.front()) || IsLetter(behind.front()))) return false;
  behind = text::TrimLeft(behind);
  return std::ranges::any_of(Sayings,
                             [behind](const TCategory& saying) { return behind.starts_with(saying.Word); });
}

// Whether a category or a code ends before the colon, or colours hide what does.
bool IsWorthReading(std::u16string_view line, std::size_t colon) {
  const std::size_t end = EndOfWordBefore(line, colon);
  if (end == 0) return false;
  const char16_t last = line[end - 1];
  if (IsSaying(line.substr(colon + 1))) return true;
  if (!IsLetter(last) && !IsDigit(last)) return false;
  const std::u16string_view word = WordBefore(line, end);
  constexpr std::size_t longestColour = 8;
  const std::size_t near = std::min(end, longestColour + word.size());
  const bool isColoured = line.substr(end - near, near).find(Escape) != NoPlace;
  if (isColoured || FindCategory(word) != nullptr) return true;
  TParts parts;
  return (IsCode(word) || IsCapitals(word)) && ReadCategory(line, colon, parts) != NoPlace;
}

} // namespace

std::optional<TFinding> ReadDiagnostic(std::u16string_view line) {
  bool isWorthReading = false;
  const auto nextColon = [line](std::size_t from) { return text::FindEither(line, u':', WideColon, from); };
  for (std::size_t at = nextColon(0); at < line.size() && !isWorthReading; at = nextColon(at + 1))
    isWorthReading = IsWorthReading(line, at);
  if (!isWorthReading) return std::nullopt;
  std::u16string plain;
  if (line.find(Escape) != line.npos) line = plain = WithoutColours(line);
  line = WithoutPrefixes(line);
  auto parts = ReadParts(line);
  if (!parts) parts = ReadSaying(line);
  if (!parts) return std::nullopt;
  return FindingOf(*parts);
}

bool IsPartOfFindingBefore(const TFinding& note) {
  return note.Severity == Note && note.Code.empty() && note.Place.Line > 0;
}

int BuildNumberOf(std::u16string_view line) {
  line = text::TrimLeft(line);
  const std::size_t end = line.find_first_not_of(u"0123456789");
  return end != line.npos && line[end] == u'>' ? text::ToIntegerOr(line.substr(0, end), 0) : 0;
}

} // namespace kx
