// Plans as files of ninja.
#include "foundation/platform/System.h"
#include "foundation/text/Encoding.h"
#include "program/plan/PlanFormats.h"

namespace kx {

namespace {

// How this system's shell leaves stamps. What may fail is an edge of its own that always succeeds and says
// how it ended; another one behind it fails in its place, so that only those wait for it that need its
// success.
struct TShellRules {
  const char16_t* Folder; // of the stamps, with its separator
  const char* Part;
  const char* Ending;
  const char* Verdict;
};

TShellRules RulesHere() {
  if (platform::IsWindows())
    return {u"kx-run\\", R"~(cmd /s /c "$line && type nul > "$out"")~",
            R"~(cmd /s /c "$line && (echo 0 > "$out") || (echo 1 > "$out")")~",
            R"~(cmd /s /c "findstr /b 0 "$in" > nul && type nul > "$out" || (del "$in" & exit 1)")~"};
  return {u"kx-run/", "$line && touch $out", "if $line; then echo 0 > $out; else echo 1 > $out; fi",
          "grep -q 0 $in && touch $out || { rm -f $in; exit 1; }"};
}

std::string Value(std::u16string_view text) {
  return text::ToUtf8(text::ReplaceAll(text, u"$", u"$$"));
}

class TNinjaFile {
public:
  TNinjaFile(const TPlan& plan, const TRunWords& words, const TPlanPut& put)
      : plan_(plan), words_(words), put_(put), names_(NarrowNames(plan)) {}

  void Write() {
    put_("# One run of " + text::ToUtf8(plan_.Name) +
         ". What has succeeded has a stamp and is not run again; "
         "\"ninja -t clean\" begins anew.\n"
         "# The logs are for \"kxhost report kx-run/*.jsonl --parts " +
         std::to_string(plan_.Parts.size()) + "\".\n\n");
    PutRule("part", rules_.Part);
    PutRule("ending", rules_.Ending);
    PutRule("verdict", rules_.Verdict);
    const std::vector<bool> endings = Endings();
    for (std::size_t i = 0; i < plan_.Parts.size(); ++i)
      PutPart(i, endings[i]);
  }

private:
  void PutRule(const char* name, const char* command) {
    put_(std::string("rule ") + name + "\n  command = " + command + "\n  description = $part\n\n");
  }

  // Those for whose end, however it is, others wait.
  std::vector<bool> Endings() const {
    std::vector<bool> endings(plan_.Parts.size());
    for (const TPart& part : plan_.Parts)
      for (const TActionNeed& need : part.Needs)
        if (!MustSucceed(plan_, need)) endings[need.Action] = true;
    return endings;
  }

  std::string Stamp(std::size_t part, bool ofSuccess) const {
    const std::u16string log = LogOf(plan_, part, names_[part]);
    return text::ToUtf8(rules_.Folder + log.substr(0, log.rfind(u'.')) + (ofSuccess ? u".done" : u".ended"));
  }

  void PutPart(std::size_t place, bool hasEnding) {
    const TPart& part = plan_.Parts[place];
    put_("build " + Stamp(place, !hasEnding) + ": " + (hasEnding ? "ending" : "part"));
    for (std::size_t i = 0; i < part.Needs.size(); ++i)
      put_((i == 0 ? " | " : " ") + Stamp(part.Needs[i].Action, MustSucceed(plan_, part.Needs[i])));
    const auto command = CommandOf(part, words_, rules_.Folder + LogOf(plan_, place, names_[place]));
    put_("\n  line = " + Value(ShellLine(command, platform::IsWindows())) + "\n  part = " + Value(part.Id) +
         "\n");
    if (hasEnding)
      put_("build " + Stamp(place, true) + ": verdict " + Stamp(place, false) +
           "\n  part = " + Value(part.Id) + " has succeeded\n");
  }

  const TPlan& plan_;
  const TRunWords& words_;
  const TPlanPut& put_;
  const std::vector<std::u16string> names_;
  const TShellRules rules_ = RulesHere();
};

} // namespace

void WritePlanNinja(const TPlan& plan, const TRunWords& words, const TPlanPut& put) {
  TNinjaFile(plan, words, put).Write();
}

} // namespace kx
