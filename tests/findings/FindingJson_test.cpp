#include "program/findings/FindingJson.h"

#include "tests/support/Findings.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace kx {
namespace {

std::string Written(const TFinding& finding) {
  return JsonObjectText([&](TJsonWriter& json) { WriteFinding(finding, json); });
}

TEST(FindingJson, ComesBackAsItWasWritten) {
  TFinding full = tests::FullFinding({u"a.c", 1, 2});
  full.Said = 1;
  full.Steps = {{{u"b.c", 5, 1}, u"s"}, {{u"c.c"}, u"t"}};
  const std::pair<TFinding, std::string_view> rows[] = {
      {full,
       R"({"rule":"C1","severity":"error","message":"m","file":"a.c","line":1,"column":2,"code":"c","project":"App",)"
       R"("configuration":"Debug","action":"Build","occurrences":3,"fingerprint":"f","advice":"mend it","said":1,"steps":[)"
       R"({"file":"b.c","line":5,"column":1,"message":"s"},{"file":"c.c","line":null,"column":null,"message":"t"}]})"},
      {{.Rule = u"r", .Severity = TFindingSeverity::Note},
       R"({"rule":"r","severity":"note","message":"","file":"","line":null,"column":null,"code":"","project":"",)"
       R"("configuration":"","action":"","occurrences":1,"fingerprint":"","advice":""})"},
  };
  for (const auto& [finding, json] : rows) {
    EXPECT_EQ(Written(finding), json);
    EXPECT_EQ(Written(ReadFinding(nlohmann::json::parse(json))), json);
  }
  for (const auto& [written, read] :
       {std::pair(-1, 1), {0, 1}, {2, 2}, {1'000'000, 1'000'000}, {1'000'001, 1'000'000}})
    EXPECT_EQ(ReadFinding({{"occurrences", written}}).Occurrences, read);
}

TEST(TextOf, IsAsCompilersWriteIt) {
  const std::pair<TFinding, std::u16string_view> rows[] = {
      {{.Message = u"m", .Place = {u"a.c", 1, 1}, .Code = u"C1"}, u"a.c(1,1): warning C1: m"},
      {{.Severity = TFindingSeverity::Error, .Message = u"m", .Place = {u"a.c", 1}}, u"a.c(1): error: m"},
      {{.Severity = TFindingSeverity::Note, .Message = u"m", .Place = {u"a.c"}}, u"a.c: note: m"},
      {{.Message = u"m", .Code = u"C1"}, u"warning C1: m"},
  };
  for (const auto& [finding, text] : rows)
    EXPECT_EQ(TextOf(finding), text);
  EXPECT_EQ(OneLine(u" a \r\n\r\n b\n"), u"a b");
}

} // namespace
} // namespace kx
