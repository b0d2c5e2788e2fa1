// The page of the Build action on which the user says how the folders of web projects are found.
#pragma once

#include "package/buildaction/KxVSDotNetAction.h"
#include "package/pages/PageSupport.h"

namespace kx {

// All values are kept and stay editable whichever way is chosen.
class TVSDotNetWebProjectLocationFrame : public TActionPage<TKxVSDotNetAction> {
public:
  static const TKxPageClass& Class();
  std::u16string PageName() const override { return u"Project Detection"; }
  void InitFrame() override;
};

} // namespace kx
