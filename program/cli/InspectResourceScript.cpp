#include "program/cli/Inspect.h"
#include "program/cli/Output.h"

#include "foundation/text/Encoding.h"
#include "package/versioninfo/KxRCVersionInfo.h"

#include <nlohmann/json.hpp>

namespace kx::cli {

namespace {

// Keeps what the reader reports as it comes; what it never reports stays null.
class TReported : public IKxVersionInfoCallback {
public:
  TJson Values{{"majorVersion", nullptr}, {"minorVersion", nullptr}, {"releaseVersion", nullptr},
               {"buildVersion", nullptr}, {"debug", nullptr},        {"preRelease", nullptr},
               {"special", nullptr},      {"private", nullptr},      {"dll", nullptr},
               {"locale", nullptr},       {"codePage", nullptr},     {"strings", nullptr}};

  void SetMajorVersion(std::int32_t value) override { Values["majorVersion"] = value; }
  void SetMinorVersion(std::int32_t value) override { Values["minorVersion"] = value; }
  void SetReleaseVersion(std::int32_t value) override { Values["releaseVersion"] = value; }
  void SetBuildVersion(std::int32_t value) override { Values["buildVersion"] = value; }
  void SetProductVersion(std::u16string_view /*value*/) override {}
  void SetDebugBuild(bool value) override { Values["debug"] = value; }
  void SetPrivateBuild(bool value) override { Values["private"] = value; }
  void SetPreReleaseBuild(bool value) override { Values["preRelease"] = value; }
  void SetSpecialBuild(bool value) override { Values["special"] = value; }
  void SetDLL(bool value) override { Values["dll"] = value; }
  void SetLocale(std::int32_t value) override { Values["locale"] = value; }
  void SetCodePage(std::int32_t value) override { Values["codePage"] = value; }
  void SetStringValues(std::u16string_view lines) override { strings_ = lines; }

  void TakeStrings() {
    if (!strings_) return;
    text::TStringList lines;
    lines.SetText(*strings_);
    Values["strings"] = TJson::array();
    for (const auto& line : lines)
      Values["strings"].push_back(text::ToUtf8(line));
  }

private:
  std::optional<std::u16string> strings_; // reported again with every line, so only the last is looked at
};

} // namespace

TJson InspectResourceScript(const std::u16string& file, const TInspectOptions& /*options*/) {
  const auto reported = std::make_shared<TReported>();
  GetVersionInfoParser(reported, file)->Parse();
  reported->TakeStrings();
  return reported->Values;
}

std::string DescribeResourceScript(const TJson& script) {
  std::string out;
  for (const auto& [name, value] : script.items()) {
    if (value.is_null() || value.is_array()) continue;
    out += name + std::string(16 - name.size(), ' ') + value.dump() + "\n";
  }
  for (const auto& line : script["strings"])
    out += "  " + ForTerminal(text::FromUtf8(line.get<std::string>())) + "\n";
  return out.empty() ? "No version block\n" : out;
}

} // namespace kx::cli
