#include "program/runner/OptionsStore.h"

#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/runner/KnownOptions.h"
#include "tests/runner/TestActions.h"

#include <gmock/gmock.h>
#include <thread>

namespace kx::tests {
namespace {

using testing::HasSubstr;

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
  }
};

constexpr TKxOptionsClass ToolClass{
    u"Tool", u"Tools", u"Compilers", u"",
    []() -> std::unique_ptr<TKxOptionsObject> { return std::make_unique<TToolOptions>(); }};

// The same with a colour, and a word about what each takes.
class TDescribedOptions : public TToolOptions {
public:
  void SaveOptions(IKxOptionsWriter& writer) override {
    TToolOptions::SaveOptions(writer);
    writer.WriteInteger(u"Colour", 0);
  }
  std::vector<TKxOptionDescription> DescribeOptions() const override {
    return {{.Key = u"Folder", .IsFolder = true}, {.Key = u"Colour", .Enumeration = &ColourEnumeration()}};
  }
};

constexpr TKxOptionsClass DescribedClass{
    u"Described", u"Tools", u"Compilers", u"",
    []() -> std::unique_ptr<TKxOptionsObject> { return std::make_unique<TDescribedOptions>(); }};

class OptionsStoreTest : public testing::Test {
protected:
  // Starts a host over the file, registers the options, saves, and gives what the file then holds.
  std::string SavedBy(std::string_view file, std::u16string_view assignment) {
    Store = {};
    Store.Load(Host.Write("options.ini", file));
    if (!assignment.empty()) Store.Override(assignment);
    TServiceRegistry registry(Store);
    registry.RegisterOptions(ToolClass);
    const auto* loaded = static_cast<TToolOptions*>(registry.GetOptions(u"tool", u"COMPILERS"));
    Folder = loaded->Folder;
    Level = loaded->Level;
    EXPECT_TRUE(registry.SaveOptions());
    return Host.Read("options.ini");
  }

  TEmbeddedHost Host;
  TOptionsStore Store;
  std::u16string Folder;
  std::int32_t Level = 0;
};

TEST_F(OptionsStoreTest, SavesWhatWasFilledInButNeverAnOverride) {
  const std::string_view filled = "[Tools]\nFolder=C:\\Found\nLevel=8\n";
  const struct {
    std::string_view File;
    std::u16string_view Override, Folder;
    std::int32_t Level;
    std::string_view Saved;
    const char* Name;
  } cases[] = {
      {"[Tools]\nFolder = a\n", u"", u"a", 1, "[Tools]\nFolder = a\n", "stored values stay untouched"},
      {"", u"", u"C:\\Found", 8, filled, "what a load filled in is saved"},
      {"[Tools]\nFolder=a\n", u"Tools.Folder=b:\\c", u"b:\\c", 4, "[Tools]\nFolder=a\n", "for this run only"},
      {"", u"tools.folder=x", u"x", 1, filled, "an override is not what the object fills in"},
      {"", u"Tools.Level=99", u"C:\\Found", 99, filled, "nor what the object derives"},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(SavedBy(row.File, row.Override), row.Saved) << row.Name;
    EXPECT_EQ(text::ToUtf8(Folder), text::ToUtf8(row.Folder)) << row.Name;
    EXPECT_EQ(Level, row.Level) << row.Name;
  }
}

TEST_F(OptionsStoreTest, KeepsMarkAndUnknownContentWhenItSaves) {
  Store.Load(Host.Write("options.ini", "\xEF\xBB\xBF[A]\r\nk=\xC3\xA9\r\n"));
  EXPECT_EQ(Store.Get({u"A", u"k"}), u"\u00E9");
  Store.Set({u"A", u"k"}, u"\u00FC");
  ASSERT_TRUE(Store.Save());
  EXPECT_EQ(Host.Read("options.ini"), "\xEF\xBB\xBF[A]\r\nk=\xC3\xBC\r\n");
}

TEST_F(OptionsStoreTest, KeepsWhatOthersHaveStoredInTheMeantime) {
  Store.Load(Host.Write("options.ini", "[A]\na=1\nb=1\nc=1\n"));
  TOptionsStore other;
  other.Load(Store.FileName());
  other.Set({u"A", u"a"}, u"2");
  other.Remove({u"A", u"c"});
  other.Set({u"B", u"new"}, u"2");
  ASSERT_TRUE(other.Save());
  for (const std::u16string_view value : {u"3", u"4"}) { // as an editor that stays open
    Store.Set({u"A", u"a"}, u"1");                       // as it was read
    Store.Set({u"A", u"b"}, value);
    ASSERT_TRUE(Store.Save());
  }
  EXPECT_EQ(Host.Read("options.ini"), "[A]\na=2\nb=4\n\n[B]\nnew=2\n");
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
  registry.RegisterOptions(DescribedClass);
  const auto known = KnownOptions(registry);
  std::string names;
  for (const auto& option : known)
    names += text::ToUtf8(option.Name.Section + u"." + option.Name.Key) + " ";
  EXPECT_EQ(names, "Tools.Folder Tools.Level Tools.Colour DotNetFramework.v2.0 DotNetFramework.v3.5 "
                   "DotNetFramework.v4.0 WebSites.ApplicationHostConfig ");
  EXPECT_EQ(FindOption(known, {u"tools", u"FOLDER"}), &known[0]);
  EXPECT_EQ(FindOption(known, {u"tools", u"Gone"}), nullptr);
  const std::u16string folder = text::ExtractFileDir(Host.Write("file", ""));
  const std::u16string gone = folder + u"/gone";
  const std::tuple<std::u16string_view, std::u16string, std::string> cases[] = {
      // stored and shown again, doubts, or refused
      {u"Tools.Folder", folder, "same"},
      {u"Tools.Folder", u"", "same"},
      {u"Tools.Folder", u" ", "same"},
      {u"Tools.Folder", gone, "There is no folder @/gone on this machine."},
      {u"Tools.Folder", u"x", "Tools.Folder takes the full path of a folder, not \"x\"."},
      {u"Tools.Folder", folder + u"/file", "Tools.Folder takes a folder; @/file is a file. Its folder is @."},
      {u"WebSites.ApplicationHostConfig", folder + u"/file", "same"},
      {u"WebSites.ApplicationHostConfig", gone, "There is no file @/gone on this machine."},
      {u"WebSites.ApplicationHostConfig", u"x",
       "WebSites.ApplicationHostConfig takes the full path of a file, not \"x\"."},
      {u"Tools.Level", u"7", "same"},
      {u"Tools.Level", u"x", "Tools.Level takes a number, not \"x\"."},
      {u"Tools.Colour", u"BLUE", "2 shown as Blue"},
      {u"Tools.Colour", u"0", "0 shown as Red"},
      {u"Tools.Colour", u"2", "2 shown as Blue"},
      {u"Tools.Colour", u"3", "Tools.Colour takes Red, Green, Blue; not \"3\"."},
      {u"Tools.Colour", u"-1", "Tools.Colour takes Red, Green, Blue; not \"-1\"."},
      {u"Tools.Colour", u"Bleu", "Tools.Colour takes Red, Green, Blue; not \"Bleu\". Did you mean \"Blue\"?"},
      {u"Tools.Levle", u"", "Unknown option \"Tools.Levle\". Did you mean \"Tools.Level\"?"},
  };
  for (const auto& [name, value, expected] : cases) {
    std::u16string said;
    try {
      const auto& option = RequireOption(known, TOptionName::Parse(name));
      const std::u16string stored = StoredText(option, value);
      const std::u16string shown = ShownText(option, stored);
      said = stored == value && shown == value ? u"same" : stored + u" shown as " + shown;
      said = CheckPlace(option, value).value_or(said);
    } catch (const EKxException& error) {
      said = error.Message();
    }
    EXPECT_EQ(Generic(text::ToUtf8(text::ReplaceAll(said, folder, u"@"))), expected) << text::ToUtf8(value);
  }
  EXPECT_EQ(ShownText(known[2], u"3") + ShownText(known[2], u"-1"), u"3-1");
}

TEST_F(OptionsStoreTest, RefusesWhatItCannotRead) {
  const struct {
    std::string_view Bytes;
    const char* Message;
  } cases[] = {{"[A]\nk=\xE9\n", "(2): The file must be in UTF-8"},

               {"[A]\n\nwhat\n", "(3): Expected [Section]"},
               {"\n\n[S\n", "(3): The section's name has no closing bracket."},
               {"; c\r\nK=1\r\n", "(2): The value stands before the first [Section]."}};
  for (const auto& row : cases) {
    try {
      Store.Load(Host.Write("bad.ini", row.Bytes));
      ADD_FAILURE() << row.Message;
    } catch (const EKxParseError& error) {
      EXPECT_THAT(error.what(), HasSubstr(std::string("bad.ini") + row.Message));
    }
  }
  for (const std::u16string_view wrong : {u"A.b", u"A=b", u".b=c", u"=A.b"})
    EXPECT_THROW(Store.Override(wrong), EKxException) << text::ToUtf8(wrong);
}

} // namespace
} // namespace kx::tests
