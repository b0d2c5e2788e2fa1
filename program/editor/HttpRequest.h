// What a browser sends before the body of a request, and what it is answered. Nothing of the network here.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace kx::editor {

struct THttpAnswer {
  int Status = 200;
  std::string Type = "text/plain; charset=utf-8";
  std::string Body = {};
  std::vector<std::pair<std::string, std::string>> Headers = {};
};

// Words for the user as plain text.
THttpAnswer Refusal(int status, std::string_view text);
// The bytes for the connection, which ends behind them; without a body for a request that asked for none.
std::string ToBytes(const THttpAnswer& answer, bool withBody);

struct THttpRequest {
  std::string Method;
  std::string Path;  // up to the "?", as it was sent: escapes are not resolved
  std::string Query; // behind it
  std::vector<std::pair<std::string, std::string>> Headers;
  std::size_t BodySize = 0; // as announced
  std::string Body;

  bool Has(std::string_view header) const;
  // Nothing when it is missing or there more than once. Names without regard to letter case.
  std::optional<std::string_view> Only(std::string_view header) const;
  // Of the query; empty when it is missing. Escapes are not resolved.
  std::string_view Parameter(std::string_view name) const;
};

// A head to its empty line (RFC 9112), or the refusal of what is none: a request that two readers could take
// for two different ones (two lengths, a length beside a transfer encoding, folded lines) is malformed.
// Bodies in pieces of unknown number are not taken: this server's own page does not send them.
std::variant<THttpRequest, THttpAnswer> ReadHead(std::string_view bytes);

} // namespace kx::editor
