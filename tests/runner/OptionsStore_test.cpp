#include "runner/OptionsStore.h"

#include "tests/runner/TestActions.h"

#include <gmock/gmock.h>

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
  std::string SavedBy(std::string_view file, std::initializer_list<std::u16string_view> overrides) {
    Store = {};
    Store.Load(Host.Write("options.ini", file));
    for (const auto assignment : overrides)
      Store.Override(assignment);
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
  const struct {
    const char* Name;
    std::string_view File;
    std::initializer_list<std::u16string_view> Overrides;
    std::u16string_view Folder;
    std::int32_t Level;
    std::string_view Saved;
  } cases[] = {
      {"stored values stay untouched",
       "[Tools]\nFolder = C:\\Mine\n",
       {},
       u"C:\\Mine",
       7,
       "[Tools]\nFolder = C:\\Mine\n"},
      {"what a load filled in is saved",
       "; mine\n",
       {},
       u"C:\\Found",
       8,
       "; mine\n\n[Tools]\nFolder=C:\\Found\nLevel=8\n"},
      {"an override hides the stored value for this run",
       "[Tools]\nFolder=a\n",
       {u"Tools.Folder=b:\\c"},
       u"b:\\c",
       4,
       "[Tools]\nFolder=a\n"},
      {"an override is not what the object fills in",
       "",
       {u"tools.folder=x"},
       u"x",
       1,
       "[Tools]\nFolder=C:\\Found\nLevel=8\n"},
      {"the derived value of an override is not saved either",
       "",
       {u"Tools.Level=99"},
       u"C:\\Found",
       99,
       "[Tools]\nFolder=C:\\Found\nLevel=8\n"},
      {"an override elsewhere changes nothing here",
       "[Tools]\nFolder=a\n",
       {u"Other.Folder=b"},
       u"a",
       1,
       "[Tools]\nFolder=a\n"},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(SavedBy(row.File, row.Overrides), row.Saved) << row.Name;
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

TEST_F(OptionsStoreTest, AMissingFileIsEmptyAndIsMadeWithItsFolder) {
  Store.Load(Host.Path("new/deep/options.ini"));
  EXPECT_EQ(Store.Get({u"A", u"k"}), std::nullopt);
  ASSERT_TRUE(Store.Save());
  EXPECT_FALSE(std::filesystem::exists(Host.Path("new"))) << "nothing to save, so no file";
  Store.Set({u"A", u"k"}, u"v");
  ASSERT_TRUE(Store.Save());
  EXPECT_EQ(Host.Read("new/deep/options.ini"), "[A]\nk=v\n");
}

TEST_F(OptionsStoreTest, SaysWhereAFileCannotBeRead) {
  const struct {
    std::string_view Bytes;
    const char* Message;
  } cases[] = {{"[A]\nk=\xE9\n", "(2): The file must be in UTF-8"},
               {"\xFF\xFE[\0A\0", "(1): The file must be in UTF-8"},
               {"[A]\n\nwhat\n", "(3): Expected [Section]"}};
  for (const auto& row : cases) {
    try {
      Store.Load(Host.Write("bad.ini", row.Bytes));
      ADD_FAILURE() << row.Message;
    } catch (const EKxParseError& error) {
      EXPECT_THAT(error.what(), HasSubstr(std::string("bad.ini") + row.Message));
    }
  }
  EXPECT_THROW(Store.Load(Host.Path("")), EKxParseError) << "a folder";
}

TEST(OptionName, EndsItsSectionAtTheFirstDot) {
  const auto name = TOptionName::Parse(u"DotNetFramework.v4.0");
  EXPECT_EQ(name.Section, u"DotNetFramework");
  EXPECT_EQ(name.Key, u"v4.0");
  TOptionsStore store;
  for (const std::u16string_view wrong : {u"", u"NoDot", u".key", u"Section."})
    EXPECT_THROW(TOptionName::Parse(wrong), EKxException) << text::ToUtf8(wrong);
  for (const std::u16string_view wrong : {u"A.b", u"A=b", u".b=c", u"=A.b"})
    EXPECT_THROW(store.Override(wrong), EKxException) << text::ToUtf8(wrong);
}

TEST(ServiceRegistry, RefusesWhatIsRegisteredTwiceAndHelpsWithNames) {
  TEmbeddedHost host;
  EXPECT_THROW(host.Services.RegisterAction(u"step", u"Tests", TStepAction::Class()), EKxException);
  EXPECT_EQ(host.Services.RequireAction(u"step").Identifier, u"STEP");
  try {
    host.Services.RequireAction(u"STEPP");
    FAIL();
  } catch (const EKxException& error) {
    EXPECT_STREQ(error.what(), "Unknown action type \"STEPP\". Did you mean \"STEP\"?");
  }
}

} // namespace
} // namespace kx::tests
