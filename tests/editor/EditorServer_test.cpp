#include "program/editor/EditorServer.h"

#include "tests/editor/HttpClient.h"
#include "tests/editor/SessionFixture.h"

#include <thread>

namespace kx::editor {
namespace {

using testing::HasSubstr;
using tests::THttpClient;
using tests::THttpReply;
using tests::TStepAction;

const std::string Host = "Host: HOST\r\n", Origin = "Origin: http://HOST\r\n", Cookie = "Cookie: COOKIE\r\n";
const std::string Own = Host + Origin + Cookie;

// The server as any program of this machine reaches it.
class EditorServer : public TSessionFixture {
protected:
  EditorServer() {
    Open("    <Action Type=\"STEP\" Name=\"mine\"/>\n");
    server_ = std::make_unique<TEditorServer>(*session_);
    const std::string address = server_->Address().substr(std::string_view("http://").size());
    const std::size_t path = address.find('/');
    const std::size_t query = address.find('?');
    meant_ = {{"HOST", address.substr(0, path)},
              {"FOLDER", address.substr(path, query - path)},
              {"QUERY", address.substr(query)},
              {"COOKIE", ""}};
  }
  ~EditorServer() override { server_.reset(); }

  int Port() const { return std::stoi(meant_.at("HOST").substr(meant_.at("HOST").find(':') + 1)); }
  // A request as it goes over the wire: HOST, FOLDER, COOKIE and QUERY stand for the real ones.
  THttpReply Send(std::string request) const {
    for (const auto& [name, value] : meant_)
      for (std::size_t at = request.find(name); at != std::string::npos;
           at = request.find(name, at + value.size()))
        request.replace(at, name.size(), value);
    return THttpClient(Port()).Ask(request);
  }
  // Brings the token, as the browser does, and remembers the cookie.
  THttpReply LogIn() {
    auto reply = Send("GET FOLDERQUERY HTTP/1.1\r\n" + Host + "\r\n");
    const std::string cookie = reply.Header("Set-Cookie");
    meant_["COOKIE"] = cookie.substr(0, cookie.find(';'));
    return reply;
  }
  THttpReply Get(const std::string& name) const {
    return Send("GET FOLDER" + name + " HTTP/1.1\r\n" + Host + Cookie + "\r\n");
  }
  THttpReply Ask(const std::string& operation, const std::string& body = "{}") const {
    return Send("POST FOLDERapi/" + operation + " HTTP/1.1\r\n" + Own +
                "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
  }

  std::unique_ptr<TEditorServer> server_;
  std::map<std::string, std::string> meant_;
};

TEST_F(EditorServer, TheAddressIsGoodForOneBrowser) {
  EXPECT_THAT(server_->Address(), testing::StartsWith("http://127.0.0.1:"));
  const std::string guess = "GET FOLDER?token=" + std::string(40, 'a') + " HTTP/1.1\r\n" + Host + "\r\n";
  EXPECT_EQ(Send(guess).Status, 403) << "a guess uses up nothing";
  const THttpReply first = LogIn();
  EXPECT_EQ(first.Status, 200);
  EXPECT_THAT(first.Header("Set-Cookie"),
              HasSubstr("; Path=" + meant_["FOLDER"] + "; HttpOnly; SameSite=Strict"));
  EXPECT_THAT(first.Body, testing::Not(HasSubstr(meant_["QUERY"]))) << "the page behind does not know it";
  EXPECT_EQ(LogIn().Status, 403);
  meant_["COOKIE"] = first.Header("Set-Cookie").substr(0, first.Header("Set-Cookie").find(';'));
  EXPECT_EQ(Get("").Status, 200);
  EXPECT_EQ(TJson::parse(Ask("state").Body)["tree"][0]["name"], "mine");
}

TEST_F(EditorServer, OnlyItsOwnPageIsAnswered) {
  LogIn();
  const std::string half = meant_["COOKIE"].substr(0, meant_["COOKIE"].size() - 1);
  const auto changed = [this](std::size_t at) {
    std::string cookie = meant_["COOKIE"];
    cookie[at] = cookie[at] == 'a' ? 'b' : 'a';
    return Host + Origin + "Cookie: " + cookie + "\r\n";
  };
  const std::string named = "localhost:" + std::to_string(Port());
  const struct {
    const char* Who;
    std::string Head;
    int Status = 403;
  } rows[] = {
      {"the page", Own, 200},
      {"the page, with cookies of others",
       "host: HOST\r\nORIGIN: http://HOST\r\nCookie: a=b; COOKIE; c=d\r\n", 200},
      {"nobody", Host + Origin},
      {"with half of the cookie", Host + Origin + "Cookie: " + half + "\r\n"},
      {"with another first letter", changed(meant_["COOKIE"].find('=') + 1)},
      {"with another last letter", changed(meant_["COOKIE"].size() - 1)},
      {"with more than it", Host + Origin + "Cookie: COOKIEa\r\n"},
      {"with another's of the same value", Host + Origin + "Cookie: xCOOKIE\r\n"},
      {"with two lines of cookies", Own + Cookie},
      {"a page of another origin", Host + "Origin: http://evil.example\r\n" + Cookie},
      {"a page of another port", Host + "Origin: http://127.0.0.1:1\r\n" + Cookie},
      {"a page that hides its origin", Host + "Origin: null\r\n" + Cookie},
      {"who says no origin", Host + Cookie},
      {"who says two", Own + Origin},
      {"who asks for another host", "Host: evil.example\r\n" + Origin + Cookie},
      {"who asks for two hosts", Own + Host},
      {"who asks for none", Origin + Cookie},
      {"who asks for this host by another name", "Host: " + named + "\r\n" + Origin + Cookie},
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
  const std::string post = "POST FOLDERapi/state HTTP/1.1\r\n" + Own;
  const std::string get = "GET FOLDER HTTP/1.1\r\n" + Host + Cookie;
  const std::string second = "GET FOLDERapp.js HTTP/1.1\r\n" + Host + Cookie + "\r\n";
  const std::string length = "Content-Length: 2\r\n", pieces = "Transfer-Encoding: chunked\r\n";
  std::string many;
  for (int i = 0; i < 96; ++i) // with the four lines of its own the most that may be
    many += "X: a\r\n";
  const struct {
    const char* What;
    std::string Request;
    int Status;
  } rows[] = {
      {"two lengths", post + length + "Content-Length: 4\r\n\r\n{}", 400},
      {"one length twice", post + length + length + "\r\n{}", 400},
      {"a list of lengths", post + "Content-Length: 2, 2\r\n\r\n{}", 400},
      {"a negative length", post + "Content-Length: -1\r\n\r\n{}", 400},
      {"a length with a sign", post + "Content-Length: +2\r\n\r\n{}", 400},
      {"a length beyond all numbers", post + "Content-Length: 99999999999999999999999\r\n\r\n{}", 400},
      {"a length and pieces", post + length + pieces + "\r\n0\r\n\r\n", 400},
      {"pieces and a length", post + pieces + length + "\r\n0\r\n\r\n", 400},
      {"pieces", post + pieces + "\r\n2\r\n{}\r\n0\r\n\r\n", 411},
      {"a folded line", get + "X: a\r\n b\r\n\r\n", 400},
      {"a blank before the colon", post + "Content-Length : 2\r\n\r\n{}", 400},
      {"a line without a colon", get + "X\r\n\r\n", 400},
      {"a zero byte", get + std::string("X: a\0b\r\n\r\n", 10), 400},
      {"another protocol", "GET FOLDER HTTP/2.0\r\n" + Host + "\r\n", 400},
      {"no protocol", "GET FOLDER\r\n\r\n", 400},
      {"no HTTP at all", "\x16\x03\x01\x02\r\n\r\n", 400},
      {"an absolute address", "GET http://HOSTFOLDER HTTP/1.1\r\n" + Host + Cookie + "\r\n", 403},
      {"another method", "PUT FOLDERapi/state HTTP/1.1\r\n" + Own + "\r\n", 405},
      {"only the head", "HEAD FOLDER HTTP/1.1\r\n" + Own + "\r\n", 405},
      {"what could be done", "OPTIONS FOLDERapi/state HTTP/1.1\r\n" + Own + "\r\n", 405},
      {"what a page of another origin asks first",
       "OPTIONS FOLDERapi/state HTTP/1.1\r\n" + Host + "Origin: http://evil.example\r\n\r\n", 403},
      {"a tunnel", "CONNECT 127.0.0.1:80 HTTP/1.1\r\n" + Host + "\r\n", 403},
      {"a large head", get + "X: " + std::string(17000, 'a') + "\r\n\r\n", 431},
      {"a large head without an end", get + "X: " + std::string(17000, 'a'), 431},
      {"many lines", get + many + "\r\n", 200},
      {"one line more", get + many + "X: a\r\n\r\n", 431},
      {"a large body, before it is sent", post + "Content-Length: 8388609\r\n\r\n", 413},
      {"another request behind it", post + length + "\r\n{}" + second, 200},
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
  const std::tuple<const char*, std::string, int> rows[] = {
      {"state", "no JSON", 400},
      {"state", "[]", 422},
      {"state", std::string(100000, '['), 400},
      {"nothing", "{}", 422},
      {"", "{}", 422},
      {"action", R"({"id":7})", 422},
      {"set", R"({"id":"0","page":0,"field":"None","value":""})", 422}};
  for (const auto& [operation, body, status] : rows) {
    const auto answer = Ask(operation, body);
    EXPECT_EQ(answer.Status, status) << operation << body.substr(0, 50);
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
