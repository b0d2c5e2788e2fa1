#include "program/parts/PartTalk.h"

#include "foundation/text/Encoding.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

TEST(PartTalk, TasksAreOneLineWhateverPartsAreCalled) {
  for (const std::u16string_view id : {u"Build (2)", u"Alle/Übung 日本 𝄞", u"a\tb\nc\r\x1e\"\\", u""}) {
    const std::string line = TaskLine({std::u16string(id), u"/tmp/x y/1.jsonl"});
    EXPECT_EQ(line.find('\n'), line.size() - 1) << line;
    const auto read = ReadTask(std::string_view(line).substr(0, line.size() - 1));
    ASSERT_TRUE(read) << line;
    EXPECT_EQ(read->Id, id);
    EXPECT_EQ(read->Log, u"/tmp/x y/1.jsonl");
  }
  for (const char* line :
       {"", "Build", "{\"part\":\"Build\"}", "\x1e{\"part\":", "\x1e[\"part\"]", "\x1e{\"exitCode\":0}"})
    EXPECT_FALSE(ReadTask(line)) << line;
}

TEST(PartTalk, AnAnswerIsToldFromWhatIsWrittenInFrontOfIt) {
  for (const int code : {0, 1, 130, -1073741819}) {
    const auto answer = ReadAnswer(u"no line end" + text::FromUtf8(AnswerLine(code)));
    ASSERT_TRUE(answer) << code;
    EXPECT_EQ(answer->ExitCode, code);
    EXPECT_EQ(answer->Before, u"no line end");
  }
  for (const std::u16string_view line :
       {u"{\"exitCode\":0}", u"\x1e", u"\x1e{\"exitCode\":0", u"\x1e 7", u"\x1e{\"part\":\"a\"}"})
    EXPECT_FALSE(ReadAnswer(line)) << text::ToUtf8(line);
}

} // namespace
} // namespace kx
