#include "program/editor/HttpServer.h"

#include "tests/editor/HttpClient.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

namespace kx::editor {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using tests::THttpClient;
using tests::THttpReply;

constexpr auto Long = seconds(60);

// Lets in who knows the word; what is asked is done by what the test gave it.
class TService : public IHttpService {
public:
  std::function<THttpAnswer(const THttpRequest&, TKxEvent&)> Do = [](const THttpRequest& request, TKxEvent&) {
    return THttpAnswer{.Body = request.Body};
  };

  std::optional<THttpAnswer> AtTheDoor(const THttpRequest& head) override {
    if (head.Only("Word") == "yes") return std::nullopt;
    return Refusal(403, "no");
  }
  THttpAnswer Answer(const THttpRequest& request, TKxEvent& gone) override { return Do(request, gone); }
};

std::string Request(std::string_view body = "") {
  return "POST / HTTP/1.1\r\nWord: yes\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
         std::string(body);
}

// The limits of time that a row does not name are so long that they never end anything.
THttpLimits Patient() {
  return {.HeadTime = Long, .BodyTime = Long, .AnswerTime = Long, .FarewellTime = Long};
}

class HttpServer : public testing::Test {
protected:
  void Start(const THttpLimits& limits) {
    server_ = std::make_unique<THttpServer>(service_, limits);
    server_->Start();
  }
  THttpClient Client() const { return THttpClient(server_->Port()); }

  TService service_;
  std::unique_ptr<THttpServer> server_;
};

TEST_F(HttpServer, WhoIsSlowIsNotWaitedFor) {
  const std::string body(64, 'b');
  THttpLimits shortHead = Patient();
  shortHead.HeadTime = milliseconds(200);
  THttpLimits shortBody = Patient();
  shortBody.BodyTime = milliseconds(200);
  THttpLimits shortFarewell = Patient();
  shortFarewell.FarewellTime = milliseconds(200);
  const struct {
    const char* Who;
    THttpLimits Limits;
    std::string Sent;
    std::string_view Drops; // sent one by one from then on
    int Status;
  } rows[] = {
      {"says nothing", shortHead, "", "", 0},
      {"says a head, drop by drop", shortHead, "POST / HTTP/1.1\r\nX: ", "aaaaaaaaaa", 0},
      {"says a body, drop by drop", shortBody, Request(body).substr(0, Request(body).size() - 60),
       "bbbbbbbbbb", 0},
      {"goes on after it was refused", shortFarewell, "POST / HTTP/1.1\r\nContent-Length: 100\r\n\r\n",
       "bbbbbbbbbb", 403},
      {"never says that it has got its answer", shortFarewell, Request(body), "", 200},
  };
  for (const auto& row : rows) {
    Start(row.Limits);
    THttpClient client = Client();
    client.Send(row.Sent);
    for (const char drop : row.Drops) {
      std::this_thread::sleep_for(milliseconds(50));
      if (!client.Send(std::string_view(&drop, 1))) break;
    }
    EXPECT_EQ(client.Receive().Status, row.Status) << row.Who;
    server_.reset(); // which would wait for the end of a connection that goes on
  }
}

TEST_F(HttpServer, WhoDoesNotTakeItsAnswerIsNotWaitedFor) {
  THttpLimits limits = Patient();
  limits.AnswerTime = milliseconds(200);
  Start(limits);
  const std::string large(std::size_t{64} << 20, 'a'); // more than a connection holds
  service_.Do = [&](const THttpRequest&, TKxEvent&) { return THttpAnswer{.Body = large}; };
  THttpClient client = Client();
  client.Send(Request());
  std::this_thread::sleep_for(milliseconds(1000));
  EXPECT_LT(client.Receive().Body.size(), large.size());
}

TEST_F(HttpServer, HoweverManyStrangersComeTheOwnerIsAnswered) {
  THttpLimits limits = Patient();
  limits.Strangers = 8;
  Start(limits);
  std::vector<std::unique_ptr<THttpClient>> strangers;
  for (int i = 0; i < 40; ++i) {
    strangers.push_back(std::make_unique<THttpClient>(server_->Port()));
    strangers.back()->Send(i % 2 == 0 ? "" : "POST / HTTP/1.1\r\nX: ");
    EXPECT_EQ(Client().Ask(Request("mine")).Body, "mine");
  }
  EXPECT_EQ(strangers.front()->Receive().Status, 0) << "the first ones gave way";
  strangers.back()->Send("a\r\n\r\n");
  EXPECT_EQ(strangers.back()->Receive().Status, 403) << "the last one is still there";
}

TEST_F(HttpServer, OnlySoMuchIsAskedAtOnce) {
  THttpLimits limits = Patient();
  limits.Guests = 2;
  Start(limits);
  TKxEvent goOn;
  std::atomic<int> underWay = 0;
  service_.Do = [&](const THttpRequest&, TKxEvent&) {
    ++underWay;
    goOn.WaitFor(Long);
    return THttpAnswer{};
  };
  THttpClient first = Client();
  THttpClient second = Client();
  first.Send(Request());
  second.Send(Request());
  while (underWay < 2)
    std::this_thread::sleep_for(milliseconds(10));
  EXPECT_EQ(Client().Ask(Request()).Status, 503);
  // Whoever goes away leaves its work behind until that has ended.
  first.Close();
  EXPECT_EQ(Client().Ask(Request()).Status, 503);
  goOn.Raise();
  EXPECT_EQ(second.Receive().Status, 200);
  EXPECT_TRUE(server_->Close(Long)); // nobody waits for what ends with this test
}

TEST_F(HttpServer, WorkLearnsThatNobodyWaitsForIt) {
  Start(Patient());
  TKxEvent began;
  TKxEvent ended;
  service_.Do = [&](const THttpRequest&, TKxEvent& gone) {
    began.Raise();
    if (gone.WaitFor(Long)) ended.Raise();
    return THttpAnswer{};
  };
  {
    THttpClient client = Client();
    client.Send(Request());
    ASSERT_TRUE(began.WaitFor(Long));
  } // goes away
  EXPECT_TRUE(ended.WaitFor(Long));
  began.Clear();
  ended.Clear();
  THttpClient client = Client();
  client.Send(Request());
  ASSERT_TRUE(began.WaitFor(Long));
  EXPECT_TRUE(server_->Close(Long));
  EXPECT_TRUE(ended.IsRaised());
}

TEST_F(HttpServer, WorkThatDoesNotEndIsNotWaitedForBeyondTheLimit) {
  Start(Patient());
  TKxEvent began;
  TKxEvent goOn;
  service_.Do = [&](const THttpRequest&, TKxEvent&) -> THttpAnswer {
    began.Raise();
    goOn.WaitFor(Long);
    throw std::runtime_error("too late");
  };
  THttpClient client = Client();
  client.Send(Request());
  ASSERT_TRUE(began.WaitFor(Long));
  EXPECT_FALSE(server_->Close(milliseconds(50)));
  goOn.Raise();
  EXPECT_TRUE(server_->Close(Long));
}

TEST_F(HttpServer, ARefusalReachesWhoIsStillSending) {
  Start(Patient());
  THttpClient client = Client();
  client.Send("POST / HTTP/1.1\r\nContent-Length: 4000000\r\n\r\n");
  EXPECT_TRUE(client.Send(std::string(4000000, 'b')));
  // The server waits for the end of this side, which Receive does not give: what it got stands before that.
  client.ShutDown();
  EXPECT_EQ(client.Receive().Status, 403);
}

} // namespace
} // namespace kx::editor
