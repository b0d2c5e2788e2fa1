#include "program/editor/EditorSession.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/editor/HostOptionsPage.h"
#include "program/editor/ProjectPaths.h"
#include "program/editor/SessionArguments.h"

#include <algorithm>

namespace kx::editor {

namespace {

constexpr std::string_view OptionsId = "options";

// As the project file says it; empty for what need not be said.
const char* ContinueOnErrorText(TOnFailure onFailure) {
  switch (onFailure) {
  case TOnFailure::Continue:
    return "true";
  case TOnFailure::Ignore:
    return "ignore";
  case TOnFailure::Stop:
    break;
  }
  return "";
}

// What a page shows but could not write, because a field beside it has an error.
void ShowUnwritten(const TKxPropertyPage& shown, TKxPropertyPage& page) {
  for (const auto& field : shown.Fields()) {
    if (field.Name.empty() || !field.Enabled || !field.Error.empty() || field.Kind == TKxFieldKind::Secret)
      continue;
    const TKxPageField& own = page.Field(field.Name);
    if (own.Enabled && own.Value != field.Value) page.SetValue(field.Name, field.Value);
  }
}

} // namespace

TJson TEditorSession::Action(const TJson& arguments) {
  project_.Accept();
  if (TextOf(arguments, "id") != text::FromAscii(OptionsId)) {
    TActionNode& node = project_.NodeAt(PathOf(arguments));
    project_.ReadAgain(node);
  }
  return PagesJson(arguments);
}

// Those of the packages and, behind them, the host's own.
TPages& TEditorSession::OptionsPages() {
  if (!optionsPages_.empty()) return optionsPages_;
  for (const auto& row : services_.Options()) {
    if (row.Page == nullptr) continue;
    auto& page = optionsPages_.emplace_back(row.Page->Create());
    page->InitFrame();
    page->InitPage(*row.Object);
  }
  optionsPages_.push_back(std::make_unique<THostOptionsPage>(services_));
  optionsPages_.back()->InitFrame();
  for (const auto& page : optionsPages_)
    page->ReadActionData();
  return optionsPages_;
}

TKxPropertyPage& TEditorSession::OptionsPage(std::size_t index) {
  auto& pages = OptionsPages();
  if (index >= pages.size()) throw EKxException(u"There is no such page of options.");
  return *pages[index];
}

TKxPropertyPage& TEditorSession::PageOf(const TJson& arguments) {
  const std::size_t index = IndexOf(arguments, "page");
  if (TextOf(arguments, "id") == text::FromAscii(OptionsId)) return OptionsPage(index);
  auto& pages = project_.PagesOf(project_.NodeAt(PathOf(arguments)));
  if (index >= pages.size()) throw EKxException(u"The action has no such page.");
  return *pages[index];
}

TJson TEditorSession::PagesJson(const TJson& arguments) {
  TJson pages = TJson::array();
  if (TextOf(arguments, "id") == text::FromAscii(OptionsId)) {
    for (const auto& page : OptionsPages())
      pages.push_back(PageJson(*page));
    return {{"id", OptionsId}, {"pages", pages}};
  }
  TActionNode& node = project_.NodeAt(PathOf(arguments));
  for (const auto& page : project_.PagesOf(node))
    pages.push_back(PageJson(*page));
  AddDefaults(pages, project_.PagesOfNew(node));
  TellApart(pages);
  TJson answer = {{"id", PathText(project_.PathOf(node))},
                  {"name", text::ToUtf8(node.Name())},
                  {"typeName", text::ToUtf8(node.Action().GetActionName())},
                  {"continueOnError", ContinueOnErrorText(node.OnFailure())},
                  {"terms", TermsJson(node, PathOf(arguments).size() == 1)},
                  {"pages", pages}};
  // The pages of a loop say which variable it sets; the form of a table without pages cannot.
  if (node.Iterator() != nullptr && pages.size() == 1)
    answer["loopVariable"] = text::ToUtf8(node.Iterator()->GetLoopVariable());
  return answer;
}

void TEditorSession::EditPage(const TJson& arguments, const std::function<void(TKxPropertyPage&)>& change) {
  if (TextOf(arguments, "id") == text::FromAscii(OptionsId)) {
    EditOptions(OptionsPage(IndexOf(arguments, "page")), change);
    return;
  }
  project_.EditPage(project_.NodeAt(PathOf(arguments)), IndexOf(arguments, "page"),
                    TextOf(arguments, "field"), change);
}

// Nobody reads an option while it changes. Who only looks for something is sent away: the page asks again.
void TEditorSession::EditOptions(TKxPropertyPage& page, const std::function<void(TKxPropertyPage&)>& change) {
  StopAsides();
  auto alone = std::make_shared<std::unique_lock<std::shared_timed_mutex>>(optionsMutex_, ShortWait);
  if (!alone->owns_lock())
    throw EKxException(
        u"Something is still being looked for, or options are being saved. Nothing was changed; "
        u"try it again in a moment.");
  change(page);
  if (std::ranges::any_of(page.Fields(), [](const auto& field) { return !field.Error.empty(); })) return;
  page.WriteActionData();
  aside_ = [this, alone] {
    const auto saved = services_.SaveOptions();
    if (!saved) throw EKxException(saved.Message());
    return TJson::object();
  };
}

TJson TEditorSession::Set(const TJson& arguments) {
  const std::u16string name = TextOf(arguments, "field");
  const std::u16string value = TextOf(arguments, "value");
  EditPage(arguments, [&](TKxPropertyPage& page) {
    if (page.Field(name).TakesNewItems && !value.empty() && !IsVariableName(value))
      throw EKxException(u"\"" + value +
                         u"\" cannot be the name of a variable: letters, digits, \"_\" and \".\" can.");
    page.SetValue(name, value);
  });
  return PagesJson(arguments);
}

// What the chooser gave, as the page shall see it: a full path, or a text that only a run turns into one.
std::u16string TEditorSession::FullChoice(std::u16string_view choice) const {
  if (!text::IsAbsolutePath(choice) && HasReferences(choice)) return std::u16string(choice);
  return text::ExpandPath(choice, project_.Project().Directory());
}

// The chooser has been shown already. What it gave is looked at before, away from the lock.
TJson TEditorSession::Click(const TJson& arguments) {
  const auto choice = OptionalText(arguments, "choice");
  if (!choice) return ClickWith(arguments, std::nullopt);
  const TKxPageField& field = PageOf(arguments).Field(TextOf(arguments, "field"));
  auto path = std::make_shared<std::u16string>(FullChoice(*choice));
  const bool asksForFile = field.Kind == TKxFieldKind::FilePath &&
                           ParseButton(text::ToUtf8(TextOf(arguments, "button"))) == TKxButtonKind::Browse;
  if (!asksForFile) return ClickWith(arguments, *path);
  aside_ = [path, extension = field.DefaultExtension] {
    *path = KxChosenFile(*path, extension);
    return TJson::object();
  };
  then_ = [this, arguments, path] { return ClickWith(arguments, *path); };
  return TJson::object();
}

TJson TEditorSession::ClickWith(const TJson& arguments, const std::optional<std::u16string>& choice) {
  const TKxButtonKind button = ParseButton(text::ToUtf8(TextOf(arguments, "button")));
  const std::u16string name = TextOf(arguments, "field");
  const bool isProjects = TextOf(arguments, "id") != text::FromAscii(OptionsId);
  EditPage(arguments, [&](TKxPropertyPage& page) {
    design_.Choice = choice;
    page.Click(name, button);
    const TKxPageField& field = page.Field(name);
    if (choice && isProjects && text::IsAbsolutePath(field.Value))
      page.SetValue(name,
                    PathForProject(field.Value, project_.Project().Directory(), field.IsSeenFromProject));
  });
  design_.Choice.reset();
  return PagesJson(arguments);
}

TJson TEditorSession::Offers(const TJson& arguments) {
  const std::u16string field = TextOf(arguments, "field");
  const TKxPropertyPage& shown = PageOf(arguments);
  if (TextOf(arguments, "id") == text::FromAscii(OptionsId)) return OffersJson({});
  std::shared_ptr<TEditedProject> copy = project_.Copy(*stop_);
  TKxPropertyPage& page = *copy->PagesOf(copy->NodeAt(PathOf(arguments)))[IndexOf(arguments, "page")];
  ShowUnwritten(shown, page);
  aside_ = [this, copy, &page, field, stop = stop_] {
    const std::shared_lock reading(optionsMutex_);
    return OffersJson(page.Offers(field, stop));
  };
  return TJson::object();
}

} // namespace kx::editor
