// An AssemblyInfo file of any language: what is set is found again, setting it again changes nothing, and
// another value changes nothing but that value.
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "fuzz/FuzzTarget.h"
#include "package/assemblyinfo/AssemblyInfoRewriter.h"

#include <algorithm>

namespace kx::fuzz {
namespace {

void CheckEntries(const TAssemblyInfoRewrite& rewrite, const TAssemblyInfoValues& given,
                  TAssemblyInfoLanguage language) {
  const TAssemblyInfoInventory inventory(rewrite.Bytes, language);
  for (const auto& entry : rewrite.Entries) {
    Require(std::ranges::find(given, entry) != given.end(), "an entry bears the value that was given");
    Require(inventory.Find(entry.first) != TAssemblyInfoPresence::Absent, "an entry is in the file");
  }
}

void CheckOtherValue(std::string_view source, TAssemblyInfoLanguage language) {
  constexpr std::string_view first = "41.52.63.74";
  constexpr std::string_view second = "85.96.17.28";
  const auto with = [&](std::string_view bytes, std::string_view value) {
    return RewriteAssemblyInfo(bytes, language, {{u"AssemblyVersion", text::FromUtf8(value)}}).Bytes;
  };
  const std::string one = with(source, first);
  const std::string other = with(one, second);
  Require(with(other, first) == one, "going back to a value gives the bytes back");
  const bool isSixteenBit = source.starts_with("\xFF\xFE") || source.starts_with("\xFE\xFF");
  if (isSixteenBit || source.find(second) != source.npos) return;
  std::string replaced = other;
  for (std::size_t at = replaced.find(second); at != replaced.npos; at = replaced.find(second))
    replaced.replace(at, second.size(), first);
  Require(replaced == one, "nothing but the value changes");
}

void Check(std::string_view bytes) {
  TInput input(bytes);
  const auto language = static_cast<TAssemblyInfoLanguage>(input.Below(5));
  const TAssemblyInfoValues values{{u"AssemblyVersion", u"1.2.3.4"},
                                   {u"AssemblyTitle", text::FromUtf8(input.Line())},
                                   {u"AssemblyComment", u"\"\\\n*/?\?/"}};
  const std::string_view source = input.Rest();
  try {
    const auto once = RewriteAssemblyInfo(source, language, values);
    if (once.Changed.empty()) Require(once.Bytes == source, "a file that has the values keeps its bytes");
    CheckEntries(once, values, language);
    const auto again = RewriteAssemblyInfo(once.Bytes, language, values);
    Require(again.Bytes == once.Bytes && again.Changed.empty(), "setting again changes nothing");
    Require(again.Entries == once.Entries, "setting again finds the same entries");
  } catch (const EKxException&) {
  }
  try {
    CheckOtherValue(source, language);
  } catch (const EKxException&) {
  }
}

const TRegistration registration({"assembly_info", Check});

} // namespace
} // namespace kx::fuzz
