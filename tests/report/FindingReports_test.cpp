#include "program/report/FindingReports.h"

#include "foundation/text/WindowsPath.h"
#include "program/report/Sarif.h"
#include "tests/support/Findings.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Written.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

// With an object a line.
std::string TextOf(const auto& write) {
  std::string text = tests::Written(write);
  for (std::size_t at = 0; (at = text.find("},{", at)) != std::string::npos;)
    text.insert(at += 2, "\n");
  return text;
}

// One with everything, one with nothing, and one whose file the reader of the report would not find.
TRunReport Report(const tests::TTemporaryFolder& folder) {
  TFinding full = tests::FullFinding({folder.Write("src/b b.cs", "one\ntwo\n"), 2, 5});
  full.Rule = u"CS1";
  full.Message = u"a {0} [b](c) \\[d\\] ]e";
  full.Fingerprint = u"f1";
  full.Steps = {{{u"/else/c.cs", 7}, u"{from}"}, {{}, u"nowhere"}};
  TRunReport report;
  report.Findings = {
      full,
      {.Rule = u"run-interrupted", .Severity = TFindingSeverity::Note, .Occurrences = 0},
      {.Rule = u"CS1", .Message = u"m", .Place = {u"/else/a.cs"}, .Project = u"Lib", .Fingerprint = u"f3"}};
  report.Root = folder.Path();
  report.File = text::JoinPath(folder.Path(), u"p.kxproj");
  return report;
}

TEST(FindingReports, HoldAllThatTheirReadersTake) {
  const tests::TTemporaryFolder folder;
  TRunReport report = Report(folder);
  const auto codeQuality = [&](const platform::PutBytes& put) { return WriteRunCodeQuality(report, put); };
  EXPECT_EQ(
      TextOf(codeQuality),
      R"json([{"description":"a {0} [b](c) \\[d\\] ]e","check_name":"CS1","fingerprint":"f1","severity":"major","location":{"path":"src/b b.cs","lines":{"begin":2}}},
{"description":"run-interrupted","check_name":"run-interrupted","fingerprint":"","severity":"info","location":{"path":"p.kxproj","lines":{"begin":1}}},
{"description":"m","check_name":"CS1","fingerprint":"f3","severity":"minor","location":{"path":"/else/a.cs","lines":{"begin":1}}}]
)json");
  const auto sarif = [&](const platform::PutBytes& put) { return WriteRunSarif(report, put); };
  std::string text = TextOf(sarif);
  const std::string root = UriOf(u"", folder.Path());
  text.replace(text.find(root), root.size(), "DIR");
  EXPECT_EQ(
      text,
      R"json({"$schema":"https://json.schemastore.org/sarif-2.1.0.json","version":"2.1.0","runs":[{"tool":{"driver":{"name":"kxhost","rules":[{"id":"run-interrupted","shortDescription":{"text":"The log of a run ends before the run did: it was killed, or its disk was full."},"fullDescription":{"text":"The log of a run ends before the run did: it was killed, or its disk was full."},"help":{"text":"The log of a run ends before the run did: it was killed, or its disk was full."}},
{"id":"CS1","shortDescription":{"text":"What a tool reports as CS1."},"fullDescription":{"text":"What a tool reports as CS1."},"help":{"text":"What a tool reports as CS1."}}]}},"columnKind":"utf16CodeUnits","originalUriBaseIds":{"SRCROOT":{"uri":"DIR/"}},"results":[{"ruleId":"run-interrupted","ruleIndex":0,"level":"note","message":{"text":"(no text)"},"locations":[{"physicalLocation":{"artifactLocation":{"uri":"p.kxproj","uriBaseId":"SRCROOT"},"region":{"startLine":1,"startColumn":1,"endLine":1,"endColumn":2}}}],"occurrenceCount":1},
{"ruleId":"CS1","ruleIndex":1,"level":"warning","message":{"text":"m"},"locations":[{"physicalLocation":{"artifactLocation":{"uri":"file:///else/a.cs"},"region":{"startLine":1,"startColumn":1,"endLine":1,"endColumn":2}}}],"occurrenceCount":1,"partialFingerprints":{"kxhost/v1":"f3"},"properties":{"project":"Lib"}},
{"ruleId":"CS1","ruleIndex":1,"level":"error","message":{"text":"a {{0}} [b\\](c) \\\\[d\\\\] ]e"},"locations":[{"physicalLocation":{"artifactLocation":{"uri":"src/b%20b.cs","uriBaseId":"SRCROOT"},"region":{"startLine":2,"startColumn":5,"endLine":2,"endColumn":6}}}],"occurrenceCount":3,"partialFingerprints":{"primaryLocationLineHash":"339c9e69aebadc6b:1","kxhost/v1":"f1"},"codeFlows":[{"threadFlows":[{"locations":[{"location":{"physicalLocation":{"artifactLocation":{"uri":"file:///else/c.cs"},"region":{"startLine":7,"startColumn":1,"endLine":7,"endColumn":2}},"message":{"text":"{{from}}"}}},
{"location":{"message":{"text":"nowhere"}}}]}]}],"properties":{"project":"App","configuration":"Debug","action":"Build","advice":"mend it"}}]}]}
)json");
  report.File = report.Root = u"";
  EXPECT_NE(TextOf(codeQuality).find(R"("path":"kxhost")"), std::string::npos);
  report.Findings.erase(report.Findings.begin());
  EXPECT_EQ(
      TextOf(sarif),
      R"json({"$schema":"https://json.schemastore.org/sarif-2.1.0.json","version":"2.1.0","runs":[{"tool":{"driver":{"name":"kxhost","rules":[{"id":"run-interrupted","shortDescription":{"text":"The log of a run ends before the run did: it was killed, or its disk was full."},"fullDescription":{"text":"The log of a run ends before the run did: it was killed, or its disk was full."},"help":{"text":"The log of a run ends before the run did: it was killed, or its disk was full."}},
{"id":"CS1","shortDescription":{"text":"What a tool reports as CS1."},"fullDescription":{"text":"What a tool reports as CS1."},"help":{"text":"What a tool reports as CS1."}}]}},"columnKind":"utf16CodeUnits","results":[{"ruleId":"run-interrupted","ruleIndex":0,"level":"note","message":{"text":"(no text)"},"occurrenceCount":1},
{"ruleId":"CS1","ruleIndex":1,"level":"warning","message":{"text":"m"},"locations":[{"physicalLocation":{"artifactLocation":{"uri":"file:///else/a.cs"},"region":{"startLine":1,"startColumn":1,"endLine":1,"endColumn":2}}}],"occurrenceCount":1,"partialFingerprints":{"kxhost/v1":"f3"},"properties":{"project":"Lib"}}]}]}
)json");
  for (const auto write : {&WriteRunSarif, &WriteRunCodeQuality}) {
    const auto full =
        write(report, [](std::string_view) -> platform::Status { return platform::Failure{u"full"}; });
    EXPECT_EQ(full.Message(), u"full");
  }
}

TEST(Sarif, WritesNoMoreThanItsReadersTakeAndTheWorstOfIt) {
  std::vector<TFinding> findings(25'003,
                                 {.Rule = u"w", .Severity = TFindingSeverity::Warning, .Message = u"m"});
  findings[0].Severity = TFindingSeverity::Note;
  findings.back() = {.Rule = u"last", .Severity = TFindingSeverity::Error, .Message = u"x"};
  findings.back().Steps.assign(1'001, {{u"a.c", 1}, u"step"});
  const std::string text = TextOf([&](const platform::PutBytes& put) {
    return WriteSarif(findings, {.Explain = [](std::u16string_view) { return std::u16string(2'000, u'y'); }},
                      put);
  });
  const auto count = [&text](std::string_view what) { return tests::CountOf(what, text); };
  EXPECT_EQ(count(R"("ruleIndex")"), 25'000U);
  EXPECT_EQ(count(R"("level":"error")"), 1U);
  EXPECT_EQ(count(R"("level":"note")"), 0U);
  EXPECT_EQ(count(R"("text":"step")"), 1'000U);
  EXPECT_EQ(count(std::string(1'001, 'y')), 0U);
  EXPECT_EQ(count('"' + std::string(1'000, 'y') + '"'), 6U) << "three texts of two rules";
}

TEST(UriOf, WritesPathsOfEachKind) {
  const std::tuple<std::u16string_view, std::u16string_view, std::string_view> rows[] = {
      {u"", u"/a b/\u00E9.c", "file:///a%20b/%C3%A9.c"},
      {u"/a", u"/a/b~-_.c", "b~-_.c"},
      {u"/a", u"/ab/c.c", "file:///ab/c.c"},
      {u"", u"C:\\a\\b%.c", "file:///C:/a/b%25.c"},
      {u"C:\\a", u"c:\\A\\b.c", "b.c"},
      {u"", u"\\\\box\\share\\a.c", "file://box/share/a.c"},
      {u"", u"a\\[1]@Z.c", "a/%5B1%5D%40Z.c"},
  };
  for (const auto& [root, file, uri] : rows)
    EXPECT_EQ(UriOf(root, file), uri);
}

} // namespace
} // namespace kx
