// The log of a run as groups that fold, made while the run goes on.
#pragma once

#include "program/report/HtmlWriter.h"
#include "program/runner/Events.h"

#include <chrono>
#include <string>
#include <vector>

namespace kx {

// Lines, of which there may be millions, wait on disk as the text that they become.
class THtmlLog {
public:
  using TTime = std::chrono::system_clock::time_point;

  explicit THtmlLog(const std::u16string& folder) : markup_(folder) { open_.emplace_back(); }

  void OpenGroup(std::u16string_view title);
  void CloseGroup(TStatusTag status, const char* outcome, std::chrono::milliseconds elapsed);
  void Add(const TMessageSent& message, TTime time);
  void End() { EndLines(); }

  std::int64_t Lines() const { return lines_; }
  void Write(THtmlWriter& out) const;

private:
  struct TOpen {
    std::size_t Header = 0; // in headers_
    std::u16string Title = {};
    bool HasErrors = false;   // here or deeper, as the next
    bool HasProblems = false; // errors or warnings
  };
  // What stands in front of a group's lines and is known when it ends.
  struct THeader {
    std::uint64_t At; // in the markup
    std::string Html = {};
  };
  // Consecutive lines of one kind share an element, so that a page with hundreds of thousands of lines stays
  // light.
  struct TLines {
    TStatusTag Status = TStatusTag::stNormal;
    std::int64_t First = 0;
    std::int64_t Count = 0; // 0: none is open
    std::chrono::sys_seconds Began = {};
    std::chrono::sys_seconds Last = {};
    std::string Seconds =
        {}; // "3:1 9:4": the line behind 3 came a second after the first, that behind 9 four
    std::string Html = {};
  };

  void TakeSecond(std::chrono::sys_seconds second);
  void EndLines();

  platform::Spool markup_;
  std::vector<THeader> headers_; // of all groups, in their order
  std::vector<TOpen> open_;      // the page itself first
  TLines block_;
  std::int64_t lines_ = 0;
  std::int64_t marked_ = 0; // lines with an element of their own
};

} // namespace kx
