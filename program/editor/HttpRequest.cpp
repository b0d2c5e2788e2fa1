#include "program/editor/HttpRequest.h"

#include <boost/asio/buffer.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/status.hpp>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace kx::editor {

namespace {

namespace http = boost::beast::http;
using boost::beast::iequals;

constexpr std::ptrdiff_t MostHeaders = 100;

std::string Text(boost::beast::string_view text) {
  return {text.data(), text.size()};
}

bool IsBody(http::field name) {
  return name == http::field::content_length || name == http::field::transfer_encoding;
}

// What the parser would still take: a line that goes on in the next, a list of lengths.
bool IsAmbiguous(std::string_view bytes, boost::beast::string_view length) {
  return bytes.find("\r\n ") != std::string_view::npos || bytes.find("\r\n\t") != std::string_view::npos ||
         length.find(',') != boost::beast::string_view::npos;
}

} // namespace

THttpAnswer Refusal(int status, std::string_view text) {
  return {.Status = status, .Body = std::string(text) + "\n"};
}

std::string ToBytes(const THttpAnswer& answer, bool withBody) {
  std::string bytes = "HTTP/1.1 " + std::to_string(answer.Status) + " " +
                      Text(http::obsolete_reason(static_cast<http::status>(answer.Status))) +
                      "\r\nConnection: close\r\nContent-Type: " + answer.Type +
                      "\r\nContent-Length: " + std::to_string(answer.Body.size()) + "\r\n";
  for (const auto& [name, value] : answer.Headers)
    bytes.append(name).append(": ").append(value).append("\r\n");
  bytes += "\r\n";
  return withBody ? bytes + answer.Body : bytes;
}

bool THttpRequest::Has(std::string_view header) const {
  return std::ranges::any_of(Headers, [header](const auto& row) {
    return iequals({row.first.data(), row.first.size()}, {header.data(), header.size()});
  });
}

std::optional<std::string_view> THttpRequest::Only(std::string_view header) const {
  std::optional<std::string_view> found;
  for (const auto& [name, value] : Headers) {
    if (!iequals({name.data(), name.size()}, {header.data(), header.size()})) continue;
    if (found) return std::nullopt;
    found = value;
  }
  return found;
}

std::string_view THttpRequest::Parameter(std::string_view name) const {
  std::string_view rest = Query;
  while (!rest.empty()) {
    const std::string_view pair = rest.substr(0, rest.find('&'));
    if (pair.starts_with(name) && pair.substr(name.size()).starts_with('='))
      return pair.substr(name.size() + 1);
    rest.remove_prefix(std::min(pair.size() + 1, rest.size()));
  }
  return {};
}

std::variant<THttpRequest, THttpAnswer> ReadHead(std::string_view bytes) {
  // Looked at before the parser keeps each of them.
  if (std::ranges::count(bytes, '\n') > MostHeaders)
    return Refusal(431, "The request has too many header fields.");
  http::request_parser<http::empty_body> parser;
  parser.header_limit(std::numeric_limits<std::uint32_t>::max()); // whoever reads the bytes has limited them
  parser.body_limit(std::numeric_limits<std::uint64_t>::max());
  boost::beast::error_code error;
  parser.put(boost::asio::buffer(bytes.data(), bytes.size()), error);
  const auto& head = parser.get();
  const auto bodies = std::ranges::count_if(head, [](const auto& row) { return IsBody(row.name()); });
  if (error || !parser.is_header_done() || bodies > 1 ||
      IsAmbiguous(bytes, head[http::field::content_length]))
    return Refusal(400, "That is no HTTP request.");
  if (parser.chunked()) return Refusal(411, "A body comes with its length.");
  THttpRequest request;
  request.Method = Text(head.method_string());
  request.Path = Text(head.target());
  const std::size_t query = request.Path.find('?');
  if (query != std::string::npos) {
    request.Query = request.Path.substr(query + 1);
    request.Path.resize(query);
  }
  for (const auto& row : head)
    request.Headers.emplace_back(Text(row.name_string()), Text(row.value()));
  request.BodySize = static_cast<std::size_t>(parser.content_length().value_or(0));
  return request;
}

} // namespace kx::editor
