#include "program/findings/FindingList.h"

#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/findings/Diagnostics.h"
#include "program/findings/SourceFiles.h"

#include <algorithm>
#include <functional>
#include <numeric>

namespace kx {

namespace {

constexpr std::size_t MostSteps = 50;
constexpr std::size_t LongestMessage = 4000;

// A file has two spellings where a tool and its logger both name it.
std::u16string KeyOf(const TFinding& finding, std::u16string_view file, const std::u16string& message) {
  const TFindingPlace& place = finding.Place;
  return text::ToLower(text::ReplaceAll(file, u"\\", u"/")) + u"\n" + text::FromInteger(place.Line) + u"," +
         text::FromInteger(place.Column) + u"\n" + finding.Rule + u"\n" + message;
}

bool IsQuote(char16_t c) {
  return c == u'\'' || c == u'"' || c == u'`' || c == u'\u2018' || c == u'\u2019' || c == u'\u00AB' ||
         c == u'\u00BB';
}

// Without blanks and words that hold a path; without numbers, too, where they may move.
std::u16string WithoutWhatMoves(std::u16string_view message, bool doNumbersMove = true) {
  std::u16string kept;
  std::size_t wordStart = 0;
  bool isPath = false;
  for (const char16_t c : message) {
    if (text::IsBlank(c) || IsQuote(c)) {
      if (isPath) kept.resize(wordStart);
      wordStart = kept.size();
      isPath = false;
    } else if (!doNumbersMove || !text::IsDigit(c)) {
      isPath = isPath || text::IsPathSeparator(c);
      kept += c;
    }
  }
  if (isPath) kept.resize(wordStart);
  return kept;
}

std::u16string WithoutBlanks(std::u16string text) {
  std::erase_if(text, text::IsBlank);
  return text;
}

std::uint64_t HashOf(std::u16string_view text) { // FNV-1a
  std::uint64_t hash = 0xcbf29ce484222325U;
  for (const char16_t c : text)
    for (const unsigned byte : {static_cast<unsigned>(c) & 0xFFU, static_cast<unsigned>(c) >> 8U})
      hash = (hash ^ byte) * 0x100000001b3U;
  return hash;
}

constexpr std::size_t LengthOfHash = 16;

std::u16string Hex(std::uint64_t number) {
  constexpr std::u16string_view digits = u"0123456789abcdef";
  std::u16string text(LengthOfHash, u'0');
  for (std::size_t i = text.size(); i-- > 0; number >>= 4U)
    text[i] = digits[number & 0xFU];
  return text;
}

void AddOccurrence(TFinding& known, const TFinding& again) {
  known.Occurrences += again.Occurrences;
  known.Severity = std::max(known.Severity, again.Severity);
}

std::vector<std::size_t> FileByFile(std::span<const TFinding> findings) {
  std::vector<std::size_t> order(findings.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::stable_sort(
      order, {}, [&](std::size_t i) -> const auto& { return findings[i].Place.File; });
  return order;
}

// The fingerprints are hashes: those that are equal get a number behind.
void NumberEqualOnes(std::span<TFinding> findings) {
  std::unordered_map<std::u16string, int> seen;
  for (const std::size_t i : FileByFile(findings)) {
    std::u16string& fingerprint = findings[i].Fingerprint;
    const int number = ++seen[fingerprint];
    if (number > 1) fingerprint += u"-" + text::FromInteger(number);
  }
}

} // namespace

TFindingCounts CountOf(std::span<const TFinding> findings) {
  TFindingCounts counts;
  for (const auto& finding : findings) {
    const bool isError = finding.Severity == TFindingSeverity::Error;
    const bool isWarning = finding.Severity == TFindingSeverity::Warning;
    ++(isError ? counts.Errors : isWarning ? counts.Warnings : counts.Notes);
  }
  return counts;
}

std::vector<const TFinding*> MostSevere(std::span<const TFinding> findings, std::size_t most) {
  std::vector<const TFinding*> chosen;
  for (const auto& finding : findings)
    if (finding.Severity != TFindingSeverity::Note) chosen.push_back(&finding);
  std::ranges::stable_sort(chosen, std::ranges::greater(), &TFinding::Severity);
  if (chosen.size() > most) chosen.resize(most);
  return chosen;
}

void TFindingList::Add(TFinding finding) {
  if (IsPartOfFindingBefore(finding) && !kept_.empty()) {
    auto& steps = kept_.back().Steps;
    if (!isLastNew_ || steps.size() >= MostSteps) return;
    steps.push_back({std::move(finding.Place), std::move(finding.Message)});
    Tell(kept_.size() - 1);
    return;
  }
  if (finding.Message.size() > LongestMessage) finding.Message.resize(LongestMessage);
  std::u16string key = KeyOf(finding, finding.Place.File, finding.Message);
  const auto known = places_.find(key);
  const std::size_t room = finding.Severity == TFindingSeverity::Error ? 2 * most_ : most_;
  isLastNew_ = known == places_.end() && kept_.size() < room;
  if (known != places_.end()) {
    AddOccurrence(kept_[known->second], finding);
    Tell(known->second);
  } else if (isLastNew_) {
    places_.emplace(std::move(key), kept_.size());
    kept_.push_back(std::move(finding));
    Tell(kept_.size() - 1);
  } else {
    ++more_;
  }
}

void SetFingerprints(std::span<TFinding> findings, const std::u16string& root) {
  TSourceFiles sources(root);
  for (const std::size_t i : FileByFile(findings)) { // since each is read for itself
    TFinding& finding = findings[i];
    std::u16string file = SeenFrom(root, finding.Place.File);
    if (text::IsAbsolutePath(file)) file = text::ExtractFileName(file);
    const std::u16string line = sources.LineText(finding.Place.File, finding.Place.Line);
    finding.Fingerprint = Hex(HashOf(finding.Rule + u"\n" + text::ToLower(file) + u"\n" +
                                     WithoutWhatMoves(finding.Message) + u"\n" + WithoutBlanks(line)));
  }
  NumberEqualOnes(findings);
}

void TFindingMerge::Add(std::vector<TFinding> findings, const std::u16string& root) {
  for (TFinding& finding : findings) {
    // Paths in texts are others on another machine.
    std::u16string key =
        KeyOf(finding, SeenFrom(root, finding.Place.File), WithoutWhatMoves(finding.Message, false));
    const auto [known, isNew] = places_.try_emplace(std::move(key), merged_.size());
    if (isNew)
      merged_.push_back(std::move(finding));
    else
      AddOccurrence(merged_[known->second], finding);
  }
}

std::vector<TFinding> TFindingMerge::Take() {
  for (TFinding& finding : merged_)
    if (finding.Fingerprint.find(u'-') == LengthOfHash) finding.Fingerprint.resize(LengthOfHash);
  NumberEqualOnes(merged_);
  return std::move(merged_);
}

} // namespace kx
