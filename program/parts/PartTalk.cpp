#include "program/parts/PartTalk.h"

#include "foundation/formats/JsonMembers.h"
#include "foundation/text/Encoding.h"

namespace kx {

namespace {

constexpr char Begin = '\x1e';

std::string RecordOf(const nlohmann::ordered_json& object) {
  return Begin + object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

// Nothing where the line holds no whole one; `at` is where it begins.
std::optional<nlohmann::json> FindRecord(std::string_view line, std::size_t& at) {
  at = line.rfind(Begin);
  if (at == std::string_view::npos) return std::nullopt;
  auto object = nlohmann::json::parse(line.substr(at + 1), nullptr, false);
  return object.is_object() ? std::optional(std::move(object)) : std::nullopt;
}

} // namespace

std::string TaskLine(const TPartTask& task) {
  return RecordOf({{"part", text::ToUtf8(task.Id)}, {"log", text::ToUtf8(task.Log)}});
}

std::optional<TPartTask> ReadTask(std::string_view line) {
  std::size_t at = 0;
  const auto record = FindRecord(line, at);
  if (!record || FindMember(*record, "part") == nullptr) return std::nullopt;
  return TPartTask{TextMember(*record, "part"), TextMember(*record, "log")};
}

std::string AnswerLine(int exitCode) {
  return RecordOf({{"exitCode", exitCode}});
}

std::optional<TPartAnswer> ReadAnswer(std::u16string_view line) {
  std::size_t at = 0;
  const std::string bytes = text::ToUtf8(line);
  const auto record = FindRecord(bytes, at);
  if (!record || FindMember(*record, "exitCode") == nullptr) return std::nullopt;
  return TPartAnswer{NumberMember<int>(*record, "exitCode"), text::FromUtf8(bytes.substr(0, at))};
}

} // namespace kx
