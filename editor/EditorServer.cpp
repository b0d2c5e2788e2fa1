#include "editor/EditorServer.h"

#include "editor/Assets.h"
#include "host/Exceptions.h"
#include "platform/Shared.h"
#include "text/Encoding.h"

#include <httplib.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <thread>

namespace kx::editor {

namespace {

constexpr std::size_t MostBytesOfARequest = std::size_t{8} << 20;
constexpr std::size_t Threads = 24; // a page that waits for events occupies one
constexpr auto LongestWait = std::chrono::seconds(15);

struct TAsset {
  std::string_view Name;
  const char* Type;
  const std::string_view* Bytes;
};
constexpr const char* ScriptType = "text/javascript; charset=utf-8";
constexpr std::array<TAsset, 12> Assets{{{"", "text/html; charset=utf-8", &IndexPage},
                                         {"style.css", "text/css; charset=utf-8", &Style},
                                         {"app.js", ScriptType, &AppScript},
                                         {"api.js", ScriptType, &ApiScript},
                                         {"tree.js", ScriptType, &TreeScript},
                                         {"form.js", ScriptType, &FormScript},
                                         {"project.js", ScriptType, &ProjectScript},
                                         {"dialogs.js", ScriptType, &DialogsScript},
                                         {"log.js", ScriptType, &LogScript},
                                         {"run.js", ScriptType, &RunScript},
                                         {"charts.js", ScriptType, &ChartsScript},
                                         {"dom.js", ScriptType, &DomScript}}};

// The same time whatever is wrong.
bool SameSecret(std::string_view a, std::string_view b) {
  unsigned difference = a.size() == b.size() ? 0U : 1U;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
    difference |= static_cast<unsigned>(a[i] ^ b[i]);
  return difference == 0;
}

std::string CookieOf(const httplib::Request& request, std::string_view name) {
  std::string_view rest = request.has_header("Cookie")
                              ? std::string_view(request.headers.find("Cookie")->second)
                              : std::string_view();
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find(';'), rest.size());
    std::string_view pair = rest.substr(0, end);
    pair.remove_prefix(std::min(pair.find_first_not_of(' '), pair.size()));
    if (pair.size() > name.size() && pair.starts_with(name) && pair[name.size()] == '=')
      return std::string(pair.substr(name.size() + 1));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return {};
}

std::size_t NumberOf(const httplib::Request& request, const char* name) {
  const std::string text = request.get_param_value(name);
  std::size_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

std::string Dump(const TJson& value) {
  return value.dump(-1, ' ', false, TJson::error_handler_t::replace);
}

// The library would squeeze plain "application/json" with Brotli, which for the log of a long build takes far
// longer than the way to a browser on the same machine.
void SendJson(httplib::Response& response, int status, const std::string& body) {
  response.status = status;
  response.set_content(body, "application/json; charset=utf-8");
}

void Refuse(httplib::Response& response, int status, const char* text) {
  response.status = status;
  response.set_content(std::string(text) + "\n", "text/plain; charset=utf-8");
}

} // namespace

struct TEditorServer::TState {
  explicit TState(TEditorSession& session) : Session(session) {}

  httplib::Server::HandlerResponse Guard(const httplib::Request& request, httplib::Response& response);
  bool IsOurs(const httplib::Request& request) const;
  void Exchange(const httplib::Request& request, httplib::Response& response);
  void Serve();
  void Api(const httplib::Request& request, httplib::Response& response);
  void Events(const httplib::Request& request, httplib::Response& response);
  static void SetHeaders(httplib::Response& response);

  TEditorSession& Session;
  std::string Folder = "/" + platform::RandomLetters(20) + "/";
  std::string Token = platform::RandomLetters(40);
  std::string Cookie = platform::RandomLetters(40);
  std::atomic<bool> TokenIsUsed = false;
  std::atomic<std::chrono::steady_clock::time_point> LastRequest = std::chrono::steady_clock::now();
  std::string Host;
  std::string CookieName;
  std::string Address;
  httplib::Server Server;
  std::thread Thread;
};

void TEditorServer::TState::SetHeaders(httplib::Response& response) {
  static constexpr std::array<std::pair<const char*, const char*>, 6> headers{
      {{"Content-Security-Policy",
        "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
        "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
       {"X-Content-Type-Options", "nosniff"},
       {"X-Frame-Options", "DENY"},
       {"Referrer-Policy", "no-referrer"},
       {"Cross-Origin-Resource-Policy", "same-origin"},
       {"Cache-Control", "no-store"}}};
  for (const auto& [name, value] : headers)
    response.set_header(name, value);
}

// A name of this machine that somebody else controls may lead here; a page of another origin says so itself.
bool TEditorServer::TState::IsOurs(const httplib::Request& request) const {
  const auto is = [&](const char* header, const std::string& value) {
    return request.get_header_value_count(header) == 1 && request.get_header_value(header) == value;
  };
  if (!is("Host", Host)) return false;
  if (request.has_header("Origin") || request.method != "GET") return is("Origin", "http://" + Host);
  return true;
}

// Asked before the body of a request is read.
httplib::Server::HandlerResponse TEditorServer::TState::Guard(const httplib::Request& request,
                                                              httplib::Response& response) {
  using enum httplib::Server::HandlerResponse;
  SetHeaders(response);
  if (!IsOurs(request)) {
    Refuse(response, 403, "This request does not come from the editor's own page.");
  } else if (request.method != "GET" && request.method != "POST") {
    Refuse(response, 405, "Only GET and POST are served.");
  } else if (request.path == Folder && request.has_param("token")) {
    Exchange(request, response);
  } else if (!request.path.starts_with(Folder) || !SameSecret(CookieOf(request, CookieName), Cookie)) {
    Refuse(response, 403,
           "The address that kxhost printed is good for one browser. Start kxhost edit again.");
  } else {
    LastRequest = std::chrono::steady_clock::now();
    return Unhandled;
  }
  return Handled;
}

// The page behind goes on by itself: to a browser that came from somewhere else, a redirection would still be
// a request from there, and the cookie would stay away.
void TEditorServer::TState::Exchange(const httplib::Request& request, httplib::Response& response) {
  if (!SameSecret(request.get_param_value("token"), Token) || TokenIsUsed.exchange(true)) {
    Refuse(response, 403, "This address has been used already. Start kxhost edit again.");
    return;
  }
  LastRequest = std::chrono::steady_clock::now();
  response.set_header("Set-Cookie", CookieName + "=" + Cookie + "; Path=" + Folder +
                                        "; HttpOnly; SameSite=Strict; Max-Age=604800");
  response.set_content("<!DOCTYPE html><html lang=\"en\"><meta charset=\"utf-8\"><title>kxhost</title>"
                       "<link rel=\"icon\" href=\"image/DEVENV\">"
                       "<meta http-equiv=\"refresh\" content=\"0;url=" +
                           Folder + "\"><p><a href=\"" + Folder + "\">Open the project</a></p></html>",
                       "text/html; charset=utf-8");
}

void TEditorServer::TState::Api(const httplib::Request& request, httplib::Response& response) {
  const std::string operation = request.path.substr(Folder.size() + std::string_view("api/").size());
  try {
    const TJson arguments = TJson::parse(request.body);
    SendJson(response, 200, Dump(Session.Handle(operation, arguments)));
  } catch (const TJson::exception& error) {
    SendJson(response, 400, Dump({{"error", error.what()}}));
  } catch (const std::exception& error) {
    SendJson(response, 422, Dump({{"error", text::ToUtf8(MessageOf(error))}}));
  }
}

void TEditorServer::TState::Events(const httplib::Request& request, httplib::Response& response) {
  SendJson(response, 200,
           Session.Runs().Events(static_cast<int>(NumberOf(request, "run")), NumberOf(request, "from"),
                                 LongestWait));
}

void TEditorServer::TState::Serve() {
  Server.new_task_queue = [] { return new httplib::ThreadPool(Threads); };
  Server.set_payload_max_length(MostBytesOfARequest);
  // The body of a refused request is not read: nobody shall take it for the next request.
  Server.set_keep_alive_max_count(1);
  Server.set_pre_routing_handler(
      [this](const auto& request, auto& response) { return Guard(request, response); });
  for (const auto& asset : Assets)
    Server.Get(Folder + std::string(asset.Name), [&asset](const auto& /*request*/, auto& response) {
      response.set_content(asset.Bytes->data(), asset.Bytes->size(), asset.Type);
    });
  Server.Get(Folder + "image/([A-Za-z0-9_.]+)", [this](const auto& request, auto& response) {
    const std::string_view image = Session.Image(text::FromUtf8(request.matches[1].str()));
    if (image.empty()) {
      Refuse(response, 404, "There is no such image.");
    } else {
      response.set_content(image.data(), image.size(), "image/svg+xml");
    }
  });
  Server.Get(Folder + "api/events",
             [this](const auto& request, auto& response) { Events(request, response); });
  Server.Post(Folder + "api/([a-zA-Z]+)",
              [this](const auto& request, auto& response) { Api(request, response); });
  const int port = Server.bind_to_any_port("127.0.0.1");
  if (port <= 0) throw EKxException(u"No port of the loopback address is free.");
  Host = "127.0.0.1:" + std::to_string(port);
  CookieName = "kxhost-" + std::to_string(port); // cookies know hosts, not ports
  Address = "http://" + Host + Folder + "?token=" + Token;
  Thread = std::thread([this] { Server.listen_after_bind(); });
}

TEditorServer::TEditorServer(TEditorSession& session) : state_(std::make_unique<TState>(session)) {
  state_->Serve();
}

TEditorServer::~TEditorServer() {
  state_->Server.stop();
  state_->Thread.join();
}

const std::string& TEditorServer::Address() const {
  return state_->Address;
}

std::chrono::steady_clock::duration TEditorServer::Idle() const {
  return std::chrono::steady_clock::now() - state_->LastRequest.load();
}

} // namespace kx::editor
