#include "tests/platform/ProcessTest.h"

#include <algorithm>

namespace kx::platform {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

TEST_F(Process, GivesItsOutputAsWholeDecodedLines) {
  EXPECT_EQ(ExitCode(Tool({u"out:a\\r\\n\\nb\\rc\\n\\xC3\\xA9\\n\\x82t\\x82", u"err:e\\n"})), 0);
  EXPECT_THAT(out_, ElementsAre(u"a", u"", u"b\rc", u"é", u"été"));
  EXPECT_THAT(err_, ElementsAre(u"e"));
}

TEST_F(Process, FloodsOnBothStreamsArriveWhole) {
  EXPECT_EQ(ExitCode(Tool({u"flood:1000"})), 0);
  ASSERT_TRUE(out_.size() == 1000 && err_.size() == 1000) << out_.size() << " " << err_.size();
  EXPECT_EQ(err_.back().size(), 300U);
  EXPECT_EQ(RunProcess(Tool({u"flood:1000", u"exit:4"}), {}, {})->ExitCode, 4) << "nobody listens";
}

TEST_F(Process, ReadsWhatItIsToldWhileItRuns) {
  ProcessRequest request = Tool({u"out:ready\\n", u"input", u"exit:3"});
  const auto input = *ProcessInput::Open();
  request.Input = input;
  const auto outcome = Run(request, [&](std::u16string_view line) {
    if (line == u"two é") return input->Close();
    EXPECT_TRUE(input->Write(line == u"ready" ? "one\n" : "two é\n"));
  });
  EXPECT_EQ(outcome->ExitCode, 3);
  EXPECT_THAT(out_, ElementsAre(u"ready", u"one", u"two é"));

  ProcessRequest gone = Tool({u"out:ready\\n"});
  const auto unread = *ProcessInput::Open();
  gone.Input = unread;
  EXPECT_EQ(ExitCode(gone), 0);
  const auto isRead = [&unread] { return static_cast<bool>(unread->Write("nobody reads this\n")); };
  for (int looks = 0; looks < 500 && isRead(); ++looks) // a system may take a moment to close its end
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_FALSE(isRead());
}

TEST_F(Process, GetsArgumentsFolderAndEnvironmentAsAsked) {
  fs::create_directories(Native("Work Folder"));
  ProcessRequest request = Tool({u"folder", u"env:KX_ADDED", u"env:Path", u"input", u"args"});
  request.Arguments += u"/x:\"a b\" \"\" C:\\dir\\ \\\"q\\\" $HOME %PATH%";
  request.WorkingDirectory = Path("Work Folder");
  request.Environment = {{u"KX_ADDED", u"é=1"}, {u"Path", u"replaced"}};
  const auto outcome = Run(request);
  ASSERT_TRUE(outcome) << testing::PrintToString(outcome.Message());
  EXPECT_THAT(out_, ElementsAre(Path("Work Folder"), u"é=1", u"replaced", u"[/x:a b]", u"[]", u"[C:\\dir\\]",
                                u"[\"q\"]", u"[$HOME]", u"[%PATH%]"));
  EXPECT_EQ(ExitCode(Tool({u"exit:255"})), 255);
}

TEST_F(Process, SaysThatItOrItsFolderIsMissing) {
  const std::u16string message = Run({Path("missing.exe"), u"", u"", {}}).Message();
  EXPECT_TRUE(message.starts_with(u"Cannot run " + Path("missing.exe") + u". "));
  ProcessRequest request = Tool({});
  request.WorkingDirectory = Path("nowhere");
  EXPECT_EQ(Run(request).Message(),
            u"Cannot run " + request.Executable + u". Its folder does not exist: " + Path("nowhere"));
}

TEST_F(Process, LeavesNothingOfItsTreeAfterAStop) {
  ExpectNothingIsLeft("a deaf child", Tool({u"deaf", u"pid", u"wait"}));
  ExpectNothingIsLeft("a deaf grandchild", Tool({u"child:deaf,pid,wait", u"wait"}));
  EXPECT_TRUE(Run(Tool({u"out:started"}))->Stopped);
  EXPECT_THAT(out_, ElementsAre()) << "nothing starts after a stop";
}

TEST_F(Process, DoesNotWaitForAServerThatItLeftBehind) {
  for (const std::u16string server : {u"server:wait", u"server:flood:100000000"}) {
    EXPECT_EQ(ExitCode(Tool({server, u"wait:100", u"exit:6"})), 6);
    const auto number = std::ranges::find_if(err_, [](const auto& line) { return line[0] != u'e'; });
    ASSERT_TRUE(number != err_.end());
    EXPECT_TRUE(tests::IsRunning(*number) || server != u"server:wait") << "it is the tool's own business";
    tests::EndProcess(*number);
  }
}

TEST_F(Process, EndsWhenAReceiverThrows) {
  const auto fail = [](std::u16string_view) { throw std::runtime_error("enough"); };
  EXPECT_THROW((void)Run(Tool({u"deaf", u"pid", u"wait"}), fail), std::runtime_error);
  ASSERT_EQ(out_.size(), 1U);
  EXPECT_FALSE(tests::IsRunning(out_[0]));
}

} // namespace
} // namespace kx::platform
