// The spelling of version information in resource scripts.
#include "package/versioninfo/VersionInfo.h"
#include "foundation/text/Text.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <optional>

namespace kx {

namespace {

using TNumbers = std::array<std::int32_t, 4>;

TNumbers FileNumbers(const TVersionInfoValues& values) {
  return {values.MajorVersion, values.MinorVersion, values.ReleaseVersion, values.BuildVersion};
}

std::u16string Joined(const TNumbers& numbers, std::u16string_view separator) {
  std::array<std::u16string, 4> parts;
  for (std::size_t i = 0; i < parts.size(); ++i)
    parts[i] = text::FromInteger(numbers[i]);
  return text::Join(parts, separator);
}

// One to four numbers as people and resource editors write them: 1.2.3.4 or 1, 2, 3, 4.
std::optional<TNumbers> NumbersOf(std::u16string_view version) {
  const std::u16string dotted = text::ReplaceAll(version, u",", u".");
  const auto parts = text::Split(dotted, u'.');
  TNumbers numbers{};
  if (parts.size() > numbers.size()) return std::nullopt;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const auto number = text::ToInteger(text::Trim(parts[i]));
    if (!number) return std::nullopt;
    numbers[i] = *number;
  }
  return numbers;
}

bool Fits(std::int32_t number) {
  return number >= 0 && number <= 0xFFFF;
}

// No reader reports the numbers of the product, so they come from its text where that is not to follow the
// file's.
TNumbers ProductNumbers(const TVersionInfoValues& values) {
  const TNumbers file = FileNumbers(values);
  if (values.LinkFileAndProductVersion) return file;
  if (const auto numbers = NumbersOf(values.ProductVersion)) return *numbers;
  if (values.AutoUpdateProductVersion) return file;
  const auto numbers = NumbersOf(values.Strings.Value(u"ProductVersion"));
  return numbers && std::ranges::all_of(*numbers, Fits) ? *numbers : file;
}

std::u16string Today() {
  const std::chrono::year_month_day day{
      std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now())};
  const auto twoDigits = [](unsigned number) {
    return (number < 10 ? u"0" : u"") + text::FromInteger(number);
  };
  return text::FromInteger(static_cast<int>(day.year())) + u"-" +
         twoDigits(static_cast<unsigned>(day.month())) + u"-" + twoDigits(static_cast<unsigned>(day.day()));
}

TVersionInfoValues WithAutomaticUpdates(TVersionInfoValues values) {
  if (values.AutoUpdateFileVersion) SetVersionText(values, u"FileVersion", Joined(FileNumbers(values), u"."));
  if (values.AutoUpdateProductVersion)
    SetVersionText(values, u"ProductVersion", Joined(ProductNumbers(values), u"."));
  if (values.LinkFileAndProductVersion && values.Strings.IndexOfName(u"FileVersion"))
    SetVersionText(values, u"ProductVersion", std::u16string(values.Strings.Value(u"FileVersion")));
  if (values.IncludeCompileDate) SetVersionText(values, u"CompileDate", Today());
  return values;
}

constexpr std::u16string_view QuoteEscape = u"\\042";

// Characters that would end the line of a statement, or be nothing in a text, are spelled by their number.
std::u16string ControlEscape(char16_t c) {
  if (c == u'\n') return u"\\n";
  if (c == u'\r') return u"\\r";
  if (c == u'\t') return u"\\t";
  std::u16string out = u"\\";
  for (const unsigned shift : {6U, 3U, 0U})
    out += static_cast<char16_t>(u'0' + ((static_cast<unsigned>(c) >> shift) & 7U));
  return out;
}

// A quotation mark is spelled by its number: readers of scripts take the first one in a value for its end,
// doubled or not.
std::u16string Encoded(std::u16string_view text) {
  std::u16string out;
  for (const char16_t c : text)
    if (c == u'"')
      out += QuoteEscape;
    else if (c < u' ' || c == 0x7F)
      out += ControlEscape(c);
    else
      (out += c == u'\\' ? u"\\" : u"") += c;
  return out;
}

// The first character of a spelling: an escape, a doubled quotation mark or one unit.
std::u16string_view FirstOf(std::u16string_view spelling) {
  if (spelling.starts_with(QuoteEscape)) return spelling.substr(0, QuoteEscape.size());
  const bool pair = spelling.starts_with(u'\\') || spelling.starts_with(u"\"\"");
  return spelling.substr(0, pair ? 2 : 1);
}
bool IsQuote(std::u16string_view character) {
  return character == QuoteEscape || character.ends_with(u'"');
}

// Other escapes stay as they are: what they stand for depends on the compiler's code page.
std::u16string Decoded(std::u16string_view spelling) {
  std::u16string out;
  while (!spelling.empty()) {
    const std::u16string_view character = FirstOf(spelling);
    out += IsQuote(character) ? u"\"" : character == u"\\\\" ? u"\\" : character;
    spelling.remove_prefix(character.size());
  }
  return out;
}

// A spelling from a script, without what would end the quotation marks around it or swallow the last of them:
// readers cut a value at its first quotation mark.
std::u16string Mended(std::u16string_view spelling) {
  std::u16string out;
  while (!spelling.empty()) {
    const std::u16string_view character = FirstOf(spelling);
    // Behind a character that is not ASCII a single backslash at the end is the second byte of that one, in a
    // code page with two bytes a character.
    const bool half = !out.empty() && out.back() >= 0x80;
    out += IsQuote(character) ? QuoteEscape : character == u"\\" && !half ? u"\\\\" : character;
    spelling.remove_prefix(character.size());
  }
  return out;
}

// The one text whose name in a script is not that of the properties.
constexpr std::u16string_view KeyInScript = u"SpecialBuild=";
constexpr std::u16string_view KeyInProperties = u"SpecialBuildDetails=";

std::u16string Renamed(std::u16string_view line, std::u16string_view from, std::u16string_view to) {
  if (!text::StartsWithIgnoreCase(line, from)) return std::u16string(line);
  return std::u16string(to) + std::u16string(line.substr(from.size()));
}

// A line Name=Value of a script as the values keep it.
std::u16string FromScript(std::u16string_view line) {
  return Decoded(Renamed(line, KeyInScript, KeyInProperties));
}

std::u16string Asked(const TKxVersionValueHook& hook, const std::u16string& line) {
  const std::size_t equals = line.find(u'=');
  if (!hook || equals == std::u16string::npos) return line;
  std::u16string value = line.substr(equals + 1);
  hook(line.substr(0, equals), line.substr(equals + 1), value, true);
  return line.substr(0, equals + 1) + value;
}

void AddStrings(const TVersionInfoValues& values, const TKxVersionValueHook& hook, text::TStringList& lines) {
  std::map<std::u16string, std::u16string_view> spellings;
  for (const auto& line : values.AsRead)
    spellings.emplace(FromScript(line), line);
  for (const auto& kept : values.Strings) {
    std::u16string line = Asked(hook, kept);
    // A text that nobody changed keeps its spelling.
    const auto spelling = spellings.find(line);
    const auto spelled = spelling == spellings.end() ? Encoded : Mended;
    line = spelling == spellings.end() ? Renamed(line, KeyInProperties, KeyInScript)
                                       : std::u16string(spelling->second);
    const std::size_t equals = line.find(u'=');
    if (equals == std::u16string::npos) continue;
    lines.Add(u"            VALUE \"" + spelled(line.substr(0, equals)) + u"\", \"" +
              spelled(line.substr(equals + 1)) + u"\"");
  }
}

std::u16string Hex(std::uint32_t number, std::size_t digits) {
  std::u16string text;
  for (; number != 0 || text.size() < digits; number /= 16)
    text.insert(text.begin(), u"0123456789abcdef"[number % 16]);
  return text;
}

void AddHead(const TVersionInfoValues& values, text::TStringList& lines) {
  const std::uint32_t flags = (values.IsDebug ? 0x01U : 0U) | (values.IsPreRelease ? 0x02U : 0U) |
                              (values.IsPrivate ? 0x08U : 0U) | (values.IsSpecial ? 0x20U : 0U);
  lines.Add(u" FILEVERSION " + Joined(FileNumbers(values), u","));
  lines.Add(u" PRODUCTVERSION " + Joined(ProductNumbers(values), u","));
  lines.Add(u" FILEFLAGSMASK 0x3fL");
  lines.Add(u" FILEFLAGS 0x" + Hex(flags, 2));
  lines.Add(u" FILEOS 0x40004L");
  // The suffix is what tells a program from a library to those who read the digits behind "0x".
  lines.Add(values.IsDLL ? u" FILETYPE 0x2" : u" FILETYPE 0x1L");
  lines.Add(u" FILESUBTYPE 0x0L");
}

} // namespace

void SetVersionText(TVersionInfoValues& values, std::u16string_view name, std::u16string_view text) {
  const std::u16string line = Renamed(std::u16string(name) + u"=", KeyInScript, KeyInProperties);
  const std::u16string_view known = std::u16string_view(line).substr(0, line.size() - 1);
  if (const auto index = values.Strings.IndexOfName(known)) {
    values.Strings.Set(*index, line + std::u16string(text));
  } else {
    values.Strings.Add(line + std::u16string(text));
  }
}

void TVersionInfoContainer::TakeStrings() const {
  if (!reported_) return;
  values_.AsRead.SetText(*reported_);
  values_.Strings.Clear();
  for (const auto& line : values_.AsRead)
    values_.Strings.Add(FromScript(line));
  reported_.reset();
}

std::optional<std::u16string>
TVersionInfo::CheckNumbers(const TVersionInfoValues& values,
                           const std::function<bool(std::u16string_view name)>& isWanted) {
  using T = TVersionInfoValues;
  static constexpr std::pair<std::u16string_view, std::int32_t T::*> numbers[] = {
      {u"MajorVersion", &T::MajorVersion},
      {u"MinorVersion", &T::MinorVersion},
      {u"ReleaseVersion", &T::ReleaseVersion},
      {u"BuildVersion", &T::BuildVersion},
      {u"Locale", &T::Locale},
      {u"CodePage", &T::CodePage}};
  const auto refused = [](std::u16string_view name, std::u16string_view value) {
    return std::u16string(name) + u" " + std::u16string(value) +
           u" does not fit into a version resource, where numbers are 0 to 65535";
  };
  const auto wanted = [&isWanted](std::u16string_view name) { return !isWanted || isWanted(name); };
  for (const auto& [name, member] : numbers)
    if (wanted(name) && !Fits(values.*member)) return refused(name, text::FromInteger(values.*member));
  const auto product = NumbersOf(values.ProductVersion);
  if (wanted(u"ProductVersion") && product && !std::ranges::all_of(*product, Fits))
    return refused(u"ProductVersion", values.ProductVersion);
  return std::nullopt;
}

void TVersionInfo::GenerateVersionInfoRC(const IVersionInformation& info, text::TStringList& lines,
                                         bool withHeader, const TKxVersionValueHook& hook) {
  const TVersionInfoValues values = WithAutomaticUpdates(info.Values());
  // Both are 16 bits wide in the resource.
  const std::uint32_t locale = static_cast<std::uint32_t>(values.Locale) & 0xFFFFU;
  const std::uint32_t page = static_cast<std::uint32_t>(values.CodePage) & 0xFFFFU;
  if (withHeader) lines.Add(VersionBlockHeader);
  AddHead(values, lines);
  lines.Add(u"BEGIN");
  lines.Add(u"    BLOCK \"StringFileInfo\"");
  lines.Add(u"    BEGIN");
  lines.Add(u"        BLOCK \"" + Hex(locale, 4) + Hex(page, 4) + u"\"");
  lines.Add(u"        BEGIN");
  AddStrings(values, hook, lines);
  lines.Add(u"        END");
  lines.Add(u"    END");
  lines.Add(u"    BLOCK \"VarFileInfo\"");
  lines.Add(u"    BEGIN");
  lines.Add(u"        VALUE \"Translation\", 0x" + Hex(locale, 1) + u", " + text::FromInteger(page));
  lines.Add(u"    END");
  lines.Add(u"END");
}

} // namespace kx
