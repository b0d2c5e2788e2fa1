// Edits of a project's text: the first part is the project, then follow edits, each a digit with its
// operands. After each the elements are those that the edit asks for, every other byte stands as it stood,
// and the text is a project.
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "fuzz/ProjectSupport.h"
#include "program/runner/ProjectReader.h"
#include "program/runner/ProjectText.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace kx::fuzz {
namespace {

// What counts of an element: its tag, and its text where it has nothing but that.
struct TNode {
  std::u16string Head;
  std::u16string Name = {}; // the attribute
  std::u16string Text = {};
  std::vector<TNode> Children = {};
  bool operator==(const TNode&) const = default;
};

// Elements that hold others; the blanks between those mean nothing.
constexpr std::array<std::u16string_view, 7> Holders{
    u"BuildProject", u"Variables", u"PropertySets", u"Actions", u"PropertySet", u"Action", u"Group"};

TNode NodeOf(const TProjectElement& element) {
  TNode node{element.Name, element.Attribute(u"Name").value_or(u"")};
  for (const auto& attribute : element.Attributes)
    node.Head += u" " + attribute.Name + u"=" + attribute.Value;
  const bool isHolder = std::ranges::find(Holders, element.Name) != Holders.end();
  if (!isHolder && element.Children.empty()) node.Text = element.Text;
  std::ranges::transform(element.Children, std::back_inserter(node.Children), NodeOf);
  return node;
}

TNode Tree(std::string_view bytes) {
  return NodeOf(ParseProjectXml(bytes, u""));
}

// The rows below a node; made when it has none yet.
std::vector<TNode>& RowsIn(TNode& holder) {
  if (holder.Head.starts_with(u"Group ")) return holder.Children;
  const auto found = std::ranges::find(holder.Children, u"Actions", &TNode::Head);
  if (found != holder.Children.end()) return found->Children;
  return holder.Children.emplace_back(TNode{u"Actions"}).Children;
}

// A place that the product has accepted before.
std::vector<TNode>& ListFor(TNode& root, const TRowPath& path) {
  TNode* holder = &root;
  for (std::size_t i = 0; i + 1 < path.size(); ++i)
    holder = &RowsIn(*holder)[path[i]];
  return RowsIn(*holder);
}

std::ptrdiff_t Offset(std::size_t index, const std::vector<TNode>& list) {
  return static_cast<std::ptrdiff_t>(std::min(index, list.size()));
}

void Insert(TNode& root, const TRowPath& at, TNode node) {
  auto& list = ListFor(root, at);
  list.insert(list.begin() + Offset(at.back(), list), std::move(node));
}

TNode Take(TNode& root, const TRowPath& path) {
  auto& list = ListFor(root, path);
  TNode node = std::move(list.at(path.back()));
  list.erase(list.begin() + Offset(path.back(), list));
  return node;
}

// Where the place is once the action in front of it is gone.
TRowPath Behind(const TRowPath& taken, TRowPath to) {
  const std::size_t depth = taken.size() - 1;
  const bool isShifted =
      to.size() > depth && std::equal(taken.begin(), taken.end() - 1, to.begin()) && to[depth] > taken[depth];
  if (isShifted) --to[depth];
  return to;
}

// The bytes of `before` that are not in `after`.
TByteSpan Changed(std::string_view before, std::string_view after) {
  const std::size_t most = std::min(before.size(), after.size());
  std::size_t start = 0;
  while (start < most && before[start] == after[start])
    ++start;
  std::size_t end = 0;
  while (end < most - start && before[before.size() - 1 - end] == after[after.size() - 1 - end])
    ++end;
  return {start, before.size() - end};
}

std::vector<std::string> Comments(std::string_view bytes) {
  std::vector<std::string> comments;
  for (std::size_t at = bytes.find("<!--"); at != bytes.npos; at = bytes.find("<!--", at + 1))
    comments.emplace_back(bytes.substr(at, bytes.find("-->", at) - at));
  std::ranges::sort(comments);
  return comments;
}

// The tests of bytes look for marks that the text of an element may hold, too.
bool IsPlain(std::string_view bytes) {
  return bytes.find("<![CDATA[") == bytes.npos && bytes.find("<?", 1) == bytes.npos;
}

const TProjectElement* Find(const TProjectElement& root, const TRowPath& path) {
  const TProjectElement* element = &root;
  for (const std::size_t index : path)
    element = &(IsGroup(*element) ? element : ActionsOf(*element))->Children[index];
  return element;
}

class TEdits {
public:
  TEdits(std::string_view bytes, TInput& input) : before_(bytes), text_(before_), input_(input) {}

  // Whether what an edit asks for is a project is its reader's to judge; what is none is given up, as in the
  // editor.
  void Next() {
    try {
      Edit(input_.Below(7));
    } catch (const EKxException&) {
      Require(text_.Bytes() == before_, "what is refused changes nothing");
    }
    if (IsProject(text_.Bytes())) {
      before_ = text_.Bytes();
    } else {
      text_ = TProjectText(before_);
    }
  }

private:
  void Edit(unsigned kind) {
    switch (kind) {
    case 0:
      return Move();
    case 1:
      return Copy();
    case 2:
      return Remove();
    case 3:
      return Attribute();
    case 4:
      return Variable();
    case 5:
      return Set();
    default:
      return Value();
    }
  }

  TRowPath Path() {
    TRowPath path(1 + input_.Below(3));
    for (auto& index : path)
      index = input_.Below(5);
    return path;
  }

  void Move() {
    const TRowPath from = Path();
    const TRowPath to = Path();
    text_.MoveRow(from, to);
    TNode expected = Tree(before_);
    TNode moved = Take(expected, from);
    Insert(expected, Behind(from, to), std::move(moved));
    Require(Tree(text_.Bytes()) == expected, "an action stands where it was moved to");
    if (IsPlain(before_)) Require(Comments(text_.Bytes()) == Comments(before_), "a move keeps the comments");
  }

  void Copy() {
    const TRowPath from = Path();
    const TRowPath to = Path();
    text_.CopyRow(from, to);
    TNode expected = Tree(before_);
    TNode copied = ListFor(expected, from).at(from.back());
    Insert(expected, to, std::move(copied));
    Require(Tree(text_.Bytes()) == expected, "a copy stands where it was put");
  }

  void Remove() {
    const TRowPath path = Path();
    text_.RemoveRow(path);
    TNode expected = Tree(before_);
    Take(expected, path);
    Require(Tree(text_.Bytes()) == expected, "the action is gone and the others are not");
    const TByteSpan gone = Changed(before_, text_.Bytes());
    Require(before_.size() - text_.Bytes().size() == gone.End - gone.Begin, "only bytes of the action go");
    Require(IsProject(text_.Bytes()), "without an action it is still a project");
  }

  void Attribute() {
    const TRowPath path = Path();
    const std::u16string name = input_.Flag() ? u"Name" : u"ContinueOnError";
    const std::u16string value = StorableText(input_.Line());
    const bool isRemoved = value.empty();
    text_.SetAttribute(path, name, isRemoved ? std::nullopt : std::optional<std::u16string_view>(value));
    const TProjectElement now = ParseProjectXml(text_.Bytes(), u"");
    Require(Find(now, path)->Attribute(name) == (isRemoved ? std::nullopt : std::optional(value)),
            "an attribute reads back");
    const TProjectElement was = ParseProjectXml(before_, u"");
    const TProjectElement* element = Find(was, path);
    const std::size_t tagEnd = element->IsSelfClosing ? element->Whole.End : element->Content.Begin;
    const TByteSpan changed = Changed(before_, text_.Bytes());
    const bool isNothing = text_.Bytes() == before_;
    Require(isNothing || (changed.Begin > element->Whole.Begin && changed.End < tagEnd),
            "only the tag changes");
  }

  void Variable() {
    const std::u16string name = StorableText(input_.Line());
    const auto value = OptionalText();
    text_.SetVariable(name, value);
    CheckNamed({u"Variables"}, name, value);
  }

  void Set() {
    const std::u16string name = StorableText(input_.Line());
    if (input_.Flag()) {
      text_.AddPropertySet(name, input_.Flag() ? u"Win32" : u"DotNet");
    } else {
      text_.RemovePropertySet(name);
    }
  }

  void Value() {
    const std::u16string set = StorableText(input_.Line());
    const std::u16string name = StorableText(input_.Line());
    const auto value = OptionalText();
    text_.SetPropertySetValue(set, name, value);
    CheckNamed({u"PropertySets", set}, name, value);
  }

  std::optional<std::u16string> OptionalText() {
    const bool isThere = input_.Flag();
    std::u16string text = StorableText(input_.Line());
    return isThere ? std::optional(std::move(text)) : std::nullopt;
  }

  // The named element below these has the text; the other elements are what they were.
  void CheckNamed(const std::vector<std::u16string>& way, std::u16string_view name,
                  const std::optional<std::u16string>& value) const {
    TNode now = Tree(text_.Bytes());
    TNode was = Tree(before_);
    const auto taken = TakeNamed(now, way, name);
    Require(taken.has_value() == value.has_value(), "a value is there when it was set");
    if (taken) Require(taken->Text == text::ReplaceAll(*value, u"\r\n", u"\n"), "a value reads back");
    static_cast<void>(TakeNamed(was, way, name));
    Require(now == was, "the other elements stay");
  }

  static std::optional<TNode> TakeNamed(TNode& root, const std::vector<std::u16string>& way,
                                        std::u16string_view name) {
    TNode* list = &root;
    for (std::size_t depth = 0; depth < way.size(); ++depth) {
      const auto next = std::ranges::find_if(list->Children, [&](const TNode& child) {
        return depth == 0 ? child.Head == way[depth] : IsNamed(child, way[depth]);
      });
      if (next == list->Children.end()) {
        if (depth == 0) list->Children.insert(list->Children.begin(), {way[depth]}); // made when first needed
        return std::nullopt;
      }
      list = &*next;
    }
    const auto found =
        std::ranges::find_if(list->Children, [name](const TNode& child) { return IsNamed(child, name); });
    if (found == list->Children.end()) return std::nullopt;
    TNode node = *found;
    list->Children.erase(found);
    return node;
  }

  static bool IsNamed(const TNode& node, std::u16string_view name) {
    return text::EqualsIgnoreCase(node.Name, name);
  }

  std::string before_;
  TProjectText text_;
  TInput& input_;
};

void Check(std::string_view bytes) {
  TInput input(bytes);
  const std::string_view project = input.Part();
  if (!IsProject(project)) return;
  TEdits edits(project, input);
  for (int i = 0; i < 20 && !input.IsEmpty(); ++i)
    edits.Next();
}

const TRegistration registration({"project_text", Check});

} // namespace
} // namespace kx::fuzz
