// The page of the loop over the projects of a solution.
#pragma once

#include "package/iterator/KxVSDotNetSolutionIterator.h"
#include "package/pages/PageSupport.h"

namespace kx {

// The page speaks of projects found on disk, the property of those not found. A loop variable that the
// project does not have is not shown, and is lost when the user accepts.
class TSolutionIteratorFrame : public TActionPage<TKxVSSolutionIterator> {
public:
  static const TKxPageClass& Class();
  std::u16string PageName() const override { return u"Solution Iterator"; }
  void InitFrame() override;
  void InitPage(TKxPersistent& edited) override;
  void ReadActionData() override;
  void WriteActionData() override;
};

} // namespace kx
