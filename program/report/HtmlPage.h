// What a report's page shows, and its sections: each one function that writes it.
#pragma once

#include "program/report/HtmlWriter.h"
#include "program/report/SuiteSpool.h"
#include "program/runner/Past.h"

#include <span>
#include <string>
#include <vector>

namespace kx {

// A figure that an action sent and that no table of the page shows otherwise.
struct TFigure {
  std::u16string Name; // "Category: Name"
  std::u16string Action;
  std::u16string Configuration;
  std::int64_t Value = 0;
};

// A value that was written into a file.
struct TStamp {
  std::u16string File;
  std::u16string Name = {}; // of the attribute; empty where only the file is known
  std::u16string Value = {};
};

struct THtmlPage {
  std::u16string_view Title;
  const TRunReport& Report;
  const TPast* Past; // null without earlier runs
  const TSuiteSpool& Suites;
  std::span<const TFigure> Figures;
  std::span<const TStamp> Stamps;
  std::int64_t LogLines = 0;
};

// The runs and this one, no more than so many at a time in strips and charts.
inline constexpr std::size_t MostRunsShown = 30;

// Where the run stands in what it says: new against the run before, or known from it.
enum class TNovelty { Unknown, New, Known };
TNovelty NoveltyOf(const TFinding& finding, const TPast* past);

// "Core" of "src/Core/Core.csproj": tools name a project by its file, people do not.
std::u16string ProjectName(std::u16string_view project);

// A failed test is a finding too, and has its place among the tests.
bool IsOfTest(const TFinding& finding);

// "error", "warning", "done", "skipped": of the page's style.
const char* StatusClass(TStatusTag status);
const char* IconOf(TResultKind kind);
// An icon with what it means; `meaning` is markup.
std::string Icon(std::string_view icon, std::string_view meaning);
std::string Day(std::chrono::system_clock::time_point time);     // "12 Nov 2026"
std::string DayTime(std::chrono::system_clock::time_point time); // "12 Nov 2026, 02:00:04 UTC"

// In one sentence what became of the run and why, and what did work.
std::u16string HeadlineOf(const TRunReport& report);
std::u16string LeadOf(const THtmlPage& page);
void WriteHeadline(const THtmlPage& page, THtmlWriter& out);

void WriteProblems(const THtmlPage& page, THtmlWriter& out);
std::int64_t ProblemCount(const THtmlPage& page);
void WriteTests(const THtmlPage& page, THtmlWriter& out);
void WriteTimeline(const THtmlPage& page, THtmlWriter& out);
bool HasTimeline(const THtmlPage& page);
void WriteResults(const THtmlPage& page, THtmlWriter& out);
std::int64_t ProjectCount(const TRunReport& report); // different ones
void WriteTrends(const THtmlPage& page, THtmlWriter& out);
void WriteStamps(const THtmlPage& page, THtmlWriter& out);
void WriteFacts(const THtmlPage& page, THtmlWriter& out);

} // namespace kx
