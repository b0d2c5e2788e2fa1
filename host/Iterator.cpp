#include "host/Iterator.h"

namespace kx {

bool TKxBaseIterator::Execute() {
  count_ = 0;
  if (!BeforeFirstIteration()) return false;
  bool succeeded = true;
  for (current_ = 1; succeeded && current_ <= count_; ++current_) {
    if (!loopVariable_.empty()) Host().SetVariable(loopVariable_, GetCurrentValue());
    succeeded = !Host().Stop().IsRaised() && Host().RunChildren(*this);
  }
  current_ = 0;
  return succeeded;
}

} // namespace kx
