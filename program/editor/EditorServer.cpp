#include "program/editor/EditorServer.h"

#include "foundation/platform/Shared.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "program/editor/Assets.h"
#include "program/editor/HttpServer.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <optional>
#include <utility>

namespace kx::editor {

namespace {

constexpr auto LongestWait = std::chrono::seconds(15);

constexpr std::string_view FirstPage = "index.html";

// By the end of a file's name.
constexpr std::array<std::pair<std::string_view, const char*>, 3> MediaTypes{
    {{".html", "text/html; charset=utf-8"},
     {".css", "text/css; charset=utf-8"},
     {".js", "text/javascript; charset=utf-8"}}};

// The same time whatever is wrong.
bool SameSecret(std::string_view a, std::string_view b) {
  unsigned difference = a.size() == b.size() ? 0U : 1U;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
    difference |= static_cast<unsigned>(a[i] ^ b[i]);
  return difference == 0;
}

std::string_view CookieOf(const THttpRequest& request, std::string_view name) {
  std::string_view rest = request.Only("Cookie").value_or(std::string_view());
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find(';'), rest.size());
    std::string_view pair = rest.substr(0, end);
    pair.remove_prefix(std::min(pair.find_first_not_of(' '), pair.size()));
    if (pair.size() > name.size() && pair.starts_with(name) && pair[name.size()] == '=')
      return pair.substr(name.size() + 1);
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return {};
}

std::size_t NumberOf(const THttpRequest& request, std::string_view name) {
  const std::string_view text = request.Parameter(name);
  std::size_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

THttpAnswer Json(int status, std::string text) {
  return {.Status = status, .Type = "application/json; charset=utf-8", .Body = std::move(text)};
}

THttpAnswer Json(int status, const TJson& value) {
  return Json(status, value.dump(-1, ' ', false, TJson::error_handler_t::replace));
}

THttpAnswer NotThere() {
  return Refusal(404, "There is nothing of that name.");
}

// Of every answer.
void SetHeaders(THttpAnswer& answer) {
  static constexpr std::array<std::pair<const char*, const char*>, 6> headers{
      {{"Content-Security-Policy",
        "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
        "base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
       {"X-Content-Type-Options", "nosniff"},
       {"X-Frame-Options", "DENY"},
       {"Referrer-Policy", "no-referrer"},
       {"Cross-Origin-Resource-Policy", "same-origin"},
       {"Cache-Control", "no-store"}}};
  answer.Headers.insert(answer.Headers.end(), headers.begin(), headers.end());
}

} // namespace

struct TEditorServer::TState : IHttpService {
  explicit TState(TEditorSession& session);

  std::optional<THttpAnswer> AtTheDoor(const THttpRequest& head) override;
  THttpAnswer Answer(const THttpRequest& request, TKxEvent& gone) override;
  std::optional<THttpAnswer> Check(const THttpRequest& head);
  bool IsOurs(const THttpRequest& head) const;
  THttpAnswer Exchange(const THttpRequest& head);
  THttpAnswer Get(std::string_view name, const THttpRequest& request, TKxEvent& gone);
  THttpAnswer Image(std::string_view type) const;
  THttpAnswer Api(std::string_view operation, const std::string& body, TKxEvent& gone);
  THttpAnswer Events(const THttpRequest& request, TKxEvent& gone);

  TEditorSession& Session;
  const std::string Folder = "/" + platform::RandomLetters(20) + "/";
  const std::string Token = platform::RandomLetters(40);
  const std::string Cookie = platform::RandomLetters(40);
  std::atomic<bool> TokenIsUsed = false;
  std::atomic<std::chrono::steady_clock::time_point> LastRequest = std::chrono::steady_clock::now();
  std::string Host;
  std::string CookieName; // with the port: cookies know hosts only
  std::string Address;
  THttpServer Server{*this}; // ends before what it asks
};

TEditorServer::TState::TState(TEditorSession& session) : Session(session) {
  const std::string port = std::to_string(Server.Port());
  Host = "127.0.0.1:" + port;
  CookieName = "kxhost-" + port;
  Address = "http://" + Host + Folder + "?token=" + Token;
}

// A name of this machine that somebody else controls may lead here; a page of another origin says so itself.
bool TEditorServer::TState::IsOurs(const THttpRequest& head) const {
  if (head.Only("Host") != Host) return false;
  if (head.Has("Origin") || head.Method != "GET") return head.Only("Origin") == "http://" + Host;
  return true;
}

std::optional<THttpAnswer> TEditorServer::TState::AtTheDoor(const THttpRequest& head) {
  auto answer = Check(head);
  if (answer) SetHeaders(*answer);
  return answer;
}

std::optional<THttpAnswer> TEditorServer::TState::Check(const THttpRequest& head) {
  if (!IsOurs(head)) return Refusal(403, "This request does not come from the editor's own page.");
  if (head.Method != "GET" && head.Method != "POST") return Refusal(405, "Only GET and POST are served.");
  if (head.Path == Folder && !head.Parameter("token").empty()) return Exchange(head);
  if (!head.Path.starts_with(Folder) || !SameSecret(CookieOf(head, CookieName), Cookie))
    return Refusal(403, "The address that kxhost printed is good for one browser. Start kxhost edit again.");
  LastRequest = std::chrono::steady_clock::now();
  return std::nullopt;
}

// The page behind goes on by itself: to a browser that came from somewhere else, a redirection would still be
// a request from there, and the cookie would stay away.
THttpAnswer TEditorServer::TState::Exchange(const THttpRequest& head) {
  if (!SameSecret(head.Parameter("token"), Token) || TokenIsUsed.exchange(true))
    return Refusal(403, "This address has been used already. Start kxhost edit again.");
  LastRequest = std::chrono::steady_clock::now();
  return {.Type = "text/html; charset=utf-8",
          .Body = "<!DOCTYPE html><html lang=\"en\"><meta charset=\"utf-8\"><title>kxhost</title>"
                  "<link rel=\"icon\" href=\"image/DEVENV\">"
                  "<meta http-equiv=\"refresh\" content=\"0;url=" +
                  Folder + "\"><p><a href=\"" + Folder + "\">Open the project</a></p></html>",
          .Headers = {{"Set-Cookie", CookieName + "=" + Cookie + "; Path=" + Folder +
                                         "; HttpOnly; SameSite=Strict; Max-Age=604800"}}};
}

THttpAnswer TEditorServer::TState::Answer(const THttpRequest& request, TKxEvent& gone) {
  constexpr std::string_view api = "api/";
  const std::string_view name = std::string_view(request.Path).substr(Folder.size());
  THttpAnswer answer = NotThere();
  if (request.Method == "GET") {
    answer = Get(name, request, gone);
  } else if (name.starts_with(api)) {
    answer = Api(name.substr(api.size()), request.Body, gone);
  }
  SetHeaders(answer);
  return answer;
}

THttpAnswer TEditorServer::TState::Get(std::string_view name, const THttpRequest& request, TKxEvent& gone) {
  constexpr std::string_view image = "image/";
  if (name == "api/events") return Events(request, gone);
  if (name.starts_with(image)) return Image(name.substr(image.size()));
  const auto asset = std::ranges::find(Assets, name.empty() ? FirstPage : name, &TAsset::Name);
  const auto type = std::ranges::find_if(
      MediaTypes, [&](const auto& row) { return asset != Assets.end() && asset->Name.ends_with(row.first); });
  if (type == MediaTypes.end()) return NotThere();
  return {.Type = type->second, .Body = std::string(asset->Bytes)};
}

THttpAnswer TEditorServer::TState::Image(std::string_view type) const {
  const std::string_view image = Session.Image(text::FromUtf8(type));
  if (image.empty()) return NotThere();
  return {.Type = "image/svg+xml", .Body = std::string(image)};
}

THttpAnswer TEditorServer::TState::Api(std::string_view operation, const std::string& body, TKxEvent& gone) {
  try {
    return Json(200, Session.Handle(operation, TJson::parse(body), gone));
  } catch (const TJson::exception& error) {
    return Json(400, TJson{{"error", error.what()}});
  } catch (const std::exception& error) {
    return Json(422, TJson{{"error", text::ToUtf8(MessageOf(error))}});
  }
}

THttpAnswer TEditorServer::TState::Events(const THttpRequest& request, TKxEvent& gone) {
  return Json(200, Session.Runs().Events(static_cast<int>(NumberOf(request, "run")),
                                         NumberOf(request, "from"), LongestWait, gone));
}

TEditorServer::TEditorServer(TEditorSession& session) : state_(std::make_unique<TState>(session)) {
  state_->Server.Start();
}

TEditorServer::~TEditorServer() = default;

bool TEditorServer::Close(std::chrono::milliseconds wait) {
  return state_->Server.Close(wait);
}

const std::string& TEditorServer::Address() const {
  return state_->Address;
}

std::chrono::steady_clock::duration TEditorServer::Idle() const {
  return std::chrono::steady_clock::now() - state_->LastRequest.load();
}

} // namespace kx::editor
