#include "editor/EditorServer.h"

#include "tests/editor/SessionFixture.h"

#include <gmock/gmock.h>
#include <httplib.h>

#include <thread>

namespace kx::editor {
namespace {

using httplib::Headers;
using testing::HasSubstr;
using tests::TStepAction;

// The server as any program of this machine reaches it.
class EditorServer : public TSessionFixture {
protected:
  EditorServer() {
    Open("    <Action Type=\"STEP\" Name=\"mine\"/>\n");
    server_ = std::make_unique<TEditorServer>(*session_);
    const std::string& address = server_->Address();
    const std::size_t path = address.find('/', std::string_view("http://").size());
    const std::size_t query = address.find('?');
    origin_ = address.substr(0, path);
    folder_ = address.substr(path, query - path);
    query_ = address.substr(query);
  }
  ~EditorServer() override {
    TStepAction::Deeds().clear();
    server_.reset();
  }

  httplib::Client Client() const {
    httplib::Client client(origin_);
    client.set_read_timeout(std::chrono::seconds(60));
    return client;
  }
  // Brings the token, as the browser does; what it has to send along from then on.
  Headers LogIn() {
    const auto answer = Client().Get(folder_ + query_);
    EXPECT_EQ(answer->status, 200);
    const std::string cookie = answer->get_header_value("Set-Cookie");
    EXPECT_THAT(cookie, HasSubstr("; Path=" + folder_ + "; HttpOnly; SameSite=Strict"));
    return {{"Cookie", cookie.substr(0, cookie.find(';'))}, {"Origin", origin_}};
  }
  httplib::Result Ask(const std::string& operation, const Headers& headers, const std::string& body = "{}") {
    return Client().Post(folder_ + "api/" + operation, headers, body, "application/json");
  }
  static Headers With(Headers headers, const std::string& name, const std::string& value) {
    headers.erase(name);
    if (!value.empty()) headers.emplace(name, value);
    return headers;
  }

  std::unique_ptr<TEditorServer> server_;
  std::string origin_; // http://127.0.0.1:1234
  std::string folder_; // "/random/"
  std::string query_;  // with the token
};

TEST_F(EditorServer, TheAddressIsGoodForOneBrowser) {
  EXPECT_THAT(server_->Address(), testing::StartsWith("http://127.0.0.1:"));
  EXPECT_EQ(Client().Get(folder_ + "?token=" + std::string(40, 'a'))->status, 403)
      << "a guess uses up nothing";
  const Headers own = LogIn();
  EXPECT_EQ(Client().Get(folder_ + query_)->status, 403);
  EXPECT_EQ(Client().Get(folder_, own)->status, 200);
  EXPECT_EQ(TJson::parse(Ask("state", own)->body)["tree"][0]["name"], "mine");
}

TEST_F(EditorServer, OnlyItsOwnPageIsAnswered) {
  const Headers own = LogIn();
  const std::string cookie = own.find("Cookie")->second;
  const std::string port = origin_.substr(origin_.rfind(':'));
  const struct {
    const char* Who;
    Headers Sent;
  } rows[] = {
      {"nobody", {}},
      {"without the cookie", With(own, "Cookie", "")},
      {"with half of it", With(own, "Cookie", cookie.substr(0, cookie.size() - 1))},
      {"with more than it", With(own, "Cookie", cookie + "a")},
      {"with another's of the same value", With(own, "Cookie", "x" + cookie)},
      {"a page of another origin", With(own, "Origin", "http://evil.example")},
      {"a page of another port", With(own, "Origin", "http://127.0.0.1:1")},
      {"a page that hides its origin", With(own, "Origin", "null")},
      {"who says no origin", With(own, "Origin", "")},
      {"who asks for another host", With(own, "Host", "evil.example")},
      {"who asks for this host by another name", With(own, "Host", "localhost" + port)},
  };
  for (const auto& row : rows) {
    const auto answer = Ask("state", row.Sent);
    ASSERT_TRUE(answer) << row.Who;
    EXPECT_EQ(answer->status, 403) << row.Who;
    EXPECT_THAT(answer->body, testing::Not(HasSubstr("mine"))) << row.Who;
    EXPECT_THAT(answer->get_header_value("Content-Security-Policy"), HasSubstr("default-src 'none'"))
        << row.Who;
  }
  EXPECT_EQ(Ask("state", With(own, "Cookie", "a=b; " + cookie + "; c=d"))->status, 200) << "among others";
  EXPECT_EQ(Client().Put(folder_ + "api/state", own, "{}", "application/json")->status, 405);
}

TEST_F(EditorServer, NoFileLiesBehindAnAddress) {
  const Headers own = LogIn();
  EXPECT_EQ(Client().Get(folder_ + "app.js", own)->get_header_value("Content-Type"),
            "text/javascript; charset=utf-8");
  EXPECT_EQ(Client().Get(folder_ + "image/DEVENV", own)->get_header_value("Content-Type"), "image/svg+xml");
  for (const std::string path : {"none.js", "image/NONE", "image/..%2fapp.js", "../etc/passwd", "api/state"})
    EXPECT_GE(Client().Get(folder_ + path, own)->status, 403) << path;
}

TEST_F(EditorServer, WhatCannotBeDoneIsSaidAndTheServerGoesOn) {
  const Headers own = LogIn();
  const struct {
    const char* Operation;
    std::string Body;
    int Status;
  } rows[] = {{"state", "no JSON", 400},
              {"state", "[]", 422},
              {"state", std::string(100000, '['), 400},
              {"nothing", "{}", 422},
              {"action", R"({"id":7})", 422},
              {"set", R"({"id":"0","page":0,"field":"None","value":""})", 422}};
  for (const auto& row : rows) {
    const auto answer = Ask(row.Operation, own, row.Body);
    EXPECT_EQ(answer->status, row.Status) << row.Operation << row.Body.substr(0, 50);
    EXPECT_TRUE(TJson::parse(answer->body)["error"].is_string());
  }
  const auto large = Ask("state", own, std::string((std::size_t{8} << 20) + 1, ' '));
  EXPECT_TRUE(!large || large->status == 413);
  EXPECT_EQ(Ask("state", own)->status, 200);
}

TEST_F(EditorServer, WhoWaitsForEventsHoldsNobodyUp) {
  const Headers own = LogIn();
  ASSERT_EQ(Ask("set", own, R"({"id":"0","page":0,"field":"Text","value":"wait"})")->status, 200);
  TKxEvent goOn;
  TStepAction::Deeds()[u"wait"] = [&](TStepAction&) { return goOn.WaitFor(std::chrono::seconds(60)); };
  ASSERT_EQ(Ask("run", own)->status, 200);
  TJson events;
  const auto ask = [&](std::size_t from) {
    const auto answer =
        Client().Get(folder_ + "api/events?run=1&from=" + std::to_string(from), With(own, "Origin", ""));
    events = TJson::parse(answer->body);
  };
  ask(0);
  EXPECT_EQ(events["running"], true);
  std::thread waiting([&] { ask(events["next"].get<std::size_t>()); });
  EXPECT_EQ(TJson::parse(Ask("ping", own)->body)["running"], true);
  EXPECT_EQ(Ask("remove", own, R"({"id":"0"})")->status, 422) << "nothing is edited meanwhile";
  goOn.Raise();
  waiting.join();
  while (events["running"] == true)
    ask(events["next"].get<std::size_t>());
  EXPECT_LT(server_->Idle(), std::chrono::minutes(1));
}

} // namespace
} // namespace kx::editor
