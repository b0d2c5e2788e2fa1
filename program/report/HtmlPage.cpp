#include "program/report/HtmlPage.h"

#include "contract/UnitTests.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <array>

namespace kx {

TNovelty NoveltyOf(const TFinding& finding, const TPast* past) {
  if (past == nullptr) return TNovelty::Unknown;
  return past->KnownSince.contains(finding.Fingerprint) ? TNovelty::Known : TNovelty::New;
}

std::u16string ProjectName(std::u16string_view project) {
  const std::u16string name = text::ExtractFileName(project);
  const std::size_t dot = name.rfind(u'.');
  return dot != name.npos && text::EndsWithIgnoreCase(name, u"proj") ? name.substr(0, dot) : name;
}

bool IsOfTest(const TFinding& finding) {
  return finding.Rule == u"test-failed";
}

const char* StatusClass(TStatusTag status) {
  static constexpr std::array<const char*, 4> names{"plain", "done", "warning", "error"};
  return names[static_cast<std::size_t>(status)];
}

const char* IconOf(TResultKind kind) {
  switch (kind) {
  case TResultKind::Stopped:
    return "stopped";
  case TResultKind::NothingToDo:
  case TResultKind::WouldRun:
  case TResultKind::Skipped:
    return "skipped";
  case TResultKind::Ignored:
    return "warning";
  default:
    return IsSuccess(kind) ? "done" : "error";
  }
}

std::string Icon(std::string_view icon, std::string_view meaning) {
  const std::string image = "<i class=\"i " + std::string(icon) + "\"";
  if (meaning.empty()) return image + "></i>";
  return image + " role=img aria-label=\"" + std::string(meaning) + "\"></i>";
}

std::string Day(std::chrono::system_clock::time_point time) {
  static constexpr std::array<const char*, 12> months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const std::chrono::year_month_day day(std::chrono::floor<std::chrono::days>(time));
  return std::to_string(static_cast<unsigned>(day.day())) + " " +
         months[static_cast<unsigned>(day.month()) - 1] + " " + std::to_string(static_cast<int>(day.year()));
}

std::string DayTime(std::chrono::system_clock::time_point time) {
  return Day(time) + ", " +
         text::ToUtf8(DateTimeText(std::chrono::floor<std::chrono::milliseconds>(time))).substr(11, 8) +
         " UTC";
}

} // namespace kx
