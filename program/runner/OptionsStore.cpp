#include "program/runner/OptionsStore.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/WindowsPath.h"
#include "program/runner/Messages.h"

namespace kx {

namespace {

class TSectionReader : public IKxOptionsReader {
public:
  TSectionReader(const TOptionsStore& store, std::u16string_view section, bool overrides)
      : store_(store), section_(section), overrides_(overrides) {}

  std::u16string ReadString(std::u16string_view key, std::u16string_view otherwise) const override {
    const TOptionName name{section_, std::u16string(key)};
    return (overrides_ ? store_.Get(name) : store_.GetStored(name)).value_or(std::u16string(otherwise));
  }
  std::int32_t ReadInteger(std::u16string_view key, std::int32_t otherwise) const override {
    return text::ToIntegerOr(ReadString(key, u""), otherwise);
  }

private:
  const TOptionsStore& store_;
  std::u16string section_;
  bool overrides_;
};

class TSectionWriter : public IKxOptionsWriter {
public:
  TSectionWriter(TOptionsStore& store, std::u16string_view section) : store_(store), section_(section) {}

  void WriteString(std::u16string_view key, std::u16string_view value) override {
    store_.Set({section_, std::u16string(key)}, value);
  }
  void WriteInteger(std::u16string_view key, std::int32_t value) override {
    store_.Set({section_, std::u16string(key)}, text::FromInteger(value));
  }

private:
  TOptionsStore& store_;
  std::u16string section_;
};

struct TStoreFile {
  TIniText Ini;
  bool HasMark = false; // it begins with a byte-order mark
};

// A file that is missing is an empty one. Raises EKxParseError.
TStoreFile ReadStore(std::u16string_view fileName) {
  TStoreFile file;
  if (!platform::FileExists(fileName) && !platform::DirectoryExists(fileName)) return file;
  const auto bytes = platform::ReadFile(fileName);
  if (!bytes) RefuseFile(fileName, 0, bytes.Message());
  file.HasMark = text::DetectByteOrderMark(*bytes) == text::ByteOrderMark::Utf8;
  file.Ini.Parse(text::FromUtf8(RequireUtf8(*bytes, fileName)), fileName);
  return file;
}

} // namespace

TOptionName TOptionName::Parse(std::u16string_view text) {
  const std::size_t dot = text.find(u'.');
  if (dot == std::u16string_view::npos || dot == 0 || dot + 1 == text.size())
    throw EKxException(Quoted(text) + u" names no option: expected SECTION.KEY.");
  return {std::u16string(text.substr(0, dot)), std::u16string(text.substr(dot + 1))};
}

void TOptionsStore::Load(std::u16string_view fileName) {
  fileName_ = fileName;
  changed_.clear();
  ini_ = {};
  ini_ = ReadStore(fileName).Ini;
}

void TOptionsStore::Override(const TOptionName& name, std::u16string_view value) {
  overrides_[name.Section].insert_or_assign(name.Key, std::u16string(value));
}

void TOptionsStore::Override(std::u16string_view assignment) {
  const std::size_t equals = assignment.find(u'=');
  if (equals == std::u16string_view::npos)
    throw EKxException(Quoted(assignment) + u" sets no option: expected SECTION.KEY=VALUE.");
  Override(TOptionName::Parse(assignment.substr(0, equals)), assignment.substr(equals + 1));
}

bool TOptionsStore::HasOverrides(std::u16string_view section) const {
  return overrides_.contains(section);
}

std::optional<std::u16string> TOptionsStore::Get(const TOptionName& name) const {
  if (const auto section = overrides_.find(name.Section); section != overrides_.end())
    if (const auto found = section->second.find(name.Key); found != section->second.end())
      return found->second;
  return GetStored(name);
}

std::optional<std::u16string> TOptionsStore::GetStored(const TOptionName& name) const {
  return ini_.Get(name.Section, name.Key);
}

void TOptionsStore::Set(const TOptionName& name, std::u16string_view value) {
  if (GetStored(name) == value) return;
  ini_.Set(name.Section, name.Key, value);
  changed_.push_back(name);
}

void TOptionsStore::Remove(const TOptionName& name) {
  if (!GetStored(name)) return;
  ini_.Remove(name.Section, name.Key);
  changed_.push_back(name);
}

std::vector<TOptionName> TOptionsStore::StoredNames() const {
  std::vector<TOptionName> names;
  for (const auto& section : ini_.Sections())
    for (const auto& key : ini_.Keys(section))
      names.push_back({std::u16string(section), key});
  return names;
}

platform::Status TOptionsStore::Save() {
  if (changed_.empty()) return platform::Done{};
  if (fileName_.empty()) return platform::Failure{u"There is no file to save the options in."};
  const std::u16string folder = text::ExtractFileDir(fileName_);
  if (!folder.empty()) { // else the current one
    auto made = platform::CreateDirectories(folder);
    if (!made) return made;
  }
  const auto lock = LockForSaving(fileName_, Patience);
  if (!lock) return platform::Failure{lock.Message()};
  auto saved = SaveChanges();
  if (saved) changed_.clear();
  return saved;
}

platform::Status TOptionsStore::SaveChanges() {
  try {
    TStoreFile file = ReadStore(fileName_);
    const std::u16string before = file.Ini.Text();
    for (const auto& name : changed_) {
      if (const auto value = GetStored(name)) {
        file.Ini.Set(name.Section, name.Key, *value);
      } else {
        file.Ini.Remove(name.Section, name.Key);
      }
    }
    const std::u16string text = file.Ini.Text();
    if (text == before) return platform::Done{};
    return platform::SaveFile(fileName_, (file.HasMark ? "\xEF\xBB\xBF" : "") + text::ToUtf8(text));
  } catch (const EKxException& error) { // others have made it unreadable
    return platform::Failure{error.Message()};
  }
}

std::unique_ptr<IKxOptionsReader> TOptionsStore::Reader(std::u16string_view section,
                                                        EOverrides overrides) const {
  return std::make_unique<TSectionReader>(*this, section, overrides == EOverrides::Apply);
}

std::unique_ptr<IKxOptionsWriter> TOptionsStore::Writer(std::u16string_view section) {
  return std::make_unique<TSectionWriter>(*this, section);
}

} // namespace kx
