#include "program/report/HtmlLog.h"

#include "contract/UnitTests.h"
#include "foundation/text/Encoding.h"
#include "program/report/HtmlPage.h"
#include "program/report/ResultRows.h"

#include <utility>

namespace kx {

namespace {

// Browsers lay out an element as a whole: blocks of this size are left alone until they are scrolled to.
constexpr std::int64_t LinesPerElement = 200;
// So many warnings and errors have an element each, which a link reaches without script.
constexpr std::int64_t MostMarked = 10'000;

bool IsProblem(TStatusTag status) {
  return status == TStatusTag::stWarning || status == TStatusTag::stError;
}

std::string ClockText(std::chrono::sys_seconds time) {
  return text::ToUtf8(DateTimeText(time)).substr(11, 8);
}

} // namespace

void THtmlLog::OpenGroup(std::u16string_view title) {
  EndLines();
  TOpen group{.Header = headers_.size(), .Title = std::u16string(title)};
  headers_.push_back({markup_.Size()}); // first: no group is open without one
  open_.push_back(std::move(group));
}

// What failed stands open, everything else is folded away.
void THtmlLog::CloseGroup(TStatusTag status, const char* outcome, std::chrono::milliseconds elapsed) {
  if (open_.size() < 2) return;
  EndLines();
  const TOpen group = std::move(open_.back());
  open_.pop_back();
  const bool isOpen = group.HasErrors || status == TStatusTag::stError;
  const bool isBad = isOpen || group.HasProblems || IsProblem(status);
  open_.back().HasErrors |= isOpen;
  open_.back().HasProblems |= isBad;
  headers_[group.Header].Html = std::string("<details") + (isBad ? " class=bad" : "") +
                                (isOpen ? " open>" : ">") + "<summary>" + Icon(StatusClass(status), outcome) +
                                "<span>" + HtmlText(group.Title) + "</span><span class=time>" +
                                FormatElapsed(elapsed) + "</span></summary>\n";
  markup_.Append("</details>\n");
}

void THtmlLog::Add(const TMessageSent& message, TTime time) {
  const auto second = std::chrono::floor<std::chrono::seconds>(time);
  if (block_.Count == LinesPerElement || block_.Status != message.Status) EndLines();
  ++lines_;
  if (block_.Count == 0) block_ = {message.Status, lines_, 0, second, second};
  TakeSecond(second);
  ++block_.Count;
  const bool isProblem = IsProblem(message.Status);
  open_.back().HasProblems |= isProblem;
  open_.back().HasErrors |= message.Status == TStatusTag::stError;
  const bool isMarked = isProblem && marked_ < MostMarked;
  if (isMarked) {
    ++marked_;
    block_.Html += "<b id=L" + std::to_string(lines_) + ">";
  }
  block_.Html += HtmlText(message.Text);
  block_.Html += isMarked ? "</b>\n" : "\n";
}

void THtmlLog::TakeSecond(std::chrono::sys_seconds second) {
  if (second == block_.Last) return;
  block_.Last = second;
  if (!block_.Seconds.empty()) block_.Seconds += ' ';
  block_.Seconds += std::to_string(block_.Count) + ":" + std::to_string((second - block_.Began).count());
}

// The parser of a page drops a line end that follows the tag.
void THtmlLog::EndLines() {
  if (block_.Count == 0) return;
  std::string tag = "<pre";
  if (block_.Status != TStatusTag::stNormal) tag += std::string(" class=") + StatusClass(block_.Status);
  tag += " data-n=" + std::to_string(block_.First) + " data-t=" + ClockText(block_.Began);
  if (!block_.Seconds.empty()) tag += " data-s=\"" + block_.Seconds + "\"";
  if (block_.Count > 1) tag += " style=--n:" + std::to_string(block_.Count);
  markup_.Append(tag + ">\n" + block_.Html + "</pre>\n");
  block_ = {};
}

void THtmlLog::Write(THtmlWriter& out) const {
  if (!markup_.State()) return out.Fail(markup_.State()); // a log of which a part is missing says nothing
  std::uint64_t at = 0;
  for (const auto& header : headers_) {
    out.Copy(markup_, std::exchange(at, header.At), header.At);
    out << header.Html;
  }
  out.Copy(markup_, at, markup_.Size());
}

} // namespace kx
