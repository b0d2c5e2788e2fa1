#include "contract/Pages.h"

#include "tests/support/Failure.h"
#include "tests/support/TemporaryFolder.h"

#include "foundation/text/Encoding.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

// One field of each kind, by its name; "same" has no label of its own.
class TPage : public TKxPropertyPage {
public:
  TPage() {
    using enum TKxFieldKind;
    for (const auto* name : {u"one", u"two"})
      Add({.Name = name, .Kind = Choice, .Label = u"One Of", .Group = u"g"});
    Add({.Name = u"other", .Kind = Choice, .Label = u"Other", .Group = u"h"});
    Add({.Name = u"box", .Kind = CheckBox, .Label = u"Box"});
    Add({.Name = u"number", .Kind = Integer, .Label = u"Number"});
    Add({.Name = u"same", .Kind = Integer});
    Add({.Name = u"lines", .Kind = List, .Label = u"Lines"});
    for (const bool takes : {false, true})
      Add({.Name = takes ? u"free" : u"fixed",
           .Kind = DropDown,
           .Label = u"Items",
           .TakesNewItems = takes,
           .Items = {u"a", u"b"}});
    Add({.Name = u"secret", .Kind = Secret, .Label = u"Password"});
    Add({.Name = u"file", .Kind = FilePath, .Label = u"File", .Title = u"Choose", .Filter = u"All|*"});
    Add({.Name = u"folder", .Kind = FolderPath, .Label = u"Folder", .Title = u"Choose"});
    Add({.Name = u"off", .Label = u"Off", .Buttons = {{TKxButtonKind::Accept, {}}}, .Enabled = false});
  }
  std::u16string PageName() const override { return u"Page"; }
  void InitFrame() override {}
  void InitPage(TKxPersistent& /*edited*/) override {}
  void ReadActionData() override {}
  void WriteActionData() override { RequireNoErrors(); }
  void ApplyEnableRules() override { ++Rules; }
  using TKxPropertyPage::Number;
  using TKxPropertyPage::RemoveFields;
  using TKxPropertyPage::TakeNewSecret;

  int Rules = 0;
};

class TChoosers : public IKxDesignService {
public:
  TChoosers() { SetServices({.Design = this}); }
  ~TChoosers() override { SetServices({}); }
  std::optional<std::u16string> Chosen;
  std::string Asked;

  text::TStringList GetVariableNames() override { return {}; }
  std::optional<std::u16string> BrowseForDirectory(std::u16string_view title,
                                                   std::u16string_view start) override {
    Asked = text::ToUtf8(title) + " folder from " + text::ToUtf8(start);
    return Chosen;
  }
  std::optional<std::u16string> BrowseForFile(std::u16string_view title, std::u16string_view start,
                                              std::u16string_view filter,
                                              std::u16string_view /*extension*/) override {
    Asked = text::ToUtf8(title) + " " + text::ToUtf8(filter) + " from " + text::ToUtf8(start);
    return Chosen;
  }
  void ShowMessage(std::u16string_view text) override { Asked = text::ToUtf8(text); }
};

TEST(Pages, OneChoiceOfAGroupIsChecked) {
  TPage page;
  std::string seen;
  for (const auto* name : {u"", u"other", u"one", u"two"}) {
    if (*name != 0) page.SetValue(name, u"True");
    for (const auto* field : {u"one", u"two", u"other", u"box"})
      seen += text::ToUtf8(page.Field(field).Value).substr(0, 1);
    seen += ' ';
  }
  page.SetValue(u"two", u"False");
  EXPECT_EQ(seen, "FFFF FFTF TFTF FTTF ");
  EXPECT_EQ(page.Field(u"two").Value + page.Field(u"other").Value, u"FalseTrue");
}

TEST(Pages, ASecretIsTakenOnceAndIsNeverShown) {
  TPage page;
  const auto state = [&page](bool isSet, bool isChanged) {
    const TKxPageField& field = page.Field(u"secret");
    return field.IsSet == isSet && field.IsChanged == isChanged && field.Value.empty();
  };
  EXPECT_EQ(page.TakeNewSecret(u"secret"), std::nullopt);
  page.SetValue(u"secret", u"old");
  page.SetValue(u"secret", u"new");
  EXPECT_TRUE(state(true, true));
  EXPECT_EQ(page.TakeNewSecret(u"secret"), u"new");
  EXPECT_TRUE(state(true, false));
  EXPECT_EQ(page.TakeNewSecret(u"secret"), std::nullopt);
  page.SetValue(u"secret", u"");
  EXPECT_TRUE(state(false, true));
  page.RemoveFields();
  EXPECT_EQ(page.TakeNewSecret(u"secret"), std::nullopt);
}

TEST(Pages, ButtonsBrowseAndAreRefusedWhereThereAreNone) {
  TChoosers choosers;
  TPage page;
  page.SetValue(u"folder", u"here");
  page.Click(u"file", TKxButtonKind::Browse);
  EXPECT_EQ(page.Field(u"file").Value, u"") << "the user gave up";
  choosers.Chosen = u"there";
  const std::pair<std::u16string_view, const char*> asked[] = {{u"file", "Choose All|* from "},
                                                               {u"folder", "Choose folder from here"}};
  for (const auto& [name, text] : asked) {
    page.Click(name, TKxButtonKind::Browse);
    EXPECT_EQ(std::pair(choosers.Asked, page.Field(name).Value),
              std::pair(std::string(text), std::u16string(u"there")));
  }
  EXPECT_EQ(page.Rules, 4);
  const std::pair<std::u16string_view, const char*> refused[] = {
      {u"number", "The field \"Number\" has no such button."}, {u"off", "The field \"Off\" is disabled."}};
  for (const auto& [name, text] : refused)
    EXPECT_EQ(tests::FailureOf([&] { page.Click(name, TKxButtonKind::Accept); }), text);
  EXPECT_EQ(page.Field(u"file").Buttons.size() + page.Field(u"lines").Buttons.size(), 1U);
  ShowMessage(u"said");
  EXPECT_EQ(choosers.Asked, "said");
}

TEST(Pages, AChosenFileGetsItsExtensionAndIsNoFolder) {
  const tests::TTemporaryFolder folder;
  folder.Write("there");
  const std::pair<const char*, const char*> rows[] = {{"a", "a.sln"}, {"a.b", "a.b"}, {"there", "there"}};
  for (const auto& [chosen, file] : rows)
    EXPECT_EQ(KxChosenFile(folder.Path(chosen), u".sln"), folder.Path(file));
  EXPECT_EQ(folder.Plain(tests::FailureOf([&] { KxChosenFile(folder.Path(), u".sln"); })),
            "\"DIR\" is a folder. Choose a file.");
}

} // namespace
} // namespace kx
