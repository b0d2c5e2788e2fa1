#include "package/web/WebDav.h"

#include "contract/FileUpdates.h"
#include "foundation/platform/Files.h"
#include "foundation/platform/System.h"
#include "foundation/platform/TextFiles.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>
#include <array>
#include <curl/curl.h>
#include <optional>
#include <system_error>

namespace kx {

namespace {

template <auto Free>
struct TFree {
  void operator()(auto* object) const { Free(object); }
};
using THandle = std::unique_ptr<CURL, TFree<&curl_easy_cleanup>>;
using TUrl = std::unique_ptr<CURLU, TFree<&curl_url_cleanup>>;
using THeaders = std::unique_ptr<curl_slist, TFree<&curl_slist_free_all>>;
using TCurlText = std::unique_ptr<char, TFree<&curl_free>>;

constexpr int MaximumRedirects = 5;
// However slowly a server keeps on sending, it does not hold up a build for longer than this.
constexpr long LongestTransferInSeconds = 600;

constexpr std::u16string_view AuthoritiesVariable = u"SSL_CERT_FILE";

constexpr std::size_t SentAtOnce = 64 << 10; // in bytes

struct TStatusWords {
  long Status;
  std::u16string_view Words;
};
constexpr std::array<TStatusWords, 14> StatusWords{{
    {400, u"the server does not understand the request"},
    {401, u"the server refuses the user name or password"},
    {403, u"access is denied"},
    {404, u"there is no such file or folder"},
    {405, u"the server does not allow this here; is WebDAV enabled for the folder?"},
    {407, u"the proxy asks for a user name and password"},
    {409, u"the folder does not exist on the server"},
    {413, u"the server refuses a file of this size"},
    {423, u"the file is locked"},
    {500, u"the server failed"},
    {501, u"the server cannot do this; is WebDAV enabled?"},
    {502, u"a server behind the server failed"},
    {503, u"the server is not available"},
    {507, u"the server has no space left"},
}};

enum class EMethod { Options, Get, Put };

// One request and what came of it.
struct TExchange {
  EMethod Method;
  std::string Sent; // the body
  std::size_t SentSoFar = 0;
  std::string Received;
  std::uint64_t MaximumSize = 0;
  bool IsTooLarge = false;
  const TKxEvent* Stop = nullptr;
};

std::size_t OnReceived(char* data, std::size_t, std::size_t size, void* context) {
  auto& exchange = *static_cast<TExchange*>(context);
  exchange.IsTooLarge = exchange.Received.size() + size > exchange.MaximumSize;
  if (exchange.IsTooLarge) return 0;
  exchange.Received.append(data, size);
  return size;
}

std::size_t OnSend(char* buffer, std::size_t itemSize, std::size_t items, void* context) {
  auto& exchange = *static_cast<TExchange*>(context);
  const std::size_t size = exchange.Sent.copy(buffer, itemSize * items, exchange.SentSoFar);
  exchange.SentSoFar += size;
  return size;
}

// The body is sent again when the first answer asks for a password.
int OnSeek(void* context, curl_off_t offset, int origin) {
  auto& exchange = *static_cast<TExchange*>(context);
  if (origin != SEEK_SET || offset < 0 || static_cast<std::uint64_t>(offset) > exchange.Sent.size())
    return CURL_SEEKFUNC_FAIL;
  exchange.SentSoFar = static_cast<std::size_t>(offset);
  return CURL_SEEKFUNC_OK;
}

int OnProgress(void* context, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  const auto& exchange = *static_cast<TExchange*>(context);
  return exchange.Stop != nullptr && exchange.Stop->IsRaised() ? 1 : 0;
}

// Every segment by itself, so that "#", "?" and "%" in a name stay part of it; doubled separators are folded.
std::string EncodePath(std::u16string_view remote) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string path = "/";
  for (const char byte : text::ToUtf8(remote)) {
    const auto value = static_cast<unsigned char>(byte);
    const bool letter = ((value | 0x20) >= 'a' && (value | 0x20) <= 'z') || (value >= '0' && value <= '9');
    if (byte == '/') {
      if (path.back() != '/') path += '/';
    } else if (letter || std::string_view("-._~").find(byte) != std::string_view::npos) {
      path += byte;
    } else {
      path += {'%', digits[value >> 4], digits[value & 15]};
    }
  }
  return path;
}

std::string PartOf(CURLU* url, CURLUPart part) {
  char* value = nullptr;
  if (curl_url_get(url, part, &value, CURLU_DEFAULT_PORT) != CURLUE_OK) return {};
  return TCurlText(value).get();
}

std::string Origin(CURLU* url) {
  return PartOf(url, CURLUPART_SCHEME) + "://" + PartOf(url, CURLUPART_HOST) + ":" +
         PartOf(url, CURLUPART_PORT);
}

std::u16string Shown(CURLU* url) {
  char* value = nullptr;
  if (curl_url_get(url, CURLUPART_URL, &value, 0) != CURLUE_OK) return {};
  return u"\"" + text::FromUtf8(TCurlText(value).get()) + u"\"";
}

// The library verifies certificates, but looks at no variable by itself.
platform::Status SetTrust(CURL* curl) {
  curl_easy_setopt(curl, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  const auto file = platform::EnvironmentVariable(AuthoritiesVariable);
  if (!file || file->empty()) return platform::Done{};
  auto authorities = platform::ReadFile(*file);
  if (!authorities) return platform::Failure{authorities.Message()};
  curl_blob blob{authorities->data(), authorities->size(), CURL_BLOB_COPY};
  curl_easy_setopt(curl, CURLOPT_CAINFO_BLOB, &blob);
  curl_easy_setopt(curl, CURLOPT_CAPATH, nullptr);
  return platform::Done{};
}

void SetBody(CURL* curl, TExchange& exchange) {
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &OnReceived);
  curl_easy_setopt(curl, CURLOPT_WRITEDATA, &exchange);
  curl_easy_setopt(curl, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(exchange.MaximumSize));
  curl_easy_setopt(curl, CURLOPT_XFERINFOFUNCTION, &OnProgress);
  curl_easy_setopt(curl, CURLOPT_XFERINFODATA, &exchange);
  curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 0L);
  if (exchange.Method == EMethod::Options) curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, "OPTIONS");
  if (exchange.Method != EMethod::Put) return;
  curl_easy_setopt(curl, CURLOPT_UPLOAD, 1L);
  curl_easy_setopt(curl, CURLOPT_READFUNCTION, &OnSend);
  curl_easy_setopt(curl, CURLOPT_READDATA, &exchange);
  curl_easy_setopt(curl, CURLOPT_SEEKFUNCTION, &OnSeek);
  curl_easy_setopt(curl, CURLOPT_SEEKDATA, &exchange);
  curl_easy_setopt(curl, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(exchange.Sent.size()));
}

THeaders MakeHeaders(const TExchange& exchange) {
  // Without "Translate: f", IIS runs a source file or refuses it instead of sending it.
  THeaders headers(curl_slist_append(nullptr, "Translate: f"));
  // A small body goes out at once: many servers never answer "Expect: 100-continue", which costs a second.
  if (headers && exchange.Sent.size() <= SentAtOnce) curl_slist_append(headers.get(), "Expect:");
  return headers;
}

class TCurlWebDavClient : public TKxWebDavClient {
public:
  bool Connect() override;
  bool Disconnect() override;
  bool UploadFile(std::u16string_view local, std::u16string_view remote) override;
  bool DownloadFile(std::u16string_view remote, std::u16string_view local) override;
  std::u16string LastErrorText() const override { return lastError_; }

private:
  bool Fail(std::u16string reason);
  TUrl MakeUrl(std::u16string_view remote);
  TExchange NewExchange(EMethod method) const { return {method, {}, 0, {}, MaximumSize, false, StopEvent}; }
  // The status of the answer; nothing when there was none, the reason then stands in `reason`.
  std::optional<long> Perform(CURLU* url, TExchange& exchange, std::u16string& reason);
  void SetUser(CURL* curl) const;
  const char* Scheme() const { return IsSecure ? "https" : "http"; }
  std::u16string ReasonOf(CURLcode code, const TExchange& exchange, const char* detail) const;
  std::u16string ReasonOfStatus(long status) const;
  bool FollowRedirect(TUrl& url, std::u16string& reason) const;

  THandle curl_; // keeps the connection from one request to the next
  std::u16string lastError_;
};

bool TCurlWebDavClient::Fail(std::u16string reason) {
  lastError_ = std::move(reason);
  return false;
}

TUrl TCurlWebDavClient::MakeUrl(std::u16string_view remote) {
  TUrl url(curl_url());
  const std::string host = text::ToUtf8(ServerName);
  const std::string port = std::to_string(ServerPort);
  const std::string path = EncodePath(remote);
  CURLUcode code = host.empty() ? CURLUE_NO_HOST : CURLUE_OK;
  for (const auto& [part, value] :
       {std::pair(CURLUPART_SCHEME, Scheme()), std::pair(CURLUPART_HOST, host.c_str()),
        std::pair(CURLUPART_PORT, port.c_str()), std::pair(CURLUPART_PATH, path.c_str())}) {
    if (code == CURLUE_OK) code = curl_url_set(url.get(), part, value, 0);
  }
  if (code == CURLUE_OK) return url;
  Fail(u"\"" + ServerName + u"\" and port " + text::FromInteger(ServerPort) +
       u" are no address of a server: " + text::FromUtf8(curl_url_strerror(code)) + u".");
  return nullptr;
}

// The first request goes without the password; Digest is taken where the server offers it, Basic where it
// offers nothing better.
void TCurlWebDavClient::SetUser(CURL* curl) const {
  if (UserName.empty()) return;
  curl_easy_setopt(curl, CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_BASIC | CURLAUTH_DIGEST));
  curl_easy_setopt(curl, CURLOPT_USERNAME, text::ToUtf8(UserName).c_str());
  curl_easy_setopt(curl, CURLOPT_PASSWORD, text::ToUtf8(Password).c_str());
}

std::optional<long> TCurlWebDavClient::Perform(CURLU* url, TExchange& exchange, std::u16string& reason) {
  static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
  if (initialised == CURLE_OK && !curl_) curl_.reset(curl_easy_init());
  if (!curl_) {
    reason = u"the HTTP library cannot be used on this machine";
    return std::nullopt;
  }
  CURL* const curl = curl_.get();
  curl_easy_reset(curl);
  const THeaders headers = MakeHeaders(exchange);
  std::array<char, CURL_ERROR_SIZE> detail{};
  curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, detail.data());
  curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers.get());
  curl_easy_setopt(curl, CURLOPT_CURLU, url);
  curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, Scheme());
  // Servers that ask for a password in the middle of an upload end the stream of HTTP/2 with it.
  curl_easy_setopt(curl, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  if (const auto trusted = SetTrust(curl); IsSecure && !trusted) {
    reason = trusted.Message() + u" (" + std::u16string(AuthoritiesVariable) + u")";
    return std::nullopt;
  }
  curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, static_cast<long>(ConnectTimeout.count()));
  curl_easy_setopt(curl, CURLOPT_LOW_SPEED_LIMIT, 1L);
  curl_easy_setopt(curl, CURLOPT_LOW_SPEED_TIME, static_cast<long>(StallTimeout.count()));
  curl_easy_setopt(curl, CURLOPT_TIMEOUT, LongestTransferInSeconds);
  if (exchange.Method != EMethod::Options) SetUser(curl);
  SetBody(curl, exchange);
  const CURLcode code = curl_easy_perform(curl);
  if (code != CURLE_OK) {
    reason = ReasonOf(code, exchange, detail.data());
    return std::nullopt;
  }
  long status = 0;
  curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
  reason = ReasonOfStatus(status);
  return status;
}

std::u16string TCurlWebDavClient::ReasonOf(CURLcode code, const TExchange& exchange,
                                           const char* detail) const {
  if (code == CURLE_ABORTED_BY_CALLBACK) return u"the user has stopped the run";
  if (exchange.IsTooLarge || code == CURLE_FILESIZE_EXCEEDED)
    return u"the answer is larger than " + text::FromInteger(static_cast<std::int64_t>(MaximumSize)) +
           u" bytes";
  std::u16string reason = text::FromUtf8(*detail != '\0' ? detail : curl_easy_strerror(code));
  if (code == CURLE_PEER_FAILED_VERIFICATION)
    return u"the server's certificate is refused: " + reason + u". The variable " +
           std::u16string(AuthoritiesVariable) + u" may name a file with the authorities to trust";
  long systemError = 0;
  if (code == CURLE_COULDNT_CONNECT &&
      curl_easy_getinfo(curl_.get(), CURLINFO_OS_ERRNO, &systemError) == CURLE_OK && systemError != 0)
    reason +=
        u" (" + platform::FromAnsi(std::system_category().message(static_cast<int>(systemError))) + u")";
  return reason;
}

std::u16string TCurlWebDavClient::ReasonOfStatus(long status) const {
  long offered = 0;
  curl_easy_getinfo(curl_.get(), CURLINFO_HTTPAUTH_AVAIL, &offered);
  const auto* const found = std::ranges::find(StatusWords, status, &TStatusWords::Status);
  std::u16string words = u"HTTP status " + text::FromInteger(status);
  if (status == 401 && UserName.empty()) return words + u", the server asks for a user name and password";
  if (status == 401 && (static_cast<unsigned long>(offered) & (CURLAUTH_BASIC | CURLAUTH_DIGEST)) == 0)
    return words + u", the server offers neither Basic nor Digest authentication";
  return found == StatusWords.end() ? words : words + u", " + std::u16string(found->Words);
}

// Only on the same server: another one would learn the password, or put its own file in place of ours.
bool TCurlWebDavClient::FollowRedirect(TUrl& url, std::u16string& reason) const {
  const char* target = nullptr;
  curl_easy_getinfo(curl_.get(), CURLINFO_REDIRECT_URL, &target);
  if (target == nullptr) return false;
  TUrl next(curl_url());
  if (curl_url_set(next.get(), CURLUPART_URL, target, 0) != CURLUE_OK) return false;
  curl_url_set(next.get(), CURLUPART_USER, nullptr, 0);
  curl_url_set(next.get(), CURLUPART_PASSWORD, nullptr, 0);
  if (!text::EqualsIgnoreCase(text::FromUtf8(Origin(next.get())), text::FromUtf8(Origin(url.get())))) {
    reason += u", a redirect to another server, which is not followed: " + Shown(next.get());
    return false;
  }
  url = std::move(next);
  return true;
}

// A server may keep its root to itself and still serve a folder, so every answer will do; name and password
// are first sent to where they are needed.
bool TCurlWebDavClient::Connect() {
  const TUrl url = MakeUrl(u"/");
  if (!url) return false;
  TExchange exchange = NewExchange(EMethod::Options);
  std::u16string reason;
  if (Perform(url.get(), exchange, reason)) return true;
  return Fail(u"No connection to " + Shown(url.get()) + u": " + reason + u".");
}

bool TCurlWebDavClient::Disconnect() {
  curl_.reset();
  return true;
}

bool TCurlWebDavClient::UploadFile(std::u16string_view local, std::u16string_view remote) {
  std::u16string name(remote);
  if (name.ends_with(u'/')) name += text::ExtractFileName(local);
  auto bytes = FileUpdates().Read(local);
  if (!bytes) return Fail(bytes.Message());
  const TUrl url = MakeUrl(name);
  if (!url) return false;
  if (FileUpdates().IsDryRun()) return true;
  TExchange exchange = NewExchange(EMethod::Put);
  exchange.Sent = *std::move(bytes);
  std::u16string reason;
  const auto status = Perform(url.get(), exchange, reason);
  if (status == 200 || status == 201 || status == 204) return true;
  return Fail(u"Upload to " + Shown(url.get()) + u" failed: " + reason + u".");
}

bool TCurlWebDavClient::DownloadFile(std::u16string_view remote, std::u16string_view local) {
  TUrl url = MakeUrl(remote);
  if (!url) return false;
  const std::u16string shown = Shown(url.get());
  std::u16string reason;
  for (int redirects = 0; redirects <= MaximumRedirects; ++redirects) {
    TExchange exchange = NewExchange(EMethod::Get);
    const auto status = Perform(url.get(), exchange, reason);
    if (status == 200) {
      const auto written = platform::SaveFile(local, exchange.Received);
      return written ? true : Fail(u"The file at " + shown + u" arrived, but: " + written.Message());
    }
    if (!status || *status < 300 || *status > 399 || !FollowRedirect(url, reason)) break;
  }
  return Fail(u"Download of " + shown + u" failed: " + reason + u".");
}

} // namespace

} // namespace kx

extern "C" kx::TKxWebDavClient* KxNewWebDavClient() {
  return new kx::TCurlWebDavClient;
}
