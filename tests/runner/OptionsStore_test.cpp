#include "program/runner/OptionsStore.h"

#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/runner/KnownOptions.h"
#include "tests/runner/TestActions.h"
#include "tests/support/Failure.h"

#include <gmock/gmock.h>
#include <thread>

namespace kx::tests {
namespace {

// Finds its folder by itself when none is stored, and derives a level from it.
class TToolOptions : public TKxOptionsObject {
public:
  std::u16string Folder;
  std::int32_t Level = 0;

  void LoadOptions(const IKxOptionsReader& reader) override {
    TKxOptionsObject::LoadOptions(reader);
    Folder = reader.ReadString(u"Folder", u"");
    if (Folder.empty()) {
      Folder = u"C:\\Found";
      SetModified();
    }
    Level = reader.ReadInteger(u"Level", static_cast<std::int32_t>(Folder.size()));
  }
  void SaveOptions(IKxOptionsWriter& writer) override {
    TKxOptionsObject::SaveOptions(writer);
    writer.WriteString(u"Folder", Folder);
    writer.WriteInteger(u"Level", Level);
    writer.WriteInteger(u"Colour", 0);
  }
  std::vector<TKxOptionDescription> DescribeOptions() const override {
    return {{.Key = u"Folder", .IsFolder = true}, {.Key = u"Colour", .Enumeration = &ColourEnumeration()}};
  }
};

constexpr TKxOptionsClass ToolClass{
    u"Tool", u"Tools", u"Compilers", u"",
    []() -> std::unique_ptr<TKxOptionsObject> { return std::make_unique<TToolOptions>(); }};

class OptionsStoreTest : public testing::Test {
protected:
  TEmbeddedHost Host;
  TOptionsStore Store;
};

TEST_F(OptionsStoreTest, SavesWhatWasFilledInButNeverAnOverride) {
  const std::string stored = "[Tools]\nFolder = a\n";
  const std::string filled = "[Tools]\nFolder=C:\\Found\nLevel=8\nColour=0\n";
  const struct {
    const char* Name;
    std::string File;
    std::u16string_view Override;
    std::string Saved;
    std::u16string Folder;
    std::int32_t Level;
  } cases[] = {
      {"stored values stay untouched", stored, u"", stored, u"a", 1},
      {"what a load filled in is saved", "", u"", filled, u"C:\\Found", 8},
      {"for this run only", stored, u"Tools.Folder=b:\\c", stored, u"b:\\c", 4},
      {"an override is not what the object fills in", "", u"tools.folder=x", filled, u"x", 1},
      {"nor what the object derives", "", u"Tools.Level=99", filled, u"C:\\Found", 99},
  };
  for (const auto& row : cases) {
    TOptionsStore store;
    store.Load(Host.Write("options.ini", row.File));
    if (!row.Override.empty()) store.Override(row.Override);
    TServiceRegistry registry(store);
    registry.RegisterOptions(ToolClass);
    const auto* loaded = static_cast<TToolOptions*>(registry.GetOptions(u"tool", u"COMPILERS"));
    EXPECT_TRUE(registry.SaveOptions());
    EXPECT_EQ(Host.Read("options.ini"), row.Saved) << row.Name;
    EXPECT_EQ(std::pair(loaded->Folder, loaded->Level), std::pair(row.Folder, row.Level)) << row.Name;
  }
}

TEST_F(OptionsStoreTest, KeepsWhatOthersHaveStoredInTheMeantime) {
  Store.Load(Host.Write("options.ini", "\xEF\xBB\xBF[A]\r\na=\xC3\xA9\r\nb=1\r\nc=1\r\n"));
  TOptionsStore other;
  other.Load(Store.FileName());
  other.Set({u"A", u"a"}, u"2");
  other.Remove({u"A", u"c"});
  other.Set({u"B", u"new"}, u"2");
  ASSERT_TRUE(other.Save());
  for (const std::u16string_view value : {u"3", u"\u00FC"}) { // as an editor that stays open
    Store.Set({u"A", u"a"}, u"\u00E9");                       // as it was read
    Store.Set({u"A", u"b"}, value);
    ASSERT_TRUE(Store.Save());
  }
  EXPECT_EQ(Host.Read("options.ini"), "\xEF\xBB\xBF[A]\r\na=2\r\nb=\xC3\xBC\r\n\r\n[B]\r\nnew=2\r\n");
  Host.Write("options.ini", "no section\n");
  Store.Set({u"A", u"b"}, u"5");
  EXPECT_FALSE(Store.Save());
  EXPECT_EQ(Host.Read("options.ini"), "no section\n");
}

TEST_F(OptionsStoreTest, LosesNothingOfManyWritersAtOnce) {
  constexpr int writers = 8, keys = 15;
  const std::u16string file = Host.Write("options.ini", "");
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < writers; ++i)
      threads.emplace_back([&file, section = text::FromInteger(i)] {
        for (int key = 0; key < keys; ++key) {
          TOptionsStore store;
          store.Load(file);
          store.Set({section, text::FromInteger(key)}, u"x");
          EXPECT_TRUE(store.Save());
        }
      });
  }
  Store.Load(file);
  EXPECT_EQ(Store.StoredNames().size(), std::size_t{writers * keys});
}

TEST_F(OptionsStoreTest, KnowsWhatIsReadAndWhatItTakes) {
  TServiceRegistry registry(Store);
  registry.RegisterOptions(ToolClass);
  const auto known = KnownOptions(registry);
  std::string names;
  for (const auto& option : known)
    names += text::ToUtf8(option.Name.Section + u"." + option.Name.Key) + " ";
  EXPECT_EQ(names, "Tools.Folder Tools.Level Tools.Colour DotNetFramework.v2.0 DotNetFramework.v3.5 "
                   "DotNetFramework.v4.0 WebSites.ApplicationHostConfig Editor.OpenFile ");
  const std::u16string file = Host.Write("file", "");
  const std::u16string folder = file.substr(0, file.size() - 5);
  const std::u16string gone = folder + u"/gone";
  const std::tuple<std::u16string_view, std::u16string, std::string> cases[] = {
      // stored and shown again, doubts, or refused
      {u"tools.FOLDER", folder, "same"},
      {u"Tools.Folder", u" ", "same"},
      {u"Tools.Folder", gone, "There is no folder @/gone on this machine."},
      {u"Tools.Folder", u"x", "Tools.Folder takes the full path of a folder, not \"x\"."},
      {u"Tools.Folder", file, "Tools.Folder takes a folder; @/file is a file. Its folder is @."},
      {u"WebSites.ApplicationHostConfig", file, "same"},
      {u"WebSites.ApplicationHostConfig", gone, "There is no file @/gone on this machine."},
      {u"Editor.OpenFile", u"ed://{file}", "same"},
      {u"Editor.OpenFile", u"http://{file}",
       "The address of an editor looks like scheme://file/{file}:{line}:{column}, with a scheme that a "
       "program on this machine has registered; not \"http://{file}\"."},
      {u"Tools.Level", u"-5", "same"},
      {u"Tools.Level", u"x", "Tools.Level takes a number, not \"x\"."},
      {u"Tools.Colour", u"BLUE", "2 shown as Blue"},
      {u"Tools.Colour", u"0", "0 shown as Red"},
      {u"Tools.Colour", u"3", "Tools.Colour takes Red, Green, Blue; not \"3\"."},
      {u"Tools.Colour", u"-1", "Tools.Colour takes Red, Green, Blue; not \"-1\"."},
      {u"Tools.Colour", u"Bleu", "Tools.Colour takes Red, Green, Blue; not \"Bleu\". Did you mean \"Blue\"?"},
      {u"Tools.Levle", u"", "Unknown option \"Tools.Levle\". Did you mean \"Tools.Level\"?"},
  };
  for (const auto& [name, value, expected] : cases) {
    std::u16string said;
    const std::string refused = FailureOf([&] {
      const auto& option = RequireOption(known, TOptionName::Parse(name));
      const std::u16string stored = StoredText(option, value);
      const std::u16string shown = ShownText(option, stored);
      said = CheckPlace(option, value)
                 .value_or(stored == value && shown == value ? u"same" : stored + u" shown as " + shown);
    });
    said = text::ReplaceAll(said + text::FromUtf8(refused), folder, u"@");
    EXPECT_EQ(Generic(text::ToUtf8(said)), expected) << text::ToUtf8(value);
  }
  EXPECT_EQ(ShownText(known[2], u"3") + ShownText(known[2], u"-1"), u"3-1");
}

TEST_F(OptionsStoreTest, RefusesWhatItCannotRead) {
  const std::pair<std::string, std::string> cases[] = {
      {"[A]\nk=\xE9\n", "(2): The file must be in UTF-8"},
      {"[A]\n\nwhat\n", "(3): Expected [Section]"},
      {"\n\n[S\n", "(3): The section's name has no closing bracket."},
      {"; c\r\nK=1\r\n", "(2): The value stands before the first [Section]."}};
  for (const auto& [bytes, message] : cases)
    EXPECT_THAT(FailureOf([&] { Store.Load(Host.Write("bad.ini", bytes)); }),
                testing::HasSubstr("bad.ini" + message));
  for (const std::u16string_view wrong : {u"A.b", u"A=b", u".b=c", u"=A.b"})
    EXPECT_THROW(Store.Override(wrong), EKxException) << text::ToUtf8(wrong);
}

TEST(Names, OfOptionsAndVariablesAreRefusedWhereAPartIsMissing) {
  for (const std::string name : {"", "A", ".B", "A."})
    EXPECT_EQ(FailureOf([&] { TOptionName::Parse(text::FromUtf8(name)); }),
              "\"" + name + "\" names no option: expected SECTION.KEY.");
  TOptionsStore store;
  EXPECT_EQ(FailureOf([&] { store.Override(u"A.B"); }),
            "\"A.B\" sets no option: expected SECTION.KEY=VALUE.");
  EXPECT_EQ(FailureOf([] { TRuleSettings().Set(u"no-tests"); }),
            "\"no-tests\" sets no rule: expected NAME=error, NAME=warning or NAME=off.");
  const std::string rest =
      " sets no variable: expected NAME=VALUE, the name of letters, digits, \"_\" and \".\".";
  for (const std::string name : {"A", "=x", "a b=x"})
    EXPECT_EQ(FailureOf([&] { TProjectVariable::Parse(text::FromUtf8(name)); }), "\"" + name + "\"" + rest);
  EXPECT_EQ(TProjectVariable::Parse(u"a.b_1==x\ny").Value, u"=x\r\ny");
}

} // namespace
} // namespace kx::tests
