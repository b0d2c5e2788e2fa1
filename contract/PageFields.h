// What a property page shows, without any toolkit: the fields in drawing order, each described once.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kx {

// A heading and a note only show their label. Of the choices of one group at most one is checked. A list is
// text of several lines, one entry a line. Paths are text with a chooser. A drop-down takes only its items. A
// secret is shown masked.
enum class TKxFieldKind {
  Heading,
  Note,
  Choice,
  CheckBox,
  Text,
  Secret,
  Integer,
  List,
  FilePath,
  FolderPath,
  DropDown
};

// Browse opens the chooser and puts what it gave into the field; Accept does what the page does with a typed
// text; Custom is for the toolkit alone.
enum class TKxButtonKind { Browse, Accept, Custom };

struct TKxFieldButton {
  TKxButtonKind Kind = TKxButtonKind::Browse;
  std::u16string Hint;
};

struct TKxPageField {
  // The description; fixed once the page has its InitPage behind it.
  std::u16string Name = {}; // of the field in its page, letter case counts; headings and notes have none
  TKxFieldKind Kind = TKxFieldKind::Text;
  std::u16string Label = {};    // may be empty: then the field stands under the one before it
  std::u16string Property = {}; // the published property that it edits; empty when there is none of this name
  std::u16string Means = {}; // of a choice or check box: the property's value when it is checked; empty: True
  bool IsOwn = false;        // the page itself shows and writes it, not TKxBoundPage
  std::u16string Group = {};
  std::u16string Hint = {};
  std::u16string Needs = {};                    // what has to be chosen elsewhere before the field is enabled
  std::vector<std::u16string_view> Places = {}; // further names by which validation speaks of the field
  std::u16string Title = {};                    // of the chooser
  std::u16string Filter = {};                   // "Text|*.a;*.b|Text|*.*": what is shown, then the patterns
  std::u16string DefaultExtension = {};         // of a chosen file that has none
  std::vector<TKxFieldButton> Buttons = {};
  bool IsSeenFromProject = true;   // a relative path means the project's folder; else that of a tool
  bool TakesNewItems = false;      // a drop-down of names: the user may make a new one
  std::u16string OffersTitle = {}; // what TKxPropertyPage::Offers knows for the field; empty: nothing

  // The state, as the user sees it.
  // Choices and check boxes: "True" or "False". Integers: decimal, or what the user typed. Lists: lines, each
  // ended by CR LF. Drop-downs: the item, or empty when none is selected. Secrets: always empty.
  std::u16string Value = {};
  bool Enabled = true;
  std::vector<std::u16string> Items = {}; // of a drop-down
  bool IsSet = false;                     // a secret is there
  bool IsChanged = false;                 // the user gave a new secret, which WriteActionData will store
  std::u16string Error = {};              // why the value cannot be accepted

  bool IsChecked() const { return Value == u"True"; }
};

// One thing that could stand in a field.
struct TKxFieldOffer {
  std::u16string Value; // what to put into the field, or the line to add to a list
  std::u16string Label;
  bool Chosen = false;                      // the field's present value means it
  std::vector<std::u16string> Lines = {};   // those of a list that mean it
  std::vector<std::u16string> Cells = {};   // what it has for each of the columns; may be empty
  std::vector<std::u16string> Folders = {}; // in which it is shown, the outermost first
};

struct TKxFieldOffers {
  std::vector<TKxFieldOffer> Items;
  std::u16string Error;                    // why there are none, or why none is chosen
  std::vector<TKxFieldOffer> Columns = {}; // of a table of the items; chosen ones are what will be taken
};

} // namespace kx
