#include "program/cli/Inspect.h"
#include "program/cli/Output.h"

#include "foundation/text/StringList.h"
#include "package/versioninfo/KxRCVersionInfo.h"

namespace kx::cli {

namespace {

// Keeps what the reader reports as it comes; what it never reports stays unknown.
class TInspectedScript : public IInspected, public IKxVersionInfoCallback {
public:
  void SetMajorVersion(std::int32_t value) override { majorVersion_ = value; }
  void SetMinorVersion(std::int32_t value) override { minorVersion_ = value; }
  void SetReleaseVersion(std::int32_t value) override { releaseVersion_ = value; }
  void SetBuildVersion(std::int32_t value) override { buildVersion_ = value; }
  void SetProductVersion(std::u16string_view /*value*/) override {}
  void SetDebugBuild(bool value) override { debug_ = value; }
  void SetPreReleaseBuild(bool value) override { preRelease_ = value; }
  void SetSpecialBuild(bool value) override { special_ = value; }
  void SetPrivateBuild(bool value) override { private_ = value; }
  void SetDLL(bool value) override { dll_ = value; }
  void SetLocale(std::int32_t value) override { locale_ = value; }
  void SetCodePage(std::int32_t value) override { codePage_ = value; }
  // Reported again with every line, so only the last is looked at.
  void SetStringValues(std::u16string_view lines) override { strings_ = lines; }

  void WriteMembers(TJsonWriter& json) const override {
    ForEachField([&json](std::string_view name, const auto& value) { json.Member(name, value); });
    if (strings_) {
      json.ValuesMember("strings", Lines());
    } else {
      json.Member("strings", nullptr);
    }
  }

  void Describe(TOutput& output) const override {
    std::string out;
    ForEachField([&out](std::string_view name, const auto& value) {
      if (value) out += std::string(name) + std::string(16 - name.size(), ' ') + TextOf(*value) + "\n";
    });
    for (const auto& line : Lines())
      out += "  " + ForTerminal(line) + "\n";
    output.Write(out.empty() ? "No version block\n" : out);
  }

private:
  static std::string TextOf(bool value) { return value ? "true" : "false"; }
  static std::string TextOf(std::int32_t value) { return std::to_string(value); }

  void ForEachField(const auto& see) const {
    see("majorVersion", majorVersion_);
    see("minorVersion", minorVersion_);
    see("releaseVersion", releaseVersion_);
    see("buildVersion", buildVersion_);
    see("debug", debug_);
    see("preRelease", preRelease_);
    see("special", special_);
    see("private", private_);
    see("dll", dll_);
    see("locale", locale_);
    see("codePage", codePage_);
  }

  text::TStringList Lines() const {
    text::TStringList lines;
    lines.SetText(strings_.value_or(u""));
    return lines;
  }

  std::optional<std::int32_t> majorVersion_;
  std::optional<std::int32_t> minorVersion_;
  std::optional<std::int32_t> releaseVersion_;
  std::optional<std::int32_t> buildVersion_;
  std::optional<bool> debug_;
  std::optional<bool> preRelease_;
  std::optional<bool> special_;
  std::optional<bool> private_;
  std::optional<bool> dll_;
  std::optional<std::int32_t> locale_;
  std::optional<std::int32_t> codePage_;
  std::optional<std::u16string> strings_;
};

} // namespace

TInspected InspectResourceScript(const std::u16string& file, const TInspectOptions& /*options*/) {
  auto inspected = std::make_shared<TInspectedScript>();
  GetVersionInfoParser(inspected, file)->Parse();
  return inspected;
}

} // namespace kx::cli
