#include "contract/PublishedProperties.h"

#include "foundation/text/Encoding.h"
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

TEST(PublishedProperties, ComputedOnesAreNeitherStoredNorWritable) {
  TPainter painter;
  const TKxPublishedProperty* litres = painter.PublishedProperties().Find(u"Litres");
  ASSERT_NE(litres, nullptr);
  EXPECT_TRUE(litres->ReadOnly && !litres->Stored);
  litres->Set(painter, TKxPropertyValue(std::int32_t{99}));
  EXPECT_EQ(PropertyToText(*litres, litres->Get(painter)), u"2");
  EXPECT_EQ(painter.PublishedProperties().Find(u"Litre"), nullptr);
}

} // namespace
} // namespace kx
