// An INI file and changes to it: the first part is the file, then follow lines "section", "key" and "value"
// that are set (or, without a value, removed) one after the other.
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "fuzz/FuzzTarget.h"
#include "program/runner/IniText.h"

#include <map>

namespace kx::fuzz {
namespace {

using TName = std::pair<std::u16string, std::u16string>;
using TValues = std::map<TName, std::u16string>;

TName NameOf(std::u16string_view section, std::u16string_view key) {
  return {text::ToLower(section), text::ToLower(key)};
}

TValues ValuesOf(const TIniText& ini) {
  TValues values;
  for (const auto& section : ini.Sections())
    for (const auto& key : ini.Keys(section))
      values[NameOf(section, key)] = ini.Get(section, key).value();
  return values;
}

TIniText Parsed(std::u16string_view text) {
  TIniText ini;
  ini.Parse(text, u"a.ini");
  return ini;
}

// Where a value is set, all lines are the same but one; where it is new, they are all there.
void CheckLines(std::u16string before, std::u16string_view after, bool isNew) {
  // The last line gets the end that it lacks once another one follows.
  if (isNew && !before.empty() && !before.ends_with(u'\n') &&
      after.substr(before.size()).starts_with(u"\r\n"))
    before += u'\r';
  const auto old = text::Split(before, u'\n'); // a CR alone is part of its line
  const auto now = text::Split(after, u'\n');
  std::size_t different = 0;
  std::size_t at = 0;
  for (const auto line : old) {
    while (isNew && at < now.size() && now[at] != line)
      ++at;
    if (at == now.size() || now[at] != line) ++different;
    if (at < now.size()) ++at;
  }
  Require(isNew ? different == 0 : different <= 1 && old.size() == now.size(), "the other lines stay");
}

void Set(TIniText& ini, std::u16string_view section, std::u16string_view key, std::u16string_view value) {
  TValues expected = ValuesOf(ini);
  const std::u16string before = ini.Text();
  const bool isNew = !ini.Get(section, key);
  ini.Set(section, key, value);
  expected[NameOf(section, key)] = value;
  Require(ini.Get(section, key) == value, "a value that was set is there");
  Require(ValuesOf(ini) == expected, "the other values stay");
  Require(ValuesOf(Parsed(ini.Text())) == expected, "the text says what was set");
  CheckLines(before, ini.Text(), isNew);
  const std::u16string once = ini.Text();
  ini.Set(section, key, value);
  Require(ini.Text() == once, "setting again changes nothing");
}

void Check(std::string_view bytes) {
  TInput input(bytes);
  const std::u16string text = text::FromUtf8(input.Part());
  try {
    TIniText ini = Parsed(text);
    Require(ini.Text() == text, "what was parsed keeps its text");
    while (!input.IsEmpty()) {
      const std::u16string section = text::FromUtf8(input.Line());
      const std::u16string key = text::FromUtf8(input.Line());
      const std::u16string value = text::FromUtf8(input.Line());
      try {
        if (value.empty()) {
          ini.Remove(section, key);
        } else {
          Set(ini, section, key, value);
        }
      } catch (const EKxException&) {
      }
    }
  } catch (const EKxParseError&) {
  }
}

const TRegistration registration({"ini_text", Check});

} // namespace
} // namespace kx::fuzz
