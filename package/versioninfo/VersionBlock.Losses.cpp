#include "package/versioninfo/VersionBlock.h"
#include "foundation/text/Text.h"

#include <algorithm>
#include <array>
#include <map>

namespace kx {

namespace {

using TItem = TVersionBlockContent::TItem;

// The first item of each name.
class TItemIndex {
public:
  explicit TItemIndex(const std::vector<TItem>& items) {
    for (const TItem& item : items)
      byName_.try_emplace(item.Name, &item);
  }
  const TItem* Find(std::u16string_view name) const {
    const auto found = byName_.find(name);
    return found == byName_.end() ? nullptr : found->second;
  }
  std::u16string_view ValueOf(std::u16string_view name) const {
    const TItem* item = Find(name);
    return item == nullptr ? std::u16string_view() : item->Value;
  }

private:
  std::map<std::u16string_view, const TItem*, text::IgnoreCaseLess> byName_;
};

// "1,2" and "1,2,0,0" are the same version.
std::u16string WholeVersion(std::u16string value) {
  for (auto commas = std::ranges::count(value, u','); commas < 3; ++commas)
    value += u",0";
  return value;
}

// Compares the block as it is with what rewriting alone makes of it and with what the stamping makes of it: a
// difference that the rewriting alone makes, and that the stamping leaves, was not asked for.
class TComparison {
public:
  TComparison(const text::TStringList& lines, const std::u16string& file, const IVersionInformation& info)
      : lines_(lines), page_(CodePageOfVersionBlock(lines)),
        doubleByte_(std::ranges::find(DoubleBytePages, page_.value_or(0)) != DoubleBytePages.end()),
        old_(ReadVersionBlockContent(lines, doubleByte_)), values_(info.Values()) {
    TVersionInfoContainer kept;
    ReadVersionBlock(lines, file, kept);
    kept_ = ReadVersionBlockContent(RewriteVersionBlock(lines, file, kept), doubleByte_);
    new_ = ReadVersionBlockContent(RewriteVersionBlock(lines, file, info), doubleByte_);
    if (old_.Begin < lines.Count()) end_ = FindEndOfBlock(lines, old_.Begin, file);
  }

  text::TStringList Run() {
    text::TStringList losses;
    if (old_.Begin >= lines_.Count()) return losses;
    Say(losses, u"changes ", Numbers(), u" in the version block, which was not asked for");
    Say(losses, u"loses the texts ", Texts(),
        u"; write each as one plain text in quotation marks in the line of its name, before the translation");
    Say(losses, u"loses ", Others(), u" of the version block");
    if (page_ && *page_ != 65001 && *page_ != 1252)
      Say(losses,
          u"writes characters in the ANSI code page, which are others in the script's code page " +
              text::FromInteger(*page_) + u": ",
          NewForeignTexts(), u"");
    return losses;
  }

private:
  // Those in which the second byte of a character can be a backslash.
  static constexpr std::array<unsigned, 3> DoubleBytePages{932, 936, 950};

  static void Say(text::TStringList& losses, std::u16string_view before,
                  const std::vector<std::u16string>& what, std::u16string_view behind) {
    if (!what.empty()) losses.Add(std::u16string(before) + text::Join(what, u", ") + std::u16string(behind));
  }

  static bool IsLost(std::u16string_view was, std::u16string_view kept, std::u16string_view becomes) {
    return was != becomes && was != kept && kept == becomes;
  }

  std::vector<std::u16string> Numbers() const {
    std::vector<std::u16string> changes;
    const TItemIndex keptItems(kept_.Head);
    const TItemIndex newItems(new_.Head);
    const bool followed = FollowsFile(kept_) && FollowsFile(new_) && !ProductIsAskedFor();
    for (const TItem& item : old_.Head) {
      const bool version = item.Name.ends_with(u"VERSION");
      const auto value = [&](const std::u16string_view text) {
        return version ? WholeVersion(std::u16string(text)) : std::u16string(text);
      };
      const std::u16string kept = value(keptItems.ValueOf(item.Name));
      const std::u16string becomes = value(newItems.ValueOf(item.Name));
      const bool follows = item.Name == u"PRODUCTVERSION" && followed && value(item.Value) != becomes &&
                           value(item.Value) != kept;
      if (!follows && !IsLost(value(item.Value), kept, becomes)) continue;
      const TItem* now = newItems.Find(item.Name);
      changes.push_back(item.Name + u" " + item.Written + u" to " +
                        (now == nullptr ? u"nothing" : now->Written));
    }
    return changes;
  }

  static bool FollowsFile(const TVersionBlockContent& content) {
    const TItemIndex items(content.Head);
    return items.ValueOf(u"FILEVERSION") == items.ValueOf(u"PRODUCTVERSION");
  }
  bool ProductIsAskedFor() const {
    return values_.LinkFileAndProductVersion || values_.AutoUpdateProductVersion ||
           !values_.ProductVersion.empty();
  }

  std::vector<std::u16string> Texts() const {
    std::vector<std::u16string> lost;
    const TItemIndex keptItems(kept_.Texts);
    const TItemIndex newItems(new_.Texts);
    for (const TItem& item : old_.Texts)
      if (IsLost(item.Value, keptItems.ValueOf(item.Name), newItems.ValueOf(item.Name)))
        lost.push_back(item.Name + u" (" + item.Written + u")");
    return lost;
  }

  std::vector<std::u16string> Others() const {
    std::vector<std::u16string> lost;
    // Its code page may follow the translation: that is where the texts are looked for.
    const auto first = [](const TVersionBlockContent& content) {
      return content.Languages.empty() ? std::u16string() : content.Languages.front().substr(0, 4);
    };
    for (std::size_t i = 0; i < old_.Languages.size(); ++i)
      if (i > 0 || IsLost(first(old_), first(kept_), first(new_)))
        lost.push_back(u"the language " + old_.Languages[i]);
    lost.insert(lost.end(), old_.Extras.begin(), old_.Extras.end());
    if (end_ > old_.End && HoldsCode(old_.End, end_))
      lost.push_back(u"lines " + Number(old_.End) + u" to " + Number(end_ - 1) +
                     u", which stand behind the end");
    if (end_ < old_.End) lost.push_back(u"the end in lines " + Number(end_) + u" to " + Number(old_.End - 1));
    return lost;
  }

  bool HoldsCode(std::size_t begin, std::size_t end) const {
    for (std::size_t i = begin; i < end; ++i)
      if (!text::Trim(lines_[i]).empty()) return true;
    return false;
  }
  static std::u16string Number(std::size_t index) {
    return text::FromInteger(static_cast<std::int64_t>(index) + 1);
  }

  std::vector<std::u16string> NewForeignTexts() const {
    std::vector<std::u16string> names;
    const TItemIndex keptItems(kept_.Texts);
    for (const TItem& item : new_.Texts)
      if (keptItems.ValueOf(item.Name) != item.Value &&
          std::ranges::any_of(item.Value, [](char16_t c) { return c >= 0x80; }))
        names.push_back(item.Name);
    return names;
  }

  const text::TStringList& lines_;
  std::optional<unsigned> page_;
  bool doubleByte_;
  TVersionBlockContent old_;
  TVersionBlockContent kept_;
  TVersionBlockContent new_;
  TVersionInfoValues values_;
  std::size_t end_ = 0;
};

} // namespace

text::TStringList FindLosses(const text::TStringList& lines, const std::u16string& file,
                             const IVersionInformation& info) {
  return TComparison(lines, file, info).Run();
}

} // namespace kx
