#include "program/report/Sarif.h"

#include "foundation/formats/JsonWriter.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/findings/SourceFiles.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <vector>

namespace kx {

namespace {

// What GitHub takes of each; it refuses a file with more.
constexpr std::size_t MostResults = 25'000;
constexpr std::size_t MostSteps = 1'000;
constexpr std::size_t LongestExplanation = 1'000;
constexpr const char* RootName = "SRCROOT";

constexpr bool IsUnreserved(unsigned char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
         c == '_' || c == '~' || c == '/';
}

std::string PercentEncoded(std::u16string_view path) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string uri;
  for (const char c : text::ToUtf8(path)) {
    const auto byte = static_cast<unsigned char>(c);
    if (IsUnreserved(byte)) {
      uri += c;
    } else {
      uri += '%';
      uri += digits[byte >> 4U];
      uri += digits[byte & 0xFU];
    }
  }
  return uri;
}

// In a message braces stand for arguments, and "[text](n)" for a link.
std::u16string MessageText(std::u16string_view message) {
  std::u16string text;
  for (std::size_t i = 0; i < message.size(); ++i) {
    const char16_t c = message[i];
    if (c == u'{' || c == u'}') text += c;
    if (c == u'\\' && i + 1 < message.size() && (message[i + 1] == u'[' || message[i + 1] == u']')) text += c;
    if (c == u']' && message.substr(i + 1).starts_with(u'(')) text += u'\\';
    text += c;
  }
  return text.empty() ? std::u16string(u"(no text)") : text;
}

std::u16string Explanation(const TSarifSettings& settings, const std::u16string& rule) {
  std::u16string text = settings.Explain ? settings.Explain(rule) : std::u16string();
  if (text.size() > LongestExplanation) text.resize(LongestExplanation);
  return text.empty() ? u"What a tool reports as " + rule + u"." : text;
}

class TSarifWriter {
public:
  TSarifWriter(std::span<const TFinding> findings, const TSarifSettings& settings,
               const platform::PutBytes& put)
      : findings_(findings), settings_(settings), sources_(settings.Root),
        json_([this, &put](std::string_view utf8) {
          if (status_) status_ = put(utf8);
        }) {
    Choose();
  }

  platform::Status Write() {
    json_.Object([&] {
      json_.Member("$schema", std::string_view("https://json.schemastore.org/sarif-2.1.0.json"));
      json_.Member("version", std::string_view("2.1.0"));
      json_.ArrayMember("runs", [&] { json_.Object([&] { WriteRun(); }); });
    });
    json_.EndLine();
    json_.Flush();
    return status_;
  }

private:
  // The findings that are written, file by file, and the rules that they name.
  void Choose() {
    order_.resize(findings_.size());
    std::iota(order_.begin(), order_.end(), std::size_t{0});
    if (order_.size() > MostResults) {
      std::ranges::stable_sort(order_, std::ranges::greater(),
                               [&](std::size_t i) { return findings_[i].Severity; });
      order_.resize(MostResults);
    }
    std::ranges::stable_sort(
        order_, {}, [&](std::size_t i) -> const auto& { return findings_[i].Place.File; });
    for (const std::size_t i : order_)
      if (rules_.emplace(findings_[i].Rule, ruleNames_.size()).second)
        ruleNames_.push_back(findings_[i].Rule);
  }

  void Text(std::string_view name, std::u16string_view text) {
    json_.ObjectMember(name, [&] { json_.Member("text", text); });
  }

  void WriteRun() {
    json_.ObjectMember("tool", [&] {
      json_.ObjectMember("driver", [&] {
        json_.Member("name", std::string_view("kxhost"));
        json_.ArrayMember("rules", [&] {
          for (const auto& rule : ruleNames_)
            json_.Object([&] { WriteRule(rule); });
        });
      });
    });
    json_.Member("columnKind", std::string_view("utf16CodeUnits"));
    if (!settings_.Root.empty()) WriteRoot();
    json_.ArrayMember("results", [&] {
      for (const std::size_t i : order_)
        json_.Object([&] { WriteResult(findings_[i]); });
    });
  }

  void WriteRoot() {
    json_.ObjectMember("originalUriBaseIds", [&] {
      json_.ObjectMember(RootName, [&] {
        std::string uri = UriOf({}, settings_.Root);
        if (!uri.ends_with('/')) uri += '/';
        json_.Member("uri", uri);
      });
    });
  }

  void WriteRule(const std::u16string& rule) {
    const std::u16string explanation = Explanation(settings_, rule);
    json_.Member("id", rule);
    Text("shortDescription", explanation.substr(0, explanation.find(u'\n')));
    Text("fullDescription", explanation);
    Text("help", explanation);
  }

  void WriteResult(const TFinding& finding) {
    json_.Member("ruleId", finding.Rule);
    json_.Member("ruleIndex", rules_.at(finding.Rule));
    json_.Member("level", std::string_view(WordOf(finding.Severity)));
    Text("message", MessageText(finding.Message));
    TFindingPlace place = finding.Place;
    if (place.File.empty()) place.File = settings_.FallbackFile;
    if (!place.File.empty())
      json_.ArrayMember("locations", [&] { json_.Object([&] { WriteLocation(place); }); });
    json_.Member("occurrenceCount", std::max(1, finding.Occurrences));
    WriteFingerprints(finding);
    if (!finding.Steps.empty()) WriteSteps(finding);
    WriteProperties(finding);
  }

  void WriteLocation(const TFindingPlace& place) {
    json_.ObjectMember("physicalLocation", [&] {
      json_.ObjectMember("artifactLocation", [&] {
        const std::string uri = UriOf(settings_.Root, place.File);
        json_.Member("uri", uri);
        if (!settings_.Root.empty() && !uri.starts_with("file:"))
          json_.Member("uriBaseId", std::string_view(RootName));
      });
      json_.ObjectMember("region", [&] {
        const int line = std::max(1, place.Line);
        const int column = std::max(1, place.Column);
        json_.Member("startLine", line);
        json_.Member("startColumn", column);
        json_.Member("endLine", line);
        json_.Member("endColumn", column + 1);
      });
    });
  }

  void WriteFingerprints(const TFinding& finding) {
    const std::string lineHash = sources_.LineHash(finding.Place.File, finding.Place.Line);
    if (lineHash.empty() && finding.Fingerprint.empty()) return;
    json_.ObjectMember("partialFingerprints", [&] {
      if (!lineHash.empty()) json_.Member("primaryLocationLineHash", lineHash);
      if (!finding.Fingerprint.empty()) json_.Member("kxhost/v1", finding.Fingerprint);
    });
  }

  void WriteSteps(const TFinding& finding) {
    const auto steps = std::span(finding.Steps).first(std::min(finding.Steps.size(), MostSteps));
    const auto writeStep = [&](const TFindingStep& step) {
      json_.ObjectMember("location", [&] {
        if (!step.Place.File.empty()) WriteLocation(step.Place);
        Text("message", MessageText(step.Message));
      });
    };
    json_.ArrayMember("codeFlows", [&] {
      json_.Object([&] {
        json_.ArrayMember("threadFlows", [&] {
          json_.Object([&] {
            json_.ArrayMember("locations", [&] {
              for (const auto& step : steps)
                json_.Object([&] { writeStep(step); });
            });
          });
        });
      });
    });
  }

  void WriteProperties(const TFinding& finding) {
    const std::pair<const char*, const std::u16string&> properties[] = {
        {"project", finding.Project},
        {"configuration", finding.Configuration},
        {"action", finding.Action},
        {"advice", finding.Advice}};
    if (std::ranges::all_of(properties, [](const auto& property) { return property.second.empty(); })) return;
    json_.ObjectMember("properties", [&] {
      for (const auto& [name, value] : properties)
        if (!value.empty()) json_.Member(name, value);
    });
  }

  std::span<const TFinding> findings_;
  const TSarifSettings& settings_;
  TSourceFiles sources_;
  std::vector<std::size_t> order_;
  std::map<std::u16string, std::size_t> rules_;
  std::vector<std::u16string> ruleNames_;
  platform::Status status_ = platform::Done{};
  TJsonWriter json_;
};

} // namespace

std::string UriOf(std::u16string_view root, std::u16string_view file) {
  const std::u16string path = SeenFrom(root, file);
  const std::string uri = PercentEncoded(path);
  if (path.starts_with(u"//")) return "file:" + uri;
  if (path.starts_with(u'/')) return "file://" + uri;
  const bool hasDrive = path.size() > 2 && path[1] == u':';
  return hasDrive ? "file:///" + text::ToUtf8(path.substr(0, 2)) + PercentEncoded(path.substr(2)) : uri;
}

platform::Status WriteSarif(std::span<const TFinding> findings, const TSarifSettings& settings,
                            const platform::PutBytes& put) {
  return TSarifWriter(findings, settings, put).Write();
}

} // namespace kx
