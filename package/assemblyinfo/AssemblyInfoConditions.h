// Conditional compilation in the source of an AssemblyInfo file: #if and its kin.
#pragma once

#include "package/assemblyinfo/AssemblyInfoSource.h"

#include <map>

namespace kx {

// What is known of a condition. The order makes "and" the lesser of two, "or" the greater.
enum class TTruth : std::uint8_t { False, Unknown, True };

// Fed with the directives of one file in their order. Symbols that the file itself defines are known; all
// others may come from the project, so what depends on them is unknown.
class TSourceConditions {
public:
  explicit TSourceConditions(TAssemblyInfoLanguage language) : language_(language) {}

  // A directive without its "#" and without comments. True when it opens, continues or closes a block.
  bool Take(std::u16string_view directive);
  // Whether the code that follows is compiled.
  TTruth Now() const { return blocks_.empty() ? TTruth::True : blocks_.back().Now; }

private:
  struct TBlock {
    TTruth Outer = TTruth::True;  // of the code around the block
    TTruth Taken = TTruth::False; // one of the branches so far was
    TTruth Now = TTruth::True;
  };

  void OpenBlock(TTruth condition);
  void NextBranch(TTruth condition);
  void Define(std::u16string_view rest, bool defined);
  std::u16string Key(std::u16string_view symbol) const;
  TTruth Defined(std::u16string_view symbol) const;
  TTruth Evaluate(std::u16string_view expression) const;

  friend class TConditionReader;

  TAssemblyInfoLanguage language_;
  std::vector<TBlock> blocks_;
  std::map<std::u16string, TTruth> defined_; // that the symbol exists
  std::map<std::u16string, TTruth> values_;  // that its value counts as true
  std::u16string guard_; // the symbol of an #ifndef that was the directive before this one
};

} // namespace kx
