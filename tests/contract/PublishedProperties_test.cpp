#include "contract/TablePage.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "tests/support/BareAction.h"
#include "tests/support/Failure.h"

#include <gtest/gtest.h>

#include <array>

namespace kx {
namespace {

enum class TColour { coRed, coGreen };
constexpr std::array<std::u16string_view, 2> ColourNames{u"coRed", u"coGreen"};
constexpr TKxEnumeration Colours{u"TColour", ColourNames};

class TPainter : public tests::TBareAction<TCustomKxAction> {
public:
  const TKxPropertyTable& PublishedProperties() const override {
    static const TKxPropertyTable table(
        TKxPropertyRows<TPainter>()
            .Field(
                u"Wet", [](TPainter& self) -> bool& { return self.wet_; }, u"not dry")
            .Field(
                u"Coats", [](TPainter& self) -> std::int32_t& { return self.coats_; }, u"how many")
            .Field(
                u"Colour", [](TPainter& self) -> TColour& { return self.colour_; }, Colours, u"which")
            .Accessors(u"Label", &TPainter::Label, &TPainter::SetLabel, u"text")
            .Field(
                u"Walls", [](TPainter& self) -> text::TStringList& { return self.walls_; }, u"where")
            .Computed(
                u"Litres", [](TPainter& self) { return self.coats_ * 2; }, u"needed")
            .Take());
    return table;
  }
  bool Execute() override { return true; }
  void GetPropertyAlias(text::TStringList& aliases) const override {
    aliases = {u"[Paint]", u"Colour=Hue", u"Litres=L", u"[Room]", u"Walls=Walls"};
  }
  void GetPropertyHelp(text::TStringList& help) const override { help = {u"Coats=one or two"}; }
  void GetHiddenProperties(text::TStringList& names) const override { names = {u"Wet"}; }

private:
  std::u16string Label() const { return label_; }
  void SetLabel(const std::u16string& label) { label_ = label + u"!"; }

  bool wet_ = false;
  std::int32_t coats_ = 1;
  TColour colour_ = TColour::coRed;
  std::u16string label_;
  text::TStringList walls_;
};

TEST(PublishedProperties, ReadsTextIntoTheActionAndBackOrSaysWhatIsAValue) {
  const std::tuple<std::u16string, std::u16string, std::string> cases[] = {
      {u"Wet", u"True", "True"},
      {u"wet", u" yes ", "True"},
      {u"Wet", u"0", "False"},
      {u"Coats", u"-3", "-3"},
      {u"Colour", u"COGREEN", "coGreen"},
      {u"Colour", u"1", "coGreen"},
      {u"Label", u" x ", " x !"},
      {u"Walls", u"north\nsouth", "north\r\nsouth\r\n"},
      {u"Wet", u"maybe", "Wet takes True or False, not \"maybe\"."},
      {u"Coats", u"2x", "Coats takes a number, not \"2x\"."},
      {u"Coats", u"99999999999", "Coats takes a number, not \"99999999999\"."},
      {u"Colour", u"coBlue", "Colour takes one of coRed, coGreen, not \"coBlue\"."},
      {u"Colour", u"2", "Colour takes one of coRed, coGreen, not \"2\"."},
  };
  TPainter painter;
  for (const auto& [name, text, outcome] : cases) {
    const TKxPublishedProperty* property = painter.PublishedProperties().Find(name);
    ASSERT_NE(property, nullptr) << text::ToUtf8(name);
    std::string read;
    const std::string refused = tests::FailureOf([&] {
      property->Set(painter, PropertyFromText(*property, text));
      read = text::ToUtf8(PropertyToText(*property, property->Get(painter)));
    });
    EXPECT_EQ(read + refused, outcome);
  }
}

// "Label kind (items) value | hint | what it needs", one field a line; "-" where it is disabled.
std::string Fields(const TKxTablePage& page) {
  std::u16string all;
  for (const auto& field : page.Fields()) {
    all +=
        (field.Enabled ? u"" : u"-") + field.Label + u" " + text::FromInteger(static_cast<int>(field.Kind));
    for (const auto& item : field.Items)
      all += u" (" + item + u")";
    all += u" " + text::ReplaceAll(field.Value, u"\r\n", u",") + u" | " + field.Hint + u" | " + field.Needs +
           field.Title + u"\n";
  }
  return text::ToUtf8(all);
}

TEST(TablePage, LaysItsFieldsOutOverTheProperties) {
  TPainter painter;
  TKxTablePage general(u"Properties");
  general.InitPage(painter);
  general.ReadActionData();
  EXPECT_EQ(Fields(general),
            "Paint 0  |  | \nHue 10 (Red) (Green) Red | which | \nRoom 0  |  | \nWalls 7  | where | \n"
            "Other Properties 0  |  | \nCoats 6 1 | one or two | \nLabel 4  | text | \n");
  const TKxTableField rows[] = {
      {.Property = u"Wet"},
      {.Property = u"Colour", .EnabledBy = u"Wet"},
      {.Heading = u"More"},
      {.Property = u"Coats", .Label = u"Layers", .EnabledBy = u"Colour", .EnabledAt = u"coGreen"},
      {.Property = u"Label", .Kind = TKxFieldKind::FilePath},
      {.Property = u"Walls"}};
  TKxTablePage page(u"Paint", rows);
  page.InitPage(painter);
  page.ReadActionData();
  const std::string rest = " | one or two | Needs \"Hue\": Green.\nLabel 8  | text | Select File\nWalls 7 ";
  EXPECT_EQ(Fields(page),
            "Wet 3 False | not dry | \n-Hue 10 (Red) (Green) Red | which | \nMore 0  |  | \n-Layers 6 1" +
                rest + " | where | \n");
  for (const auto& [name, value] :
       {std::pair(u"Wet", u"yes"), {u"Colour", u"Green"}, {u"Coats", u"3"}, {u"Walls", u"a\nb"}})
    page.SetValue(name, value);
  page.WriteActionData();
  page.ReadActionData();
  EXPECT_EQ(Fields(page),
            "Wet 3 True | not dry | \nHue 10 (Red) (Green) Green | which | \nMore 0  |  | \nLayers 6 3" +
                rest + "a,b, | where | \n")
      << "a label that was not changed is not set again, which would lengthen it";
  const std::tuple<std::u16string_view, std::u16string_view, std::string> refused[] = {
      {u"Wet", u"maybe", "\"Wet\" is either True or False."},
      {u"Colour", u"Blue", "\"Hue\" has no item \"Blue\"."},
      {u"wet", u"1", "The page \"Paint\" has no field \"wet\"."},
      {u"Coats", u" 4x", ""},
      {u"Wet", u"0", ""},
      {u"Coats", u"1", "The field \"Layers\" is disabled."},
  };
  for (const auto& [name, value, why] : refused)
    EXPECT_EQ(tests::FailureOf([&] { page.SetValue(name, value); }), why);
  EXPECT_EQ(tests::FailureOf([&] { page.WriteActionData(); }),
            "\"Layers\" takes a whole number, not \" 4x\".");
  EXPECT_EQ(tests::FailureOf([&] { page.Click(u"Walls", TKxButtonKind::Browse); }),
            "The field \"Walls\" has no such button.");
}

TEST(DisplayNames, AreWordsInFull) {
  const std::pair<std::u16string_view, std::u16string_view> rows[] = {
      {u"ExtraCmdLineParams", u"Extra Command Line Parameters"},
      {u"MaxCPUs", u"Max CPUs"},
      {u"WMIWebsiteNum", u"WMI Website Number"},
      {u"UseRegExA", u"Use Regular Expression A"},
      {u"lower", u"lower"},
      {u"Colour", u"Hue"}};
  for (const auto& [name, shown] : rows)
    EXPECT_EQ(DisplayName(TPainter(), name), shown);
}

} // namespace
} // namespace kx
