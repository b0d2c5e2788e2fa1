#include "program/editor/EditorServer.h"

#include "tests/editor/HttpClient.h"
#include "tests/editor/SessionFixture.h"

#include <gmock/gmock.h>

#include <thread>

namespace kx::editor {
namespace {

using testing::HasSubstr;
using tests::THttpClient;
using tests::THttpReply;
using tests::TStepAction;

// In place of the server's own port in a table, and of the session's folder and cookie.
std::string Filled(std::string text, const std::string& name, const std::string& value) {
  for (std::size_t at = text.find(name); at != std::string::npos; at = text.find(name, at + value.size()))
    text.replace(at, name.size(), value);
  return text;
}

// The server as any program of this machine reaches it.
class EditorServer : public TSessionFixture {
protected:
  EditorServer() {
    Open("    <Action Type=\"STEP\" Name=\"mine\"/>\n");
    server_ = std::make_unique<TEditorServer>(*session_);
    const std::string& address = server_->Address();
    const std::size_t path = address.find('/', std::string_view("http://").size());
    const std::size_t query = address.find('?');
    host_name_ =
        address.substr(std::string_view("http://").size(), path - std::string_view("http://").size());
    folder_ = address.substr(path, query - path);
    query_ = address.substr(query);
  }
  ~EditorServer() override {
    TStepAction::Deeds().clear();
    server_.reset();
  }

  int Port() const { return std::stoi(host_name_.substr(host_name_.find(':') + 1)); }
  // A request as it goes over the wire: HOST, FOLDER, COOKIE and QUERY stand for the real ones.
  THttpReply Send(std::string request) const { return THttpClient(Port()).Ask(Meant(std::move(request))); }
  std::string Meant(std::string text) const {
    for (const auto& [name, value] : std::initializer_list<std::pair<const char*, std::string>>{
             {"HOST", host_name_}, {"FOLDER", folder_}, {"COOKIE", cookie_}, {"QUERY", query_}})
      text = Filled(std::move(text), name, value);
    return text;
  }
  // Brings the token, as the browser does, and remembers the cookie.
  THttpReply LogIn() {
    auto reply = Send("GET FOLDERQUERY HTTP/1.1\r\nHost: HOST\r\n\r\n");
    const std::string cookie = reply.Header("Set-Cookie");
    cookie_ = cookie.substr(0, cookie.find(';'));
    return reply;
  }
  THttpReply Get(const std::string& name) const {
    return Send("GET FOLDER" + name + " HTTP/1.1\r\nHost: HOST\r\nCookie: COOKIE\r\n\r\n");
  }
  THttpReply Ask(const std::string& operation, const std::string& body = "{}") const {
    return Send("POST FOLDERapi/" + operation +
                " HTTP/1.1\r\nHost: HOST\r\nOrigin: http://HOST\r\nCookie: COOKIE\r\nContent-Length: " +
                std::to_string(body.size()) + "\r\n\r\n" + body);
  }

  std::unique_ptr<TEditorServer> server_;
  std::string host_name_; // 127.0.0.1:1234
  std::string folder_;    // "/random/"
  std::string query_;     // with the token
  std::string cookie_;
};

TEST_F(EditorServer, TheAddressIsGoodForOneBrowser) {
  EXPECT_THAT(server_->Address(), testing::StartsWith("http://127.0.0.1:"));
  const std::string guess = "GET FOLDER?token=" + std::string(40, 'a') + " HTTP/1.1\r\nHost: HOST\r\n\r\n";
  EXPECT_EQ(Send(guess).Status, 403) << "a guess uses up nothing";
  const THttpReply first = LogIn();
  EXPECT_EQ(first.Status, 200);
  EXPECT_THAT(first.Header("Set-Cookie"), HasSubstr("; Path=" + folder_ + "; HttpOnly; SameSite=Strict"));
  EXPECT_THAT(first.Body, testing::Not(HasSubstr(query_))) << "the page behind does not know it";
  EXPECT_EQ(Send("GET FOLDERQUERY HTTP/1.1\r\nHost: HOST\r\n\r\n").Status, 403);
  EXPECT_EQ(Get("").Status, 200);
  EXPECT_EQ(TJson::parse(Ask("state").Body)["tree"][0]["name"], "mine");
}

TEST_F(EditorServer, OnlyItsOwnPageIsAnswered) {
  LogIn();
  const std::string half = cookie_.substr(0, cookie_.size() - 1);
  const struct {
    const char* Who;
    std::string Head;
    int Status = 403;
  } rows[] = {
      {"the page", "Host: HOST\r\nOrigin: http://HOST\r\nCookie: COOKIE\r\n", 200},
      {"the page, with cookies of others",
       "host: HOST\r\nORIGIN: http://HOST\r\nCookie: a=b; COOKIE; c=d\r\n", 200},
      {"nobody", "Host: HOST\r\nOrigin: http://HOST\r\n"},
      {"with half of the cookie", "Host: HOST\r\nOrigin: http://HOST\r\nCookie: " + half + "\r\n"},
      {"with more than it", "Host: HOST\r\nOrigin: http://HOST\r\nCookie: COOKIEa\r\n"},
      {"with another's of the same value", "Host: HOST\r\nOrigin: http://HOST\r\nCookie: xCOOKIE\r\n"},
      {"with two lines of cookies",
       "Host: HOST\r\nOrigin: http://HOST\r\nCookie: COOKIE\r\nCookie: COOKIE\r\n"},
      {"a page of another origin", "Host: HOST\r\nOrigin: http://evil.example\r\nCookie: COOKIE\r\n"},
      {"a page of another port", "Host: HOST\r\nOrigin: http://127.0.0.1:1\r\nCookie: COOKIE\r\n"},
      {"a page that hides its origin", "Host: HOST\r\nOrigin: null\r\nCookie: COOKIE\r\n"},
      {"who says no origin", "Host: HOST\r\nCookie: COOKIE\r\n"},
      {"who says two", "Host: HOST\r\nOrigin: http://HOST\r\nOrigin: http://HOST\r\nCookie: COOKIE\r\n"},
      {"who asks for another host", "Host: evil.example\r\nOrigin: http://HOST\r\nCookie: COOKIE\r\n"},
      {"who asks for two hosts", "Host: HOST\r\nHost: HOST\r\nOrigin: http://HOST\r\nCookie: COOKIE\r\n"},
      {"who asks for none", "Origin: http://HOST\r\nCookie: COOKIE\r\n"},
      {"who asks for this host by another name",
       "Host: localhost:" + std::to_string(Port()) + "\r\nOrigin: http://HOST\r\nCookie: COOKIE\r\n"},
  };
  for (const auto& row : rows) {
    const auto reply = Send("POST FOLDERapi/state HTTP/1.1\r\n" + row.Head + "Content-Length: 2\r\n\r\n{}");
    EXPECT_EQ(reply.Status, row.Status) << row.Who;
    EXPECT_EQ(reply.Body.find("mine") != std::string::npos, row.Status == 200) << row.Who;
    EXPECT_THAT(reply.Header("Content-Security-Policy"), HasSubstr("default-src 'none'")) << row.Who;
    EXPECT_EQ(reply.Header("Referrer-Policy"), "no-referrer") << row.Who;
  }
}

TEST_F(EditorServer, NoFileLiesBehindAnAddress) {
  LogIn();
  EXPECT_EQ(Get("app.js").Header("Content-Type"), "text/javascript; charset=utf-8");
  EXPECT_EQ(Get("image/DEVENV").Header("Content-Type"), "image/svg+xml");
  for (const char* path : {"none.js", "image/NONE", "image/..%2fapp.js", "image/../app.js", "../etc/passwd",
                           "..%2f..%2fetc/passwd", "/etc/passwd", "api/state", "%61pp.js", "app.js/"})
    EXPECT_EQ(Get(path).Status, 404) << path;
}

// One connection, one request: what two readers could take for two requests is refused, and nothing behind a
// request is read as another one.
TEST_F(EditorServer, RequestsAreTakenInOneWayOnly) {
  LogIn();
  const std::string post =
      "POST FOLDERapi/state HTTP/1.1\r\nHost: HOST\r\nOrigin: http://HOST\r\nCookie: COOKIE\r\n";
  const std::string get = "GET FOLDER HTTP/1.1\r\nHost: HOST\r\nCookie: COOKIE\r\n";
  const std::string second = "GET FOLDERapp.js HTTP/1.1\r\nHost: HOST\r\nCookie: COOKIE\r\n\r\n";
  const struct {
    const char* What;
    std::string Request;
    int Status;
  } rows[] = {
      {"two lengths", post + "Content-Length: 2\r\nContent-Length: 4\r\n\r\n{}", 400},
      {"one length twice", post + "Content-Length: 2\r\nContent-Length: 2\r\n\r\n{}", 400},
      {"a list of lengths", post + "Content-Length: 2, 2\r\n\r\n{}", 400},
      {"a negative length", post + "Content-Length: -1\r\n\r\n{}", 400},
      {"a length with a sign", post + "Content-Length: +2\r\n\r\n{}", 400},
      {"a length beyond all numbers", post + "Content-Length: 99999999999999999999999\r\n\r\n{}", 400},
      {"a length and pieces", post + "Content-Length: 2\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n", 400},
      {"pieces and a length", post + "Transfer-Encoding: chunked\r\nContent-Length: 2\r\n\r\n0\r\n\r\n", 400},
      {"pieces", post + "Transfer-Encoding: chunked\r\n\r\n2\r\n{}\r\n0\r\n\r\n", 411},
      {"a folded line", get + "X: a\r\n b\r\n\r\n", 400},
      {"a blank before the colon", post + "Content-Length : 2\r\n\r\n{}", 400},
      {"a line without a colon", get + "X\r\n\r\n", 400},
      {"a zero byte", get + std::string("X: a\0b\r\n\r\n", 10), 400},
      {"another protocol", "GET FOLDER HTTP/2.0\r\nHost: HOST\r\n\r\n", 400},
      {"no protocol", "GET FOLDER\r\n\r\n", 400},
      {"no HTTP at all", "\x16\x03\x01\x02\r\n\r\n", 400},
      {"an absolute address", "GET http://HOSTFOLDER HTTP/1.1\r\nHost: HOST\r\nCookie: COOKIE\r\n\r\n", 403},
      {"another method",
       "PUT FOLDERapi/state HTTP/1.1\r\nHost: HOST\r\nOrigin: http://HOST\r\nCookie: COOKIE\r\n\r\n", 405},
      {"only the head", "HEAD FOLDER HTTP/1.1\r\nHost: HOST\r\nOrigin: http://HOST\r\nCookie: COOKIE\r\n\r\n",
       405},
      {"what could be done",
       "OPTIONS FOLDERapi/state HTTP/1.1\r\nHost: HOST\r\nOrigin: http://HOST\r\nCookie: COOKIE\r\n\r\n",
       405},
      {"what a page of another origin asks first",
       "OPTIONS FOLDERapi/state HTTP/1.1\r\nHost: HOST\r\nOrigin: http://evil.example\r\n\r\n", 403},
      {"a tunnel", "CONNECT 127.0.0.1:80 HTTP/1.1\r\nHost: HOST\r\n\r\n", 403},
      {"a large head", get + "X: " + std::string(17000, 'a') + "\r\n\r\n", 431},
      {"a large head without an end", get + "X: " + std::string(17000, 'a'), 431},
      {"many lines",
       get +
           [] {
             std::string lines;
             for (int i = 0; i < 200; ++i)
               lines += "X: a\r\n";
             return lines;
           }() +
           "\r\n",
       431},
      {"a large body, before it is sent", post + "Content-Length: 8388609\r\n\r\n", 413},
      {"another request behind it", post + "Content-Length: 2\r\n\r\n{}" + second, 200},
      {"another request where no body is expected", get + "\r\n" + second, 200},
  };
  for (const auto& row : rows) {
    const auto reply = Send(row.Request);
    EXPECT_EQ(reply.Status, row.Status) << row.What;
    EXPECT_EQ(reply.Answers, 1) << row.What;
    EXPECT_EQ(reply.Header("Connection"), "close") << row.What;
  }
}

TEST_F(EditorServer, WhatCannotBeDoneIsSaidAndTheServerGoesOn) {
  LogIn();
  const struct {
    const char* Operation;
    std::string Body;
    int Status;
  } rows[] = {{"state", "no JSON", 400},
              {"state", "[]", 422},
              {"state", std::string(100000, '['), 400},
              {"nothing", "{}", 422},
              {"", "{}", 422},
              {"action", R"({"id":7})", 422},
              {"set", R"({"id":"0","page":0,"field":"None","value":""})", 422}};
  for (const auto& row : rows) {
    const auto answer = Ask(row.Operation, row.Body);
    EXPECT_EQ(answer.Status, row.Status) << row.Operation << row.Body.substr(0, 50);
    EXPECT_TRUE(TJson::parse(answer.Body)["error"].is_string());
  }
  EXPECT_EQ(Ask("state", std::string((std::size_t{8} << 20) + 1, ' ')).Status, 413);
  EXPECT_EQ(Ask("state", "{}" + std::string((std::size_t{8} << 20) - 2, ' ')).Status, 200)
      << "as large as can be";
}

TEST_F(EditorServer, WhoWaitsForEventsHoldsNobodyUp) {
  LogIn();
  ASSERT_EQ(Ask("set", R"({"id":"0","page":0,"field":"Text","value":"wait"})").Status, 200);
  TKxEvent goOn;
  TStepAction::Deeds()[u"wait"] = [&](TStepAction&) { return goOn.WaitFor(std::chrono::seconds(60)); };
  ASSERT_EQ(Ask("run").Status, 200);
  TJson events;
  const auto ask = [&](std::size_t from) {
    events = TJson::parse(Get("api/events?run=1&from=" + std::to_string(from)).Body);
  };
  ask(0);
  EXPECT_EQ(events["running"], true);
  std::thread waiting([&] { ask(events["next"].get<std::size_t>()); });
  EXPECT_EQ(TJson::parse(Ask("ping").Body)["running"], true);
  EXPECT_EQ(Ask("remove", R"({"id":"0"})").Status, 422) << "nothing is edited meanwhile";
  goOn.Raise();
  waiting.join();
  while (events["running"] == true)
    ask(events["next"].get<std::size_t>());
  EXPECT_LT(server_->Idle(), std::chrono::minutes(1));
}

} // namespace
} // namespace kx::editor
