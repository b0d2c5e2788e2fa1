#include "program/runner/Results.h"

#include <algorithm>
#include <array>

namespace kx {

namespace {

struct TResultRow {
  std::string_view Word;
  TStatusTag Status;
  bool IsSuccess;
};

// In the order of TResultKind.
constexpr auto Rows = std::to_array<TResultRow>({
    {"succeeded", TStatusTag::stSuccess, true},
    {"failed", TStatusTag::stError, false},
    {"finished with failures", TStatusTag::stError, false},
    {"stopped", TStatusTag::stError, false},
    {"ignored", TStatusTag::stWarning, false},
    {"nothing to do", TStatusTag::stNormal, true},
    {"would run", TStatusTag::stSuccess, true},
    {"skipped", TStatusTag::stNormal, true},
});

const TResultRow& RowOf(TResultKind kind) {
  return Rows.at(static_cast<std::size_t>(kind));
}

} // namespace

const char* WordOf(TResultKind kind) {
  return RowOf(kind).Word.data(); // a literal
}
std::optional<TResultKind> ReadResultKind(std::string_view word) {
  const auto row = std::ranges::find(Rows, word, &TResultRow::Word);
  if (row == Rows.end()) return std::nullopt;
  return static_cast<TResultKind>(row - Rows.begin());
}
TStatusTag StatusOf(TResultKind kind) {
  return RowOf(kind).Status;
}
bool IsSuccess(TResultKind kind) {
  return RowOf(kind).IsSuccess;
}

std::u16string NameWithPass(const std::u16string& name, const std::u16string& pass) {
  return pass.empty() ? name : name + u" (" + pass + u")";
}

TProblemCounts& TProblemCounts::operator+=(const TProblemCounts& other) {
  Errors += other.Errors;
  Warnings += other.Warnings;
  return *this;
}

TTestCounts& TTestCounts::operator+=(const TTestCounts& other) {
  Passed += other.Passed;
  Failed += other.Failed;
  NotRun += other.NotRun;
  return *this;
}

bool HasFindings(const TRunReport& report) {
  return !report.Findings.empty() || report.MoreFindings > 0;
}

} // namespace kx
