// The pages of the Build action, and of the options behind it, that lay out published properties.
#pragma once

#include "contract/TablePage.h"

namespace kx {

// Names the generations of Visual Studio and of the .NET Framework as people do.
class TVSDotNetTablePage : public TKxTablePage {
public:
  using TKxTablePage::TKxTablePage;

protected:
  std::u16string ItemText(const TKxEnumeration& enumeration, std::size_t ordinal) const override;
};

// Offers what the solution holds, and the property sets of the project. The solution is the stored one but on
// the page that edits it: there the one shown.
class TVSDotNetActionPage : public TVSDotNetTablePage {
public:
  using TVSDotNetTablePage::TVSDotNetTablePage;
  TKxFieldOffers Offers(std::u16string_view name, const TKxEvent* stop = nullptr) override;

private:
  TKxFieldOffers OfferOf(const TKxPageField& field, const TKxEvent* stop);
};

class TVSDotNetProjectFrame : public TVSDotNetActionPage {
public:
  static const TKxPageClass& Class();
  TVSDotNetProjectFrame();
};

class TVSDotNetPathsFrame : public TVSDotNetActionPage {
public:
  static const TKxPageClass& Class();
  TVSDotNetPathsFrame();
};

class TVSDotNetBuildFrame : public TVSDotNetActionPage {
public:
  static const TKxPageClass& Class();
  TVSDotNetBuildFrame();
};

class TVSDotNetAssemblyFrame : public TVSDotNetActionPage {
public:
  static const TKxPageClass& Class();
  TVSDotNetAssemblyFrame();
};

class TVC7VersionInfoFrame : public TVSDotNetActionPage {
public:
  static const TKxPageClass& Class();
  TVC7VersionInfoFrame();
};

class TVSDotNetOptionsFrame : public TVSDotNetTablePage {
public:
  static const TKxPageClass& Class();
  TVSDotNetOptionsFrame();
};

} // namespace kx
