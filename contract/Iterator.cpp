#include "contract/Iterator.h"

#include "foundation/text/Text.h"

#include <algorithm>

namespace kx {

namespace {

bool IsNameCharacter(char16_t c) {
  // From U+00C0 on scripts of letters begin.
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || text::IsDigit(c) || c == u'_' || c == u'.' ||
         c >= 0xC0;
}

} // namespace

bool IsVariableName(std::u16string_view name) {
  return !name.empty() && std::ranges::all_of(name, IsNameCharacter);
}

bool TKxBaseIterator::Execute() {
  // A loop that is left by an exception, too, stands on no pass afterwards.
  struct TLeave {
    int& Current;
    ~TLeave() { Current = 0; }
  } const leave{current_};
  count_ = 0;
  if (!BeforeFirstIteration()) return false;
  if (count_ == 0) ReportBreach(KxVerdictRules::EmptyLoop, GetEmptyMessage());
  if (onlyPass_ > count_) {
    SendMessage(u"There is no pass " + text::FromInteger(onlyPass_) + u" any more: the loop has " +
                    text::FromInteger(count_) + u".",
                TStatusTag::stError);
    return false;
  }
  const int last = onlyPass_ > 0 ? onlyPass_ : count_;
  bool succeeded = true;
  for (current_ = std::max(onlyPass_, 1); succeeded && current_ <= last; ++current_) {
    if (!loopVariable_.empty()) Host().SetVariable(loopVariable_, GetCurrentValue());
    succeeded = !Host().Stop().IsRaised() && Host().RunChildren(*this);
  }
  return succeeded;
}

void TKxBaseIterator::LookAhead(IKxActionValidationError& errors) {
  if (!loopVariable_.empty() && !IsVariableName(loopVariable_))
    errors.Add(u"Loop Variable", u"No text can refer to \"" + loopVariable_ +
                                     u"\": the name of a variable holds only letters, digits, \"_\" and "
                                     u"\".\".");
}

} // namespace kx
