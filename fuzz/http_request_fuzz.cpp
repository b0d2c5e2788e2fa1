// The head of a request from anybody on the machine: what is taken can be read in one way only, and is the
// same when it is written again from its parts.
#include "fuzz/FuzzTarget.h"
#include "program/editor/HttpRequest.h"

#include <algorithm>

namespace kx::fuzz {
namespace {

using editor::ReadHead;
using editor::THttpAnswer;
using editor::THttpRequest;

bool IsPlain(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) > ' ' && c != 0x7F; });
}

std::string HeadOf(const THttpRequest& request) {
  std::string head = request.Method + " " + request.Path;
  if (!request.Query.empty()) head += "?" + request.Query;
  head += " HTTP/1.1\r\n";
  for (const auto& [name, value] : request.Headers)
    head.append(name).append(": ").append(value).append("\r\n");
  return head + "\r\n";
}

void CheckRequest(const THttpRequest& request) {
  Require(!request.Method.empty() && IsPlain(request.Method), "a method is one word");
  Require(IsPlain(request.Path) && IsPlain(request.Query), "an address has no blanks");
  Require(request.Path.find('?') == std::string::npos, "the path ends at the query");
  for (const auto& [name, value] : request.Headers) {
    Require(!name.empty() && IsPlain(name) && name.find(':') == std::string::npos, "a name is one word");
    Require(value.find_first_of(std::string_view("\r\n\0", 3)) == std::string::npos, "a value is one line");
  }
  Require(!request.Has("Transfer-Encoding") || !request.Has("Content-Length"), "a body has one length");
  Require(!request.Has("Content-Length") || request.Only("Content-Length"), "a body has one length");
  Require(request.Body.empty(), "a head has no body");
}

void Check(std::string_view bytes) {
  const auto read = ReadHead(bytes);
  if (const auto* refusal = std::get_if<THttpAnswer>(&read)) {
    Require(refusal->Status == 400 || refusal->Status == 411 || refusal->Status == 431, "a refusal says why");
    return;
  }
  const auto& request = std::get<THttpRequest>(read);
  CheckRequest(request);
  if (request.Path.empty()) return; // "?" alone leaves nothing to write
  const auto again = ReadHead(HeadOf(request));
  Require(std::holds_alternative<THttpRequest>(again), "what is taken is taken again");
  const auto& same = std::get<THttpRequest>(again);
  Require(same.Method == request.Method && same.Path == request.Path && same.Query == request.Query &&
              same.Headers == request.Headers && same.BodySize == request.BodySize,
          "it is the same request");
}

const TRegistration registration({"http_request", Check});

} // namespace
} // namespace kx::fuzz
