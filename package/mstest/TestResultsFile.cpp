#include "package/mstest/TestResultsFile.h"

#include "foundation/formats/XmlStream.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>

namespace kx {

namespace {

// "Ns.Tests, Assembly, Version=1.0.0.0" names the class Ns.Tests; commas in square brackets belong to the
// arguments of a generic class.
std::u16string ClassOnly(std::u16string_view name) {
  int depth = 0;
  const auto ends = [&depth](char16_t c) {
    depth += c == u'[' ? 1 : c == u']' ? -1 : 0;
    return c == u',' && depth == 0;
  };
  return std::u16string(text::Trim({name.begin(), std::ranges::find_if(name, ends)}));
}

// Follows the document's elements: which of them are results, and whether an element stands at
// Output/ErrorInfo/Message or .../StackTrace below one.
class TResultsReader : public IXmlEvents {
public:
  TKxArrayOfMSTestResult Take();

  void StartElement(const IXmlStartTag& tag) override;
  void EndElement() override;
  void Text(std::string_view utf8) override;

private:
  enum class TPlace { Elsewhere, Result, Output, ErrorInfo };
  struct TOpen {
    TPlace Place = TPlace::Elsewhere;
    std::size_t Owner = 0; // the depth of the result around it
    // Of a result only:
    std::size_t Index = 0;
    bool HasMessage = false;
    bool HasStackTrace = false;
  };
  // A text being collected: of the whole element at that depth.
  struct TCollected {
    std::size_t Depth;
    std::size_t Index;
    std::u16string TKxUnitTestResult::*Field;
    std::string Utf8 = {};
  };

  void BeginResult(const IXmlStartTag& tag);
  void NoteDefinition(const IXmlStartTag& tag);
  void BeginChild(std::string_view name);
  void BeginError(std::string_view name, TOpen& result);
  TKxUnitTestResult& ResultOf(const TCollected& text) { return results_[text.Index]; }

  TKxArrayOfMSTestResult results_;
  std::vector<std::u16string> testIds_; // of the results
  // Definitions may stand before the results or behind them.
  std::u16string definedTest_; // the id of the last definition that has begun
  std::map<std::u16string, std::u16string, text::IgnoreCaseLess> classes_; // by the id of the test
  std::string space_;                                                      // of the document element
  std::vector<TOpen> open_;
  std::vector<TCollected> texts_; // a result may stand inside the message of another
};

TKxArrayOfMSTestResult TResultsReader::Take() {
  for (std::size_t i = 0; i < results_.size(); ++i)
    if (const auto found = classes_.find(testIds_[i]); found != classes_.end())
      results_[i].ClassName = found->second;
  return std::move(results_);
}

void TResultsReader::StartElement(const IXmlStartTag& tag) {
  if (open_.empty()) space_ = tag.NamespaceUri();
  const bool known = tag.NamespaceUri() == space_;
  if (known && tag.Name() == "UnitTestResult") {
    BeginResult(tag);
  } else if (known && !open_.empty() && open_.back().Place != TPlace::Elsewhere) {
    BeginChild(tag.Name());
  } else {
    if (known) NoteDefinition(tag);
    open_.emplace_back();
  }
}

void TResultsReader::BeginResult(const IXmlStartTag& tag) {
  const auto attribute = [&tag](std::string_view name) { return tag.GetAttribute(name).value_or(u""); };
  open_.push_back({TPlace::Result, open_.size(), results_.size()});
  testIds_.push_back(attribute("testId"));
  TKxUnitTestResult& result = results_.emplace_back();
  result.TestName = attribute("testName");
  result.Executed = true;
  result.Outcome = attribute("outcome");
  result.Passed = result.Outcome == u"Passed";
  result.StartTime = ParseUTCDateTime(attribute("startTime"));
  result.EndTime = ParseUTCDateTime(attribute("endTime"));
  result.Duration = ParseUTCTime(attribute("duration"));
}

void TResultsReader::NoteDefinition(const IXmlStartTag& tag) {
  if (tag.Name() == "UnitTest") {
    definedTest_ = tag.GetAttribute("id").value_or(u"");
  } else if (tag.Name() == "TestMethod") {
    classes_.insert_or_assign(definedTest_, ClassOnly(tag.GetAttribute("className").value_or(u"")));
  }
}

void TResultsReader::BeginChild(std::string_view name) {
  const TOpen parent = open_.back();
  TOpen& child = open_.emplace_back();
  child.Owner = parent.Owner;
  if (parent.Place == TPlace::Result && name == "Output") {
    child.Place = TPlace::Output;
  } else if (parent.Place == TPlace::Output && name == "ErrorInfo") {
    child.Place = TPlace::ErrorInfo;
  } else if (parent.Place == TPlace::ErrorInfo) {
    BeginError(name, open_[parent.Owner]);
  }
}

// The first message and the first stack trace count.
void TResultsReader::BeginError(std::string_view name, TOpen& result) {
  if (results_[result.Index].Passed) return;
  if (name == "Message" && !std::exchange(result.HasMessage, true)) {
    texts_.push_back({open_.size(), result.Index, &TKxUnitTestResult::ErrorMessage});
  } else if (name == "StackTrace" && !std::exchange(result.HasStackTrace, true)) {
    texts_.push_back({open_.size(), result.Index, &TKxUnitTestResult::StackTrace});
  }
}

void TResultsReader::EndElement() {
  if (!texts_.empty() && texts_.back().Depth == open_.size()) {
    const TCollected& text = texts_.back();
    ResultOf(text).*text.Field = text::FromUtf8(text.Utf8);
    texts_.pop_back();
  }
  open_.pop_back();
}

void TResultsReader::Text(std::string_view utf8) {
  for (auto& text : texts_)
    text.Utf8 += utf8;
}

// The first place where `text` looks like `shape`, in which "9" is any digit and all else itself; npos where
// there is none.
std::size_t FindShape(std::u16string_view text, std::u16string_view shape) {
  const auto fits = [](char16_t c, char16_t wanted) {
    return wanted == u'9' ? text::IsDigit(c) : c == wanted;
  };
  const auto found = std::search(text.begin(), text.end(), shape.begin(), shape.end(), fits);
  return found == text.end() ? std::u16string_view::npos : static_cast<std::size_t>(found - text.begin());
}

bool BeginsWithShape(std::u16string_view text, std::u16string_view shape) {
  return FindShape(text.substr(0, shape.size()), shape) == 0;
}

unsigned Digits(std::u16string_view text, std::size_t at, std::size_t count) {
  unsigned number = 0;
  for (const char16_t c : text.substr(at, count))
    number = number * 10 + static_cast<unsigned>(c - u'0');
  return number;
}

std::size_t CountDigits(std::u16string_view text) {
  return static_cast<std::size_t>(std::ranges::find_if_not(text, text::IsDigit) - text.begin());
}

constexpr std::u16string_view TimeShape = u"99:99:99.9";
constexpr std::u16string_view DateTimeShape = u"9999-99-99T99:99:99.9";

// The milliseconds of text that looks like TimeShape.
std::uint32_t TimeAt(std::u16string_view text) {
  constexpr std::size_t fractionAt = 9;
  const std::size_t fraction = std::min<std::size_t>(CountDigits(text.substr(fractionAt)), 3);
  return Digits(text, fractionAt, fraction) + Digits(text, 6, 2) * 1000 + Digits(text, 3, 2) * 60 * 1000 +
         Digits(text, 0, 2) * 60 * 60 * 1000;
}

// "+10:00", the minutes of any length.
bool IsPositiveOffset(std::u16string_view text) {
  if (!text.starts_with(u'+')) return false;
  const std::u16string_view hours = text.substr(1);
  const std::size_t count = CountDigits(hours);
  return count > 0 && BeginsWithShape(hours.substr(count), u":9");
}

std::optional<TKxDateTime> DateTimeAt(std::u16string_view text) {
  using namespace std::chrono;
  constexpr std::size_t timeAt = 11;
  const unsigned number = Digits(text, 0, 4);
  const year_month_day date(year(static_cast<int>(number)), month(Digits(text, 5, 2)),
                            day(Digits(text, 8, 2)));
  const bool exists = number > 0 && date.ok() && Digits(text, 11, 2) < 24 && Digits(text, 14, 2) < 60 &&
                      Digits(text, 17, 2) < 60;
  if (!exists) return std::nullopt;
  return TKxDateTime(sys_days(date)) + milliseconds(TimeAt(text.substr(timeAt)));
}

} // namespace

TKxArrayOfMSTestResult InterpretMSTestOutput(std::u16string_view fileName) {
  std::u16string reason;
  return InterpretMSTestOutput(fileName, reason);
}

TKxArrayOfMSTestResult InterpretMSTestOutput(std::u16string_view fileName, std::u16string& reason) {
  TResultsReader reader;
  TXmlStream stream(reader);
  const bool loaded = stream.Load(fileName);
  reason = stream.ParseError();
  return loaded ? reader.Take() : TKxArrayOfMSTestResult();
}

TKxArrayOfMSTestResult InterpretMSTestBytes(std::string_view bytes) {
  TResultsReader reader;
  if (!TXmlStream(reader).LoadBytes(bytes)) return {};
  return reader.Take();
}

std::int64_t ParseUTCTime(std::u16string_view text) {
  const std::size_t at = FindShape(text, TimeShape);
  return at == std::u16string_view::npos ? 0 : TimeAt(text.substr(at));
}

std::optional<TKxDateTime> ParseUTCDateTime(std::u16string_view text) {
  for (std::size_t at = 0; (at = FindShape(text, DateTimeShape)) != std::u16string_view::npos;) {
    text.remove_prefix(at);
    const std::size_t fractionAt = DateTimeShape.size() - 1;
    const std::u16string_view fraction = text.substr(fractionAt);
    if (IsPositiveOffset(fraction.substr(CountDigits(fraction)))) return DateTimeAt(text);
    text.remove_prefix(1);
  }
  return std::nullopt;
}

} // namespace kx
