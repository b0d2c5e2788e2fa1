// Property pages as models: no toolkit in them. A design environment draws the fields and calls back.
#pragma once

#include "contract/Actions.h"
#include "contract/PageFields.h"
#include "contract/Services.h"

#include <map>
#include <optional>
#include <span>
#include <vector>

namespace kx {

// The page contract. InitFrame once after creation, InitPage for each action shown (on an options page: for
// the options object), then ReadActionData; the fields are there from InitPage on. OnPageActivate and
// OnPageDeActivate as the user comes and goes; WriteActionData when the user accepts.
//
// The user's doings come in by the name of a field, and the page keeps the enabled state of all its fields
// consistent: after each call the toolkit draws Fields() anew. Names and values that do not fit raise
// EKxException with a text for the user; nothing has changed then.
class TKxPropertyPage {
public:
  virtual ~TKxPropertyPage() = default;
  virtual std::u16string PageName() const = 0;
  virtual void InitFrame() = 0;
  virtual void InitPage(TKxPersistent& edited) = 0; // which outlives its use by the page
  virtual void OnPageActivate() {}
  virtual void OnPageDeActivate() {}
  virtual void ReadActionData() = 0;
  // Raises EKxException with the first field's error, if any field has one; nothing is written then. A secret
  // is written only when the user gave a new one.
  virtual void WriteActionData() = 0;

  std::span<const TKxPageField> Fields() const { return fields_; } // in drawing order
  const TKxPageField& Field(std::u16string_view name) const;

  // The user typed, picked or clicked: see TKxPageField::Value. A number that is none is kept as typed, with
  // an error beside it. Checking a choice unchecks the others of its group.
  void SetValue(std::u16string_view name, std::u16string_view value);
  void Click(std::u16string_view name, TKxButtonKind button);
  // What could stand in the field, looked up now: it may read files, and go on until `stop` is raised.
  virtual TKxFieldOffers Offers(std::u16string_view name, const TKxEvent* stop = nullptr);

protected:
  void Add(TKxPageField field); // unchecked, empty, with the button of its chooser
  void RemoveFields();
  void AddHeading(std::u16string_view text) {
    Add({.Kind = TKxFieldKind::Heading, .Label = std::u16string(text)});
  }

  // For ReadActionData and the enable rules: no rules run, no secret counts as changed.
  void Show(std::u16string_view name, std::u16string_view value);
  void Check(std::u16string_view name, bool checked = true);
  void ShowSecret(std::u16string_view name, bool isSet);
  void Enable(std::u16string_view name, bool enabled) { Find(name).Enabled = enabled; }
  void SetItems(std::u16string_view name, std::vector<std::u16string> items) {
    Find(name).Items = std::move(items);
  }

  // For WriteActionData.
  void RequireNoErrors() const;
  const std::u16string& Value(std::u16string_view name) const { return Field(name).Value; }
  bool IsChecked(std::u16string_view name) const { return Field(name).IsChecked(); }
  std::int32_t Number(std::u16string_view name) const; // of a field without an error
  // What the user typed into a secret, once; nothing when it was left alone.
  std::optional<std::u16string> TakeNewSecret(std::u16string_view name);

  // Called after each doing of the user.
  virtual void ApplyEnableRules() {}
  virtual void Accept(std::u16string_view /*name*/) {}

private:
  TKxPageField& Find(std::u16string_view name);
  void Assign(TKxPageField& field, std::u16string_view value);
  void Browse(TKxPageField& field);
  std::u16string Caption(const TKxPageField& field) const;

  std::vector<TKxPageField> fields_;
  // What was typed stays out of the fields, which everybody may read.
  std::map<std::u16string, std::u16string, std::less<>> newSecrets_;
};

// The editor of a property that only sums up what the action's own pages edit: it opens the first of them.
struct TShowActionPropertiesEditor {
  static std::u16string_view GetPage() { return {}; }
  static const TKxPropertyEditorClass& Class();
};

// Choosers of the design service. True when the user chose; `path` is where to start, then the choice.
bool KxBrowseForDirectory(std::u16string_view title, std::u16string& path);
bool KxBrowseForFile(std::u16string_view title, std::u16string& path, std::u16string_view filter,
                     std::u16string_view extension = {});
// For who implements them: the file that was chosen, with the extension when it has none and is not there
// without. Raises EKxException for a folder. Looks at the disk.
std::u16string KxChosenFile(std::u16string path, std::u16string_view extension);
void ShowMessage(std::u16string_view text);

} // namespace kx
