#include "foundation/platform/Files.h"
#include "foundation/platform/Posix.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <cerrno>
#include <ctime>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unordered_map>
#include <unordered_set>

namespace kx::platform {

namespace {

// Beyond this what was learned is forgotten, so that a walk over any number of folders stays small: some ten
// megabytes.
constexpr std::size_t kMostNames = 64'000;
constexpr std::size_t kFolderInNames = 8; // a listing costs as much as so many names, even when it is empty
constexpr std::int64_t kTimeStampGrain =
    50'000'000; // nanoseconds; generous, time stamps follow the kernel's tick

enum class EntryKind { File, Folder, Unknown };

struct Entry {
  std::u16string Name;
  EntryKind Kind;
};

// Looks entries up by their names without regard to letter case.
struct EntryHash : text::IgnoreCaseHash {
  using is_transparent = void;
  using text::IgnoreCaseHash::operator();
  std::size_t operator()(const Entry& entry) const { return (*this)(entry.Name); }
};
struct EntryEqual {
  using is_transparent = void;
  static std::u16string_view Name(const Entry& entry) { return entry.Name; }
  static std::u16string_view Name(std::u16string_view name) { return name; }
  bool operator()(const auto& a, const auto& b) const { return text::EqualsIgnoreCase(Name(a), Name(b)); }
};

std::int64_t Nanoseconds(const timespec& time) {
  return time.tv_sec * 1'000'000'000LL + time.tv_nsec;
}

// What tells one state of a folder from another.
struct Stamp {
  std::int64_t Changed = 0;
  dev_t Device = 0;
  ino_t Inode = 0;
  bool operator==(const Stamp&) const = default;
};

std::optional<Stamp> StampOf(const std::string& native) {
  struct stat info {};
  if (stat(native.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) return std::nullopt;
  return Stamp{Nanoseconds(info.st_mtim), info.st_dev, info.st_ino};
}

// A file that cannot be looked at may be there: whoever opens it gets the reason.
bool MayBeFile(const std::string& native) {
  struct stat info {};
  if (stat(native.c_str(), &info) == 0) return !S_ISDIR(info.st_mode);
  return errno != ENOENT && errno != ENOTDIR && errno != ENAMETOOLONG && errno != ELOOP;
}

// An automounter's folder lists what is mounted; a name that it does not list is mounted when it is asked
// for.
bool MountsOnDemand(const std::string& native) {
  constexpr long automounter = 0x0187; // AUTOFS_SUPER_MAGIC
  struct statfs info {};
  return statfs(native.c_str(), &info) == 0 && info.f_type == automounter;
}

EntryKind KindOf(const dirent& entry) {
  switch (entry.d_type) {
  case DT_DIR:
    return EntryKind::Folder;
  case DT_LNK: // what it points to is looked at when somebody asks
  case DT_UNKNOWN:
    return EntryKind::Unknown;
  default:
    return EntryKind::File;
  }
}

// One folder's names as of the moment it was listed.
class Listing {
public:
  Listing() = default; // of a folder that is not there: it holds nothing

  // A folder that may be entered but not read keeps no names and answers by asking the system.
  Listing(std::u16string_view folder, std::string native, const Stamp& stamp)
      : folder_(folder), native_(std::move(native)), stamp_(stamp) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    listedAt_ = Nanoseconds(now);
    posix::FolderWalk walk(native_);
    while (const dirent* entry = walk.Next())
      if (const std::string_view name = entry->d_name; text::IsValidUtf8(name))
        entries_.insert({text::FromUtf8(name), KindOf(*entry)});
    readable_ = walk.Error() == 0 && !MountsOnDemand(native_); // else names are missing
  }

  const std::u16string& Folder() const { return folder_; } // in its own spelling
  std::size_t Count() const { return entries_.size(); }
  bool IsReadable() const { return readable_; }

  // A change in the same tick of the file system's clock as the listing would not show in the time stamp.
  bool StillHolds(const Stamp& now) const {
    return now == stamp_ && stamp_.Changed < listedAt_ - kTimeStampGrain;
  }

  // The entry of exactly this name, else the smallest that differs in letter case only, else one of the name
  // that Windows makes of it.
  const Entry* Find(std::u16string_view name) const {
    const Entry* spelled = FindSpelled(name);
    const std::u16string_view onWindows = posix::NameOnWindows(name);
    return spelled != nullptr || onWindows.size() == name.size() ? spelled : FindSpelled(onWindows);
  }

  bool HoldsFile(std::u16string_view name) const {
    const Entry* entry = Find(name);
    if (readable_ && (entry == nullptr || entry->Kind != EntryKind::Unknown)) {
      return entry != nullptr && entry->Kind == EntryKind::File;
    }
    return MayBeFile(native_ + "/" + text::ToUtf8(entry == nullptr ? name : entry->Name));
  }

  std::uint64_t CheckedIn = 0; // the round of Refresh in which the time stamp was last looked at

private:
  const Entry* FindSpelled(std::u16string_view name) const {
    if (entries_.empty()) return nullptr;
    const auto [first, last] = entries_.equal_range(name);
    const Entry* best = nullptr;
    for (auto entry = first; entry != last; ++entry) {
      if (entry->Name == name) return &*entry;
      if (best == nullptr || entry->Name < best->Name) best = &*entry;
    }
    return best;
  }

  std::u16string folder_;
  std::string native_;
  Stamp stamp_;
  std::int64_t listedAt_ = 0;
  bool readable_ = true;
  std::unordered_multiset<Entry, EntryHash, EntryEqual> entries_;
};

struct PathHash {
  using is_transparent = void;
  std::size_t operator()(std::u16string_view path) const { return std::hash<std::u16string_view>()(path); }
};

// "/srv/a/b.txt" and nothing to resolve or replace in it, as nearly all questions are.
bool IsPlain(std::u16string_view path) {
  if (!path.starts_with(u'/')) return false;
  for (std::size_t i = 0; i < path.size(); ++i) {
    if (path[i] == u'\\' || path[i] == u'\0') return false;
    const bool doubtful =
        path[i] == u'/' && i + 1 < path.size() && (path[i + 1] == u'/' || path[i + 1] == u'.');
    if (doubtful) return false;
  }
  return true;
}

std::u16string_view ParentOf(std::u16string_view folder) {
  const std::size_t slash = folder.rfind(u'/');
  return folder.substr(0, slash == 0 ? 1 : slash);
}

std::u16string Below(std::u16string_view folder, std::u16string_view name) {
  std::u16string path(folder);
  if (path.back() != u'/') path.push_back(u'/');
  return path.append(name);
}

} // namespace

// Listings by the folder's path in its own spelling, without a separator at the end (the root is "/").
struct FileLookup::State {
  std::unordered_map<std::u16string, Listing, PathHash, std::equal_to<>> Listings;
  const Listing Nowhere{};
  std::size_t Names = 0;
  std::uint64_t Round = 0;

  void Drop(decltype(Listings)::iterator known) {
    Names -= known->second.Count() + kFolderInNames;
    Listings.erase(known);
  }

  const Listing* List(std::u16string_view folder) {
    std::string native = text::ToUtf8(folder);
    const auto stamp = StampOf(native);
    if (!stamp) return nullptr;
    Listing& listing =
        Listings.try_emplace(std::u16string(folder), folder, std::move(native), *stamp).first->second;
    listing.CheckedIn = Round;
    Names += listing.Count() + kFolderInNames;
    return &listing;
  }

  // A listing at hand that still tells the truth.
  const Listing* Cached(std::u16string_view folder) {
    const auto known = Listings.find(folder);
    if (known == Listings.end()) return nullptr;
    if (known->second.CheckedIn == Round) return &known->second;
    const auto stamp = StampOf(text::ToUtf8(folder));
    if (stamp && known->second.StillHolds(*stamp)) {
      known->second.CheckedIn = Round;
      return &known->second;
    }
    Drop(known);
    return stamp ? List(folder) : nullptr;
  }

  // Listings are made from the folder asked for upwards, so that the folders above a tree are read only when
  // a name in them is spelled differently. Nothing when only the system can tell what is in the folder.
  const Listing* ListingOf(std::u16string_view folder) {
    if (const Listing* cached = Cached(folder)) return cached;
    if (folder.size() == 1) return List(folder);
    for (std::u16string_view above = folder; above.size() > 1;) {
      const std::u16string_view child = above;
      above = ParentOf(above);
      const Listing* listing = Cached(above);
      if (listing == nullptr || !listing->IsReadable()) continue;
      const std::u16string_view step = child.substr(above.size() == 1 ? 1 : above.size() + 1);
      const Entry* entry = listing->Find(step);
      if (entry == nullptr || entry->Kind == EntryKind::File) return &Nowhere;
      if (entry->Name != step)
        return ListingOf(Below(above, entry->Name).append(folder.substr(child.size())));
      break;
    }
    if (const Listing* listed = List(folder)) return listed;
    return ListingBelow(ParentOf(folder), folder);
  }

  // A folder that is not there under this name: another name of it, or of a folder above it, may be right.
  const Listing* ListingBelow(std::u16string_view parent, std::u16string_view folder) {
    const Listing* listing = ListingOf(parent);
    if (listing == nullptr) return nullptr;
    const std::u16string_view step = folder.substr(folder.rfind(u'/') + 1);
    const Entry* entry = listing->Find(step);
    if (entry == nullptr && listing->IsReadable()) return &Nowhere;
    const std::u16string found = Below(listing->Folder(), entry == nullptr ? step : entry->Name);
    return found == folder ? nullptr : ListingOf(found);
  }

  bool FileExists(std::u16string_view path) {
    const std::size_t slash = path.rfind(u'/');
    const std::u16string_view name = path.substr(slash + 1);
    if (name.empty()) return false;
    const Listing* listing = ListingOf(path.substr(0, slash == 0 ? 1 : slash));
    return listing != nullptr ? listing->HoldsFile(name) : MayBeFile(text::ToUtf8(path));
  }
};

FileLookup::FileLookup() : state_(std::make_unique<State>()) {}
FileLookup::~FileLookup() = default;

void FileLookup::Refresh() {
  ++state_->Round;
  if (state_->Names <= kMostNames) return;
  state_->Listings.clear();
  state_->Names = 0;
}

bool FileLookup::FileExists(std::u16string_view path) {
  if (IsPlain(path)) return state_->FileExists(path);
  const Result<std::string> native = posix::ToNative(path);
  if (!native) return false;
  return state_->FileExists(text::ExpandPath(text::FromUtf8(*native), CurrentDirectory()));
}

} // namespace kx::platform
