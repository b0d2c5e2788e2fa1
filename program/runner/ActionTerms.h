// How the actions of a project are run, beside what they do: what they need, when, how often and how long.
#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

using TNeededNames = std::vector<std::u16string>; // of actions and groups

// Actions of the outermost level that stand together in the file and have a name in common.
struct TActionGroup {
  std::u16string Name;
  std::optional<TNeededNames> Needs; // nothing: what stands before the group
  int Line = 0;                      // in the file
};

struct TActionTerms {
  std::optional<TNeededNames> Needs = {}; // nothing: the action before it
  std::u16string Condition = {};          // empty: always
  int Retries = 0;                        // further attempts behind a failed one
  std::chrono::seconds TimeLimit{0};      // of an attempt; 0: none
  std::chrono::seconds IdleLimit{0};      // without a word of it; 0: none
  bool IsParallel = false;                // a loop: its passes may run at the same time
};

// "A, B" as a file has it.
TNeededNames ReadNeeds(std::u16string_view text);
std::u16string NeedsText(const TNeededNames& needs);
std::u16string LimitText(std::chrono::seconds limit); // "90s", "30m", "2h"

// An attribute of <Action> that says one of the terms.
struct TTermAttribute {
  std::u16string_view Name; // "TimeLimit"
  std::u16string_view Help; // a sentence
  std::string_view Schema;  // its type in the schema of project files
  bool IsOutermostOnly;     // it has no meaning inside a loop
  bool IsOfLoopsOnly;
  std::optional<std::u16string> (*Text)(const TActionTerms& terms); // nothing: the file need not say it
  // Raises EKxException, which says what the attribute takes.
  void (*Read)(TActionTerms& terms, std::u16string_view text);
};

std::span<const TTermAttribute> TermAttributes();                  // in the order in which they are written
const TTermAttribute* FindTermAttribute(std::u16string_view name); // letter case counts; null: there is none

} // namespace kx
