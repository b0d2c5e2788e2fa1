#include "program/plan/PlanFormats.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/WindowsPath.h"
#include "program/report/ResultRows.h"

#include <algorithm>
#include <array>

namespace kx {

namespace {

struct TSums {
  std::chrono::milliseconds All{0};
  std::chrono::milliseconds Critical{0};
  std::size_t Unknown = 0;
};

TSums SumsOf(const TPlan& plan, const std::vector<std::size_t>& critical) {
  TSums sums;
  for (const TPart& part : plan.Parts) {
    sums.All += part.Usual.value_or(std::chrono::milliseconds(0));
    sums.Unknown += part.Usual ? 0 : 1;
  }
  for (const std::size_t part : critical)
    sums.Critical += plan.Parts[part].Usual.value_or(std::chrono::milliseconds(0));
  return sums;
}

// The one before it is what a reader expects.
bool IsUsual(const TPart& part, std::size_t place) {
  return place > 0 ? part.Needs.size() == 1 && part.Needs[0].Action == place - 1 : part.Needs.empty();
}

std::string NeedsText(const TPlan& plan, const TPart& part, std::size_t place) {
  constexpr std::size_t mostShown = 8;
  if (IsUsual(part, place)) return {};
  if (part.Needs.empty()) return "  needs nothing";
  std::string text = "  behind";
  for (std::size_t i = 0; i < part.Needs.size(); ++i) {
    if (i == mostShown) return text + " and " + std::to_string(part.Needs.size() - i) + " more";
    text += (i == 0 ? " " : ", ") + std::to_string(part.Needs[i].Action + 1) +
            (MustSucceed(plan, part.Needs[i]) ? "" : " (however it ends)");
  }
  return text;
}

std::string Padded(std::string text, std::size_t width) {
  const auto columns = static_cast<std::size_t>(
      std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
  return text.append(width - std::min(width, columns), ' ');
}

void WriteTotals(const TPlan& plan, const std::vector<std::size_t>& critical, const TPlanPut& put) {
  const TSums sums = SumsOf(plan, critical);
  put(text::ToUtf8(plan.Name) + ": " + CountText(static_cast<std::int64_t>(plan.Parts.size()), "part"));
  if (sums.Unknown < plan.Parts.size())
    put(", " + FormatElapsed(sums.All) + " one after the other, " + FormatElapsed(sums.Critical) +
        " at least");
  if (sums.Unknown > 0)
    put("; " + CountText(static_cast<std::int64_t>(sums.Unknown), "part") + " of unknown time");
  put("\n");
}

void WriteNeeds(const TPlan& plan, const TPart& part, bool mustSucceed, TJsonWriter& json) {
  for (const TActionNeed& need : part.Needs)
    if (MustSucceed(plan, need) == mustSucceed) json.Value(plan.Parts[need.Action].Id);
}

void WriteTime(std::string_view name, const std::optional<std::chrono::milliseconds>& time,
               TJsonWriter& json) {
  json.Member(name, time ? std::optional(time->count()) : std::nullopt);
}

// The members that every machine may know.
void WritePart(const TPlan& plan, const TPart& part, TJsonWriter& json) {
  json.Member("id", part.Id);
  json.Member("action", part.Action);
  json.Member("type", part.Type);
  json.Member("group", part.Group);
  json.Member("pass", part.PassValue);
  json.ArrayMember("needs", [&] { WriteNeeds(plan, part, true, json); });
  json.ArrayMember("after", [&] { WriteNeeds(plan, part, false, json); });
  json.ValuesMember("capabilities", part.Capabilities);
  WriteTime("expectedMs", part.Usual, json);
}

} // namespace

std::span<const TPlanFormat> PlanFormats() {
  static constexpr auto formats = std::to_array<TPlanFormat>({
      {u"text", WritePlanText},
      {u"json", WritePlanJson},
      {u"dot", WritePlanDot},
      {u"mermaid", WritePlanMermaid},
      {u"ninja", WritePlanNinja},
      {u"buildbot", WritePlanBuildbot},
      {u"github", WritePlanGitHub},
      {u"gitlab", WritePlanGitLab},
      {u"azure", WritePlanAzure},
  });
  return formats;
}

void WritePlanText(const TPlan& plan, const TRunWords& /*words*/, const TPlanPut& put) {
  const auto critical = CriticalPath(plan);
  std::vector<char> marks(plan.Parts.size(), ' ');
  for (const std::size_t part : critical)
    marks[part] = '*';
  WriteTotals(plan, critical, put);
  std::size_t width = 0;
  for (const TPart& part : plan.Parts)
    width = std::max(width, std::min<std::size_t>(part.Id.size(), 48));
  const std::size_t digits = std::to_string(plan.Parts.size()).size();
  for (std::size_t i = 0; i < plan.Parts.size(); ++i) {
    const TPart& part = plan.Parts[i];
    const std::string number = std::to_string(i + 1);
    const std::string time = part.Usual ? FormatElapsed(*part.Usual) : "-";
    const std::string needs = NeedsText(plan, part, i);
    put(std::string(1, marks[i]) + " " + std::string(digits - number.size(), ' ') + number + ". " +
        Padded(text::ToUtf8(part.Id), width) + "  " + (needs.empty() ? time : Padded(time, 12) + needs) +
        "\n");
  }
  if (!critical.empty()) put("* on the way that takes longest\n");
}

void WritePlanJson(const TPlan& plan, const TRunWords& words, const TPlanPut& put) {
  const auto critical = CriticalPath(plan);
  std::vector<bool> isCritical(plan.Parts.size());
  for (const std::size_t part : critical)
    isCritical[part] = true;
  const TSums sums = SumsOf(plan, critical);
  TJsonWriter json(put);
  json.Object([&] {
    json.Member("name", plan.Name);
    json.Member("file", plan.File);
    json.ArrayMember("parts", [&] {
      for (std::size_t i = 0; i < plan.Parts.size(); ++i)
        json.Object([&] {
          const TPart& part = plan.Parts[i];
          WritePart(plan, part, json);
          json.ValuesMember("command", CommandOf(part, words));
          json.ValuesMember("inputs", *part.Inputs);
          json.ValuesMember("outputs", part.Outputs);
          json.Member("onCriticalPath", bool{isCritical[i]});
        });
    });
    json.Member("expectedMs", sums.All.count());
    json.ArrayMember("criticalPath", [&] {
      for (const std::size_t part : critical)
        json.Value(plan.Parts[part].Id);
    });
    json.Member("criticalPathMs", sums.Critical.count());
  });
  json.EndLine();
  json.Flush();
}

void WritePlanBuildbot(const TPlan& plan, const TRunWords& words, const TPlanPut& put) {
  const auto names = NarrowNames(plan);
  TJsonWriter json(put);
  json.Object([&] {
    json.Member("name", plan.Name);
    json.ArrayMember("parts", [&] {
      for (std::size_t i = 0; i < plan.Parts.size(); ++i)
        json.Object([&] {
          const std::u16string log = LogOf(plan, i, names[i]);
          WritePart(plan, plan.Parts[i], json);
          json.ValuesMember("command", CommandOf(plan.Parts[i], words, log));
          json.Member("log", log);
        });
    });
  });
  json.EndLine();
  json.Flush();
}

} // namespace kx
