// Machine-wide settings of a package, kept in the host's options store.
#pragma once

#include "contract/PublishedProperties.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

// One section of the store. Keys are compared without regard to letter case.
class IKxOptionsReader {
public:
  virtual ~IKxOptionsReader() = default;
  virtual std::u16string ReadString(std::u16string_view key, std::u16string_view otherwise) const = 0;
  virtual std::int32_t ReadInteger(std::u16string_view key, std::int32_t otherwise) const = 0;
};

class IKxOptionsWriter {
public:
  virtual ~IKxOptionsWriter() = default;
  virtual void WriteString(std::u16string_view key, std::u16string_view value) = 0;
  virtual void WriteInteger(std::u16string_view key, std::int32_t value) = 0;
};

// What is known of a key that an options object saves, for those who list and check options.
struct TKxOptionDescription {
  std::u16string_view Key;
  const TKxEnumeration* Enumeration = nullptr; // the number is its ordinal
  bool IsFolder = false;
};

// Base of the options objects. The host makes the one object of each registered class, loads it at start and
// saves it when it is modified.
class TKxOptionsObject : public TKxPersistent {
public:
  const TKxPropertyTable& PublishedProperties() const override; // what an options page edits; else empty
  virtual void
  LoadOptions(const IKxOptionsReader& reader);        // overrides call it first; clears the modified flag
  virtual void SaveOptions(IKxOptionsWriter& writer); // likewise
  virtual std::vector<TKxOptionDescription> DescribeOptions() const { return {}; }
  bool IsModified() const { return modified_; }

protected:
  void SetModified() { modified_ = true; }

private:
  bool modified_ = false;
};

// An options class as it is registered.
struct TKxOptionsClass {
  std::u16string_view Name;      // shown to the user
  std::u16string_view OptionKey; // the section of the store
  std::u16string_view Category;
  std::u16string_view ImageName;
  std::unique_ptr<TKxOptionsObject> (*Create)();
};

} // namespace kx
