// Pages over the published properties: their fields name what they show and edit.
#pragma once

#include "contract/Pages.h"

namespace kx {

// Each field shows and edits the property that it names, but for those that are the page's own. They are
// written in their order; a secret when the user gave a new one.
class TKxBoundPage : public TKxPropertyPage {
public:
  void InitPage(TKxPersistent& edited) override { edited_ = &edited; }
  void ReadActionData() override;
  void WriteActionData() override;

protected:
  TKxPersistent& Edited() const { return *edited_; }

  virtual bool WritesUnchanged() const { return true; }

private:
  const TKxPublishedProperty* BoundTo(const TKxPageField& field) const; // null when it is the page's own
  void ReadField(const TKxPageField& field, const TKxPublishedProperty& property);

  TKxPersistent* edited_ = nullptr;
  std::vector<std::u16string> read_; // the value of each of Fields() as ReadActionData found it
};

// A heading, or one property of a page. What is left out follows from the property: True or False is a check
// box, an enumeration a drop-down, a number an integer field, a list of texts a list; a secret is a secret.
struct TKxTableField {
  std::u16string_view Heading = {};
  std::u16string_view Property = {};
  std::u16string_view Label = {};        // where the object's own name for it does not do
  std::u16string_view EnabledBy = {};    // a property further up on the page: a Boolean that is True,
  std::u16string_view EnabledAt = {};    // or an enumeration that has this value
  std::optional<TKxFieldKind> Kind = {}; // of a text: a file, a folder, lines
  std::u16string_view Filter = {};       // of a file
  bool IsSeenFromProject = true;
  std::u16string_view OffersTitle = {};
  std::span<const std::u16string_view> Places = {};
};

// A page laid over the properties: each field's kind comes from the property's, its label and hint from what
// the object tells editors. The general form when no fields are given: every property that is neither hidden
// nor read-only, under the groups that the object names. Fields bear the names of their properties.
class TKxTablePage : public TKxBoundPage {
public:
  explicit TKxTablePage(std::u16string_view pageName, std::span<const TKxTableField> fields = {})
      : pageName_(pageName), layout_(fields) {} // which outlive the page

  std::u16string PageName() const override { return pageName_; }
  void InitFrame() override {}
  void InitPage(TKxPersistent& edited) override; // makes the fields: only the object knows its properties

protected:
  void ApplyEnableRules() override;
  bool WritesUnchanged() const override { return false; } // what a setter makes of a value may differ from it
  // What a drop-down shows for a value of an enumeration: its words apart, without the prefix ("Selected
  // Projects" for btSelectedProjects).
  virtual std::u16string ItemText(const TKxEnumeration& enumeration, std::size_t ordinal) const;

private:
  void AddField(const TKxTableField& row, const TKxPublishedProperty& property);
  void AddGeneralForm();
  bool IsEnabled(const TKxTableField& row) const;
  std::u16string EnablingItem(const TKxTableField& row) const;

  std::u16string pageName_;
  std::span<const TKxTableField> layout_;
};

// The name of a property for people: the object's own alias, else its words apart and in full ("Extra Command
// Line Parameters" for ExtraCmdLineParams).
std::u16string DisplayName(const TKxPersistent& object, std::u16string_view property);
// The help of a property: the object's own, else the table's.
std::u16string PropertyHelp(const TKxPersistent& object, const TKxPublishedProperty& property);

} // namespace kx
