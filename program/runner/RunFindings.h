// The findings of a run while it is under way.
#pragma once

#include "contract/Actions.h"
#include "program/findings/FindingList.h"
#include "program/findings/ToolFindings.h"
#include "program/runner/TestSuites.h"

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace kx {

// `here` is a finding that knows the action and the configuration that are under way.
class TRunFindings {
public:
  void WhenChanged(TFindingList::TOnChange onChange) { List().WhenChanged(std::move(onChange)); }
  void BeginAction();
  void EndAction();
  void BeginTool() { lists_.back().Tool.BeginTool(); } // another output begins
  // What the innermost action finds is kept apart until its attempt ends, and forgotten when it does not
  // count.
  void BeginAttempt() { lists_.emplace_back(); }
  void EndAttempt(bool counts);

  // `complete` sets action and configuration in the finding that a line is: nearly all are none.
  void TakeToolLine(std::u16string_view line, const std::function<void(TFinding&)>& complete);
  // What the action or the host says itself: warnings, and errors where neither a tool nor a test of the
  // action has one, since they speak of the same failure then ("returned Error code : 1").
  void TakeOwn(std::u16string_view text, TStatusTag status, TFinding here);
  // Why the innermost action was ended: whatever else it has, that is what its failure comes from.
  void TakeLimit(std::u16string_view text, TFinding here);
  void TakeFailedTest(const TReportedTest& test, TFinding here);
  void Add(TFinding finding);

  std::vector<TFinding> Take() { return List().Take(); }
  std::int64_t More() const { return lists_.back().List->More(); }

private:
  struct TLevel { // an action that is under way
    std::vector<TFinding> OwnErrors = {};
    bool HasErrors = false; // here or deeper
  };

  struct TList {
    std::unique_ptr<TFindingList> List = std::make_unique<TFindingList>();
    TToolFindings Tool{*List};
  };
  void AddOwnErrors(); // of the innermost action, unless others tell of the same failure
  TFindingList& List() { return *lists_.back().List; }

  std::vector<TList> lists_ = std::vector<TList>(1); // of the run, then of attempts that may not count
  std::vector<TLevel> open_;                         // the innermost last
};

// "   at App.Test() in C:\\App\\Test.cs:line 12": the first place that a stack trace names.
TFindingPlace PlaceOfTrace(std::u16string_view stackTrace);

// What the rules of findings mean that a run makes itself; empty for the codes of tools.
std::u16string_view ExplainRunRule(std::u16string_view rule);

} // namespace kx
