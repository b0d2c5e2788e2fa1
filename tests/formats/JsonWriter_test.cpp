#include "foundation/formats/JsonWriter.h"
#include "foundation/text/Encoding.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace kx::tests {
namespace {

std::vector<std::string> BlocksOf(const std::invocable<TJsonWriter&> auto& write) {
  std::vector<std::string> blocks;
  TJsonWriter json([&blocks](std::string_view utf8) { blocks.emplace_back(utf8); });
  write(json);
  json.Flush();
  return blocks;
}

std::string Written(const std::invocable<TJsonWriter&> auto& write) {
  std::string text;
  for (const auto& block : BlocksOf(write))
    text += block;
  return text;
}

TEST(JsonWriter, SetsCommasAndColons) {
  const std::string text = Written([](TJsonWriter& json) {
    json.Object([&] {
      json.ArrayMember("none", [] {});
      json.ValuesMember("some", std::vector<std::u16string>{u"a", u"b"});
      json.ArrayMember("pairs", [&] {
        json.Array([&] { json.Value(std::int64_t{-9223372036854775807} - 1); });
        json.Array([&] { json.Value(true); });
      });
      json.ObjectMember("inner", [&] { json.Member("nothing", std::optional<bool>()); });
      json.Member("last", std::optional<bool>(false));
    });
    json.EndLine();
    json.Object([] {});
  });
  EXPECT_EQ(text, R"({"none":[],"some":["a","b"],"pairs":[[-9223372036854775808],[true]],)"
                  R"("inner":{"nothing":null},"last":false})"
                  "\n{}");
}

// What another library reads in it is what was written; lone surrogates and bytes that are no UTF-8 apart.
TEST(JsonWriter, WritesAnyTextWhereverABlockEnds) {
  std::u16string all;
  for (char32_t unit = 0; unit < 0x10000; ++unit)
    all += static_cast<char16_t>(unit >= 0xD800 && unit < 0xE000 ? u'x' : unit);
  constexpr std::size_t first = TJsonWriter::BlockSize - 20;
  for (std::size_t before = first; before < TJsonWriter::BlockSize + 2; before += 3) {
    const std::u16string text = std::u16string(before, u'x') + u"\u001f\"\\\r\u00e9\u20ac\U0001F600" +
                                (before == first ? all : u"") + u"\xD83D";
    const auto blocks = BlocksOf([&](TJsonWriter& json) { json.Array([&] { json.Value(text); }); });
    std::string joined;
    for (const auto& block : blocks) {
      EXPECT_LE(block.size(), TJsonWriter::BlockSize);
      joined += block;
    }
    const auto read = nlohmann::json::parse(joined);
    EXPECT_EQ(read[0].get<std::string>(), text::ToUtf8(text.substr(0, text.size() - 1)) + "\xEF\xBF\xBD");
    EXPECT_EQ(joined, read.dump());
  }
  EXPECT_EQ(Written([](TJsonWriter& json) { json.Value(std::string_view("a\xC3(\xFF")); }),
            "\"a\xEF\xBF\xBD(\xEF\xBF\xBD\"");
}

} // namespace
} // namespace kx::tests
