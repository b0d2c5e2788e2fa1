// The options store of the host: one INI file in UTF-8, and overrides that hold for this run only.
#pragma once

#include "contract/Options.h"
#include "foundation/platform/Result.h"
#include "foundation/text/Text.h"
#include "program/runner/IniText.h"
#include "program/runner/SaveLock.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

// "DotNetFramework.v4.0" is the key "v4.0" of the section "DotNetFramework": the section ends at the first
// dot.
struct TOptionName {
  std::u16string Section;
  std::u16string Key;
  // Raises EKxException when a part is missing.
  static TOptionName Parse(std::u16string_view text);
};

class TOptionsStore {
public:
  // Reads a file; one that is missing is an empty store. Raises EKxParseError that names file and line.
  void Load(std::u16string_view fileName);
  const std::u16string& FileName() const { return fileName_; }

  // For this run: read before what is stored, never saved.
  void Override(const TOptionName& name, std::u16string_view value);
  void Override(std::u16string_view assignment); // "SECTION.KEY=VALUE"; raises EKxException when it is not
  bool HasOverrides(std::u16string_view section) const;

  std::optional<std::u16string> Get(const TOptionName& name) const;
  std::optional<std::u16string> GetStored(const TOptionName& name) const; // without the overrides
  void Set(const TOptionName& name, std::u16string_view value);           // what is stored
  void Remove(const TOptionName& name);
  std::vector<TOptionName> StoredNames() const; // in the order of the file

  // Writes what was set or removed since it was read into the file as it is now, safely and one writer at a
  // time; its folder is made. What others have stored in the meantime stays, and is seen when it is read
  // again.
  platform::Status Save();
  TSavePatience Patience; // with others who are saving

  enum class EOverrides { Apply, Ignore };
  // One section, for an options object. Valid as long as the store.
  std::unique_ptr<IKxOptionsReader> Reader(std::u16string_view section, EOverrides overrides) const;
  std::unique_ptr<IKxOptionsWriter> Writer(std::u16string_view section);

private:
  platform::Status SaveChanges();

  std::u16string fileName_;
  TIniText ini_;
  std::vector<TOptionName> changed_; // since it was read or saved, in this order
  std::map<std::u16string, std::map<std::u16string, std::u16string, text::IgnoreCaseLess>,
           text::IgnoreCaseLess>
      overrides_;
};

} // namespace kx
