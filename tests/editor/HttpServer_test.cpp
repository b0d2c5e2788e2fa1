#include "program/editor/HttpServer.h"

#include "tests/editor/HttpClient.h"
#include "tests/support/FailingMemory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace kx::editor {
namespace {

using std::chrono::milliseconds;
using tests::THttpClient;

constexpr auto Long = std::chrono::seconds(60);
constexpr auto Short = milliseconds(200);

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
  void Start(const THttpLimits& limits = Patient()) {
    server_ = std::make_unique<THttpServer>(service_, limits);
    server_->Start();
  }
  THttpClient Client(std::string_view says = "") const {
    THttpClient client(server_->Port());
    client.Send(says);
    return client;
  }

  TService service_;
  std::unique_ptr<THttpServer> server_;
  TKxEvent began_, goOn_;
};

TEST_F(HttpServer, WhoIsSlowIsNotWaitedFor) {
  const std::string whole = Request(std::string(64, 'b'));
  const struct {
    const char* Who;
    milliseconds THttpLimits::*Limit; // the one that is short
    std::string Sent;
    bool Drips; // goes on byte by byte
    int Status;
  } rows[] = {
      {"says nothing", &THttpLimits::HeadTime, "", false, 0},
      {"says a head, drop by drop", &THttpLimits::HeadTime, "POST / HTTP/1.1\r\nX: ", true, 0},
      {"says a body, drop by drop", &THttpLimits::BodyTime, whole.substr(0, whole.size() - 60), true, 0},
      {"goes on after it was refused", &THttpLimits::FarewellTime,
       "POST / HTTP/1.1\r\nContent-Length: 100\r\n\r\n", true, 403},
      {"never says that it has got its answer", &THttpLimits::FarewellTime, whole, false, 200},
  };
  for (const auto& row : rows) {
    THttpLimits limits = Patient();
    limits.*row.Limit = Short;
    Start(limits);
    THttpClient client = Client(row.Sent);
    for (int drops = row.Drips ? 10 : 0; drops > 0 && client.Send("b"); --drops)
      std::this_thread::sleep_for(Short / 4);
    EXPECT_EQ(client.Receive().Status, row.Status) << row.Who;
    server_.reset(); // which would wait for the end of a connection that goes on
  }
}

TEST_F(HttpServer, WhoDoesNotTakeItsAnswerIsNotWaitedFor) {
  THttpLimits limits = Patient();
  limits.AnswerTime = Short;
  Start(limits);
  const std::string large(std::size_t{64} << 20, 'a'); // more than a connection holds
  service_.Do = [&](const THttpRequest&, TKxEvent&) { return THttpAnswer{.Body = large}; };
  THttpClient client = Client(Request());
  std::this_thread::sleep_for(5 * Short);
  EXPECT_LT(client.Receive().Body.size(), large.size());
}

TEST_F(HttpServer, HoweverManyStrangersComeTheOwnerIsAnswered) {
  THttpLimits limits = Patient();
  limits.Strangers = 8;
  Start(limits);
  std::vector<THttpClient> strangers;
  for (int i = 0; i < 40; ++i) {
    strangers.push_back(Client(i % 2 == 0 ? "" : "POST / HTTP/1.1\r\nX: "));
    EXPECT_EQ(Client().Ask(Request("mine")).Body, "mine");
  }
  EXPECT_EQ(strangers.front().Receive().Status, 0) << "the first ones gave way";
  EXPECT_EQ(strangers.back().Ask("a\r\n\r\n").Status, 403) << "the last one is still there";
}

TEST_F(HttpServer, OnlySoMuchIsAskedAtOnce) {
  THttpLimits limits = Patient();
  limits.Guests = 2;
  Start(limits);
  std::atomic<int> underWay = 0;
  service_.Do = [&](const THttpRequest&, TKxEvent&) {
    ++underWay;
    goOn_.WaitFor(Long);
    return THttpAnswer{};
  };
  THttpClient first = Client(Request());
  THttpClient second = Client(Request());
  while (underWay < 2)
    std::this_thread::sleep_for(milliseconds(10));
  EXPECT_EQ(Client().Ask(Request()).Status, 503);
  // Whoever goes away leaves its work behind until that has ended.
  first.Close();
  EXPECT_EQ(Client().Ask(Request()).Status, 503);
  goOn_.Raise();
  EXPECT_EQ(second.Receive().Status, 200);
  EXPECT_TRUE(server_->Close(Long)); // nobody waits for what ends with this test
}

TEST_F(HttpServer, NobodyWaitsForWhatThereIsNoMemoryFor) {
  const std::string large(std::size_t{8} << 20, 'a'); // more than a connection holds
  service_.Do = [&](const THttpRequest& request, TKxEvent&) {
    return THttpAnswer{.Body = request.Body.size() > 1 ? large : request.Body};
  };
  Start();
  bool hasFailed = true;
  for (long allocation = 1; hasFailed; ++allocation) {
    {
      const tests::TFailingMemory failing(allocation, tests::TFailingMemory::TOf::OtherThreads);
      const auto reply = Client().Ask(Request(large.substr(0, 100'000)));
      hasFailed = failing.HasFailed();
      EXPECT_TRUE(hasFailed || reply.Body.size() == large.size()) << allocation;
    }
    EXPECT_EQ(Client().Ask(Request("b")).Body, "b") << "after " << allocation;
    ASSERT_LT(allocation, 1000);
  }
}

TEST_F(HttpServer, WorkLearnsThatNobodyWaitsForIt) {
  for (const bool atTheEnd : {false, true}) {
    Start();
    TKxEvent ended;
    service_.Do = [&](const THttpRequest&, TKxEvent& gone) {
      began_.Raise();
      if (gone.WaitFor(Long)) ended.Raise();
      return THttpAnswer{};
    };
    began_.Clear();
    THttpClient client = Client(Request());
    ASSERT_TRUE(began_.WaitFor(Long));
    if (atTheEnd) {
      EXPECT_TRUE(server_->Close(Long));
    } else {
      client.Close();
    }
    EXPECT_TRUE(ended.WaitFor(Long)) << atTheEnd;
    server_.reset();
  }
}

TEST_F(HttpServer, WorkThatDoesNotEndIsNotWaitedForBeyondTheLimit) {
  Start();
  service_.Do = [&](const THttpRequest&, TKxEvent&) -> THttpAnswer {
    began_.Raise();
    goOn_.WaitFor(Long);
    throw std::runtime_error("too late");
  };
  THttpClient client = Client(Request());
  ASSERT_TRUE(began_.WaitFor(Long));
  EXPECT_FALSE(server_->Close(milliseconds(50)));
  goOn_.Raise();
  EXPECT_TRUE(server_->Close(Long));
}

TEST_F(HttpServer, ARefusalReachesWhoIsStillSending) {
  Start();
  THttpClient client = Client("POST / HTTP/1.1\r\nContent-Length: 4000000\r\n\r\n");
  EXPECT_TRUE(client.Send(std::string(4000000, 'b')));
  // The server waits for the end of this side, which Receive does not give: what it got stands before that.
  client.ShutDown();
  EXPECT_EQ(client.Receive().Status, 403);
}

} // namespace
} // namespace kx::editor
