#include "package/web/WebDav.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "tests/support/TemporaryFolder.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>
#include <gtest/gtest.h>

#include <functional>
#include <thread>

namespace kx {
namespace {

using boost::asio::ip::tcp;

// Gives one answer a connection and remembers what was asked: "GET /a auth".
class TServer {
public:
  explicit TServer(std::vector<std::string> answers) : answers_(std::move(answers)) {
    Accept();
    thread_ = std::thread([this] { io_.run(); });
  }
  TServer(const TServer&) = delete;
  ~TServer() { End(); }

  int Port() const { return acceptor_.local_endpoint().port(); }
  std::string Asked() {
    End();
    return asked_;
  }

private:
  void End() {
    io_.stop();
    if (thread_.joinable()) thread_.join();
  }
  void Accept() {
    acceptor_.async_accept([this](const boost::system::error_code& error, tcp::socket socket) {
      if (error || next_ == answers_.size()) return;
      Serve(socket);
      Accept();
    });
  }
  void Serve(tcp::socket& socket) {
    std::string request;
    boost::system::error_code error;
    const std::size_t head =
        boost::asio::read_until(socket, boost::asio::dynamic_buffer(request), "\r\n\r\n", error);
    const std::size_t length = request.find("Content-Length: ");
    const std::size_t wanted = length < head ? std::stoul(request.substr(length + 16)) : 0;
    const std::size_t more = head + wanted - std::min(request.size(), head + wanted);
    boost::asio::read(socket, boost::asio::dynamic_buffer(request), boost::asio::transfer_exactly(more),
                      error);
    asked_ += request.substr(0, request.find(" HTTP/1.1"));
    for (const std::string_view header : {"Authorization: Basic", "Translate: f", "Expect:"})
      if (request.find(header) < head) asked_ += std::string(" ") + header.front();
    asked_ += (wanted > 0 ? " " + request.substr(head) : "") + "\n";
    const std::string answer = "HTTP/1.1 " + answers_[next_++];
    boost::asio::write(socket, boost::asio::buffer(answer), error);
  }

  std::vector<std::string> answers_;
  std::size_t next_ = 0;
  std::string asked_;
  boost::asio::io_context io_;
  tcp::acceptor acceptor_{io_, {boost::asio::ip::address_v4::loopback(), 0}};
  std::thread thread_;
};

std::string Answer(const std::string& status, const std::string& headers = "", const std::string& body = "") {
  return status + "\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" +
         headers + "\r\n" + body;
}

TEST(WebDavClient, AsksAndSaysWhatItGot) {
  const tests::TTemporaryFolder folder;
  const std::u16string sent = folder.Write("up.cs", "new");
  const std::u16string got = folder.Path("down.cs");
  using TChange = void (*)(TKxWebDavClient&);
  const auto down = [&](TKxWebDavClient& client) { return client.DownloadFile(u"/a b/c%.cs", got); };
  const auto up = [&](TKxWebDavClient& client) { return client.UploadFile(sent, u"//d//"); };
  const auto connect = [](TKxWebDavClient& client) { return client.Connect(); };
  const TChange nothing = [](TKxWebDavClient&) {};
  const TChange user = [](TKxWebDavClient& client) { client.UserName = client.Password = u"me"; };
  const TChange small = [](TKxWebDavClient& client) { client.MaximumSize = 3; };
  const TChange stopped = [](TKxWebDavClient& client) {
    static TKxEvent stop;
    stop.Raise();
    client.StopEvent = &stop;
  };
  const std::string basic = Answer("401 No", "WWW-Authenticate: Basic realm=\"r\"\r\n");
  const std::string abc = Answer("200 OK", "", "abc"), endless = "200 OK\r\nConnection: close\r\n\r\nabcd";
  const std::string ask = "GET /a%20b/c%25.cs T\n", again = "GET /e.cs T\n", put = "PUT /d/up.cs T new\n";
  const std::string asUser = ask + "GET /a%20b/c%25.cs A T\n";
  const std::string no = "Download of \"http://HOST/a%20b/c%25.cs\" failed: ",
                    large = no + "the answer is larger ";
  const std::string elsewhere = no + "HTTP status 302, a redirect to another server, which is not followed: ";
  const auto moved = [](const std::string& place) {
    return Answer("302 Found", "Location: " + place + "\r\n");
  };
  using TAnswers = std::vector<std::string>;
  const TAnswers cutOff(7, moved("/e.cs"));
  struct TRow {
    const char* Name;
    std::function<bool(TKxWebDavClient&)> Call;
    TChange Change;
    TAnswers Answers;
    std::string Asked;
    std::string Error; // empty: it succeeds
  };
  const TRow rows[] = {
      {"a file as large as allowed", down, small, TAnswers{abc}, ask, ""},
      {"a larger one", down, small, TAnswers{Answer("200 OK", "", "abcd")}, ask, large + "than 3 bytes."},
      {"one of unknown length", down, small, TAnswers{endless}, ask, large + "than 3 bytes."},
      {"no file", down, nothing, TAnswers{Answer("204 None")}, ask, no + "HTTP status 204."},
      {"a redirect", down, nothing, TAnswers{moved("/e.cs"), abc}, ask + again, ""},
      {"a redirect to another server", down, nothing, TAnswers{moved("http://h.invalid/")}, ask,
       elsewhere + "\"http://h.invalid/\"."},
      {"a redirect to another port", down, nothing, TAnswers{moved("http://127.0.0.1:1/")}, ask,
       elsewhere + "\"http://127.0.0.1:1/\"."},
      {"a redirect to nowhere", down, nothing, TAnswers{Answer("300 Choose")}, ask, no + "HTTP status 300."},
      {"redirects without end", down, nothing, cutOff, ask + again + again + again + again + again,
       no + "HTTP status 302."},
      {"a server that asks who it is", down, nothing, TAnswers{basic}, ask,
       no + "HTTP status 401, the server asks for a user name and password."},
      {"a password where it is asked for", down, user, TAnswers{basic, abc}, asUser, ""},
      {"a wrong one", down, user, TAnswers{basic, basic}, asUser,
       no + "HTTP status 401, the server refuses the user name or password."},
      {"one that cannot be told", down, user, TAnswers{Answer("401 No", "WWW-Authenticate: X\r\n")}, ask,
       no + "HTTP status 401, the server offers neither Basic nor Digest authentication."},
      {"an upload", up, nothing, TAnswers{Answer("201 Created")}, put, ""},
      {"an upload that is refused", up, nothing, TAnswers{Answer("507 Full")}, put,
       "Upload to \"http://HOST/d/up.cs\" failed: HTTP status 507, the server has no space left."},
      {"any answer is a connection", connect, user, TAnswers{Answer("403 No")}, "OPTIONS / T\n", ""},
      {"a stop", down, stopped, TAnswers{abc}, "", no + "the user has stopped the run."},
  };
  for (const auto& row : rows) {
    TServer server(row.Answers);
    const std::string host = "127.0.0.1:" + std::to_string(server.Port());
    const auto client = TKxWebDavClient::Create();
    client->ServerName = u"127.0.0.1";
    client->ServerPort = server.Port();
    row.Change(*client);
    EXPECT_EQ(row.Call(*client), row.Error.empty()) << row.Name;
    EXPECT_EQ(text::ReplaceAll(client->LastErrorText(), text::FromUtf8(host), u"HOST"),
              text::FromUtf8(row.Error))
        << row.Name;
    EXPECT_EQ(server.Asked(), row.Asked) << row.Name;
  }
  EXPECT_EQ(*platform::ReadFile(got), "abc");
}

} // namespace
} // namespace kx
