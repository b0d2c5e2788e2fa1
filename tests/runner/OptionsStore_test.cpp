#include "runner/OptionsStore.h"

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
