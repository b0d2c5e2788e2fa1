#include "program/cli/Completion.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/check/CheckRule.h"
#include "program/check/SolutionFacts.h"
#include "program/cli/HostSession.h"
#include "program/cli/ProjectArgument.h"
#include "program/cli/Usage.h"
#include "program/runner/KnownOptions.h"
#include "program/runner/ProjectFile.h"
#include "program/runner/Run.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>

namespace kx::cli {

namespace {

using TCandidates = std::vector<TCandidate>;
using TWords = std::span<const std::u16string>;

std::u16string Wide(const std::string& utf8) {
  return text::FromUtf8(utf8);
}

bool TakesValue(const CLI::Option& option) {
  return option.get_expected_max() > 0;
}

class TCompleter {
public:
  TCompleter(CLI::App& app, TWords words, const TCommonOptions& common)
      : app_(app), words_(words), common_(common) {
    FindPlaces();
  }

  TCompletion Complete() {
    if (words_.back().starts_with(u'-')) {
      CompleteOption();
    } else if (valued_ != nullptr) {
      CompleteValue(*valued_, u"");
    } else if (command_ == nullptr) {
      OfferWords(app_);
    } else {
      CompletePlace();
    }
    return std::move(found_);
  }

private:
  // Which command, which words are its own, and whether the last is an option's value.
  void FindPlaces() {
    for (const auto& word : words_.first(words_.size() - 1)) {
      if (valued_ != nullptr) {
        valued_ = nullptr;
      } else if (word.starts_with(u'-')) {
        if (word.find(u'=') != word.npos) continue;
        CLI::Option* option = FindOption(word);
        if (option != nullptr && TakesValue(*option)) valued_ = option;
      } else if (command_ == nullptr) {
        command_ = CommandOf(text::ToUtf8(word));
      } else {
        places_.push_back(word);
      }
    }
  }

  CLI::App* CommandOf(const std::string& name) const {
    const auto commands = app_.get_subcommands({});
    const auto found = std::ranges::find(commands, name, [](const CLI::App* app) { return app->get_name(); });
    return found == commands.end() ? nullptr : *found;
  }

  CLI::Option* FindOption(std::u16string_view name) const {
    const std::string utf8 = text::ToUtf8(name);
    CLI::Option* option = command_ == nullptr ? nullptr : command_->get_option_no_throw(utf8);
    return option != nullptr ? option : app_.get_option_no_throw(utf8);
  }

  // What fits the last word.
  void Offer(TCandidate candidate) {
    if (text::StartsWithIgnoreCase(candidate.Word, words_.back()))
      found_.Candidates.push_back(std::move(candidate));
  }

  void CompleteOption() {
    const std::u16string& word = words_.back();
    const std::size_t equals = word.find(u'=');
    if (equals != word.npos) {
      CLI::Option* option = FindOption(word.substr(0, equals));
      if (option != nullptr) CompleteValue(*option, word.substr(0, equals + 1));
      return;
    }
    if (command_ != nullptr) OfferOptions(command_->get_options());
    std::vector<CLI::Option*> common;
    for (CLI::Option* option : app_.get_options())
      if (command_ == nullptr || IsCommonOptionOf(option->get_name(), command_->get_name()))
        common.push_back(option);
    OfferOptions(common);
  }

  void OfferOptions(const std::vector<CLI::Option*>& options) {
    for (const CLI::Option* option : options)
      for (const std::string& name : option->get_lnames())
        Offer({u"--" + Wide(name), Wide(option->get_description())});
  }

  // `front` is what of the last word stands in front of the value.
  void CompleteValue(CLI::Option& option, const std::u16string& front) {
    const std::string name = option.get_name();
    OfferChoicesOf(option, front);
    if (name == "--rule") {
      OfferRules(front);
    } else if (name == "--configuration" || name == "--around") {
      for (const auto& place : places_)
        OfferOfSolution(place, name == "--around", front);
    } else if (name == "--option") {
      OfferKeys(front, u"=");
    }
    found_.TakesFiles = option.get_type_name().starts_with("FILE");
  }

  void OfferRules(const std::u16string& front) {
    if (command_->get_name() == "check") {
      for (const auto& rule : check::CheckRules())
        Offer({front + std::u16string(rule.Name) + u"=", std::u16string(rule.Summary)});
    } else {
      for (const auto& rule : VerdictRules())
        Offer({front + std::u16string(rule.Name) + u"=", std::u16string(rule.Help)});
    }
  }

  void OfferOfSolution(const std::u16string& file, bool projects, const std::u16string& front) {
    if (!text::EndsWithIgnoreCase(file, u".sln")) return;
    const auto facts = check::ReadSolutionFacts(text::ExpandPath(file, platform::CurrentDirectory()));
    if (projects) {
      for (const auto& project : facts.Projects)
        if (!project.IsFolder()) Offer({front + project.Name, project.Path});
    } else {
      for (const auto& configuration : facts.Configurations)
        Offer({front + configuration.Text});
    }
  }

  // A word that is no option, by the command that it belongs to.
  void CompletePlace() {
    struct TPlace {
      std::string_view Command;
      void (TCompleter::*Offer)();
    };
    constexpr std::array places{
        TPlace{"do", &TCompleter::OfferDo},           TPlace{"actions", &TCompleter::OfferAction},
        TPlace{"explain", &TCompleter::OfferExplain}, TPlace{"options", &TCompleter::OfferOptionsStore},
        TPlace{"run", &TCompleter::OfferNames},       TPlace{"plan", &TCompleter::OfferNames}};
    const auto place = std::ranges::find(places, command_->get_name(), &TPlace::Command);
    if (place == places.end()) {
      OfferPlace();
    } else {
      (this->*place->Offer)();
    }
  }

  void OfferWords(const CLI::App& app) {
    for (const CLI::App* word : app.get_subcommands({}))
      Offer({Wide(word->get_name()), Wide(word->get_description())});
  }

  // Files, unless the command takes nothing but certain words here.
  void OfferPlace() {
    if (places_.empty()) OfferWords(*command_);
    const auto positional =
        command_->get_options([](const CLI::Option* option) { return option->get_positional(); });
    found_.TakesFiles =
        places_.size() >= positional.size() || !OfferChoicesOf(*positional[places_.size()], u"");
  }

  // Whether there are any.
  bool OfferChoicesOf(CLI::Option& option, const std::u16string& front) {
    const auto choices = ChoicesOf(option);
    for (const auto& choice : choices)
      Offer({front + choice});
    return !choices.empty();
  }

  // The project's file stands first, or is the only one of the folder.
  void OfferNames() {
    found_.TakesFiles = places_.empty();
    TProjectSelection selection;
    if (!places_.empty()) selection.File = text::ToUtf8(places_.front());
    try {
      OfferNamesOf(RequireProject(selection));
    } catch (const EKxException&) { // files are offered all the same
    }
  }

  void OfferNamesOf(const std::u16string& file) {
    TProjectRunner runner(Session().Services(), Session().Stop(), {{}, Session().KeyFile()});
    TProjectFile(runner.Project()).Load(text::ExpandPath(file, platform::CurrentDirectory()));
    const TActionGroup* group = nullptr;
    for (const auto& node : runner.Project().Actions()) {
      if (node->Group() != nullptr && node->Group() != group) Offer({node->Group()->Name, u"group"});
      group = node->Group();
      Offer({node->DisplayName(), node->Type().Identifier});
    }
  }

  void OfferAction() {
    if (!places_.empty()) return;
    for (const auto& type : Session().Services().Actions())
      Offer({type.Identifier, type.Category});
  }

  void OfferExplain() {
    if (!places_.empty()) return;
    for (const auto& rule : check::CheckRules())
      Offer({std::u16string(rule.Name), std::u16string(rule.Summary)});
  }

  void OfferOptionsStore() {
    if (places_.empty()) {
      OfferWords(*command_);
    } else if (places_.size() == 1) {
      OfferKeys(u"", u"");
    } else {
      found_.TakesFiles = true;
    }
  }

  void OfferKeys(const std::u16string& front, std::u16string_view behind) {
    for (const auto& option : KnownOptions(Session().Services()))
      Offer({front + option.Name.Section + u"." + option.Name.Key + std::u16string(behind)});
  }

  void OfferDo() {
    if (places_.empty()) return OfferAction();
    TProjectRunner runner(Session().Services(), Session().Stop(), {{}, Session().KeyFile()});
    const TActionNode& action = runner.Project().AddAction(places_.front());
    const std::u16string& word = words_.back();
    const std::size_t equals = word.find(u'=');
    if (equals == word.npos) {
      for (const auto* property : action.Properties())
        if (!property->ReadOnly)
          Offer({std::u16string(property->Name) + u"=", std::u16string(property->Help)});
      return;
    }
    if (const auto* property = action.FindProperty(word.substr(0, equals)))
      OfferPropertyValue(*property, word.substr(0, equals + 1));
  }

  void OfferPropertyValue(const TKxPublishedProperty& property, const std::u16string& front) {
    if (property.Enumeration != nullptr) {
      for (const auto value : property.Enumeration->Values)
        Offer({front + std::u16string(value)});
    } else if (property.Kind == TKxPropertyKind::Boolean) {
      for (const std::u16string_view value : {u"True", u"False"})
        Offer({front + std::u16string(value)});
    } else if (property.Name == u"SolutionConfiguration" || property.Name == u"SelectedProjects") {
      constexpr std::u16string_view solution = u"Solution=";
      for (const auto& place : places_)
        if (text::StartsWithIgnoreCase(place, solution))
          OfferOfSolution(place.substr(solution.size()), property.Name == u"SelectedProjects", front);
    } else {
      found_.TakesFiles = true;
    }
  }

  THostSession& Session() {
    if (!session_) session_.emplace(common_);
    return *session_;
  }

  CLI::App& app_;
  TWords words_;
  const TCommonOptions& common_;
  CLI::App* command_ = nullptr;
  CLI::Option* valued_ = nullptr;      // the last word is its value
  std::vector<std::u16string> places_; // of the command, before the last word
  std::optional<THostSession> session_;
  TCompletion found_;
};

} // namespace

TCompletion Complete(CLI::App& app, TWords words, const TCommonOptions& common) {
  try {
    return TCompleter(app, words, common).Complete();
  } catch (const EKxException&) { // nobody reads messages in the middle of a line
    return {};
  }
}

} // namespace kx::cli
