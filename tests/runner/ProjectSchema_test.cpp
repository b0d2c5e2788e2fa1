#include "program/runner/ProjectSchema.h"

#include "tests/runner/TestActions.h"

#include <gtest/gtest.h>
#include <libxml/xmlschemas.h>

#include <memory>
#include <tuple>

namespace kx::tests {
namespace {

template <auto Free>
struct TFreeBy {
  void operator()(auto* object) const { Free(object); }
};

void SayNothing(void*, const char*, ...) {}

TEST(ProjectSchema, TakesWhatTheReaderTakesAndNothingMisspelt) {
  TEmbeddedHost host;
  const std::string text = ProjectSchema(host.Project());
  const std::unique_ptr<xmlSchemaParserCtxt, TFreeBy<xmlSchemaFreeParserCtxt>> parser(
      xmlSchemaNewMemParserCtxt(text.data(), static_cast<int>(text.size())));
  const std::unique_ptr<xmlSchema, TFreeBy<xmlSchemaFree>> schema(xmlSchemaParse(parser.get()));
  ASSERT_TRUE(schema) << text;
  for (const auto& [action, isValid] : std::initializer_list<std::tuple<std::string, bool>>{
           {"<Text> a </Text><Number>12</Number><Flag>yes</Flag><Colour Name=\"Blue\">2</Colour>", true},
           {"<Colour>Red</Colour><Lines>a\nb</Lines>", true},
           {"<Lines><Line>a</Line></Lines><Colour Name=\"Red\"/>", true},
           {"<Txt/>", false},
           {"<Number>many</Number>", false},
           {"<Flag>perhaps</Flag>", false},
           {"<Colour>Pink</Colour>", false},
           {"<Text/><Text/>", false},
           {"<Actions><Action Type=\"STEP\" Condition=\"1\" Retries=\"2\" TimeLimit=\"2h\" "
            "IdleLimit=\"90\"/></Actions>",
            true},
           {"<Actions><Action Type=\"STEP\" IdleLimit=\"90d\"/></Actions>", false},
           {"<Actions><Action Type=\"STEP\" Retries=\"-1\"/></Actions>", false},
           {"<Actions><Action Type=\"STEP\" Needs=\"A\"/></Actions>", false},
           {"<Actions><Group Name=\"G\"/></Actions>", false}}) {
    const std::string xml =
        "<BuildProject Name=\"n\"><Gates FailOn=\"error\"/><Rules><Rule Name=\"no-tests\">off</Rule></Rules>"
        "<Actions><Group Name=\"G\" Needs=\"A\"><Action Type=\"STEP\" Needs=\"\" Parallel=\"true\"/></Group>"
        "<Action Type=\"LOOP\"><LoopVariable>P</LoopVariable><Actions>"
        "<Action Type=\"STEP\" ContinueOnError=\"ignore\">" +
        action + "</Action></Actions></Action></Actions></BuildProject>";
    const std::unique_ptr<xmlDoc, TFreeBy<xmlFreeDoc>> document(
        xmlReadMemory(xml.data(), static_cast<int>(xml.size()), nullptr, nullptr, 0));
    const std::unique_ptr<xmlSchemaValidCtxt, TFreeBy<xmlSchemaFreeValidCtxt>> validator(
        xmlSchemaNewValidCtxt(schema.get()));
    xmlSchemaSetValidErrors(validator.get(), SayNothing, SayNothing, nullptr);
    EXPECT_EQ(xmlSchemaValidateDoc(validator.get(), document.get()) == 0, isValid) << action;
  }
}

} // namespace
} // namespace kx::tests
