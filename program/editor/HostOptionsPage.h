// The options page of what no package has options for: the host's own keys of the options store.
#pragma once

#include "contract/Pages.h"
#include "program/runner/KnownOptions.h"

#include <vector>

namespace kx::editor {

// Reads and writes the store itself; an empty field takes its key out. Writing raises EKxException for a
// place that is none.
class THostOptionsPage : public TKxPropertyPage {
public:
  explicit THostOptionsPage(TServiceRegistry& services); // which outlives the page
  std::u16string PageName() const override { return u"kxhost"; }
  void InitFrame() override;
  void InitPage(TKxPersistent& /*edited*/) override {} // there is no object
  void ReadActionData() override;
  void WriteActionData() override;

private:
  TOptionsStore& store_;
  std::vector<TKnownOption> options_;
};

} // namespace kx::editor
