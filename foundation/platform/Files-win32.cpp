#include "foundation/platform/Files.h"
#include "foundation/platform/Spool.h"
#include "foundation/platform/StopSignal.h"
#include "foundation/platform/System.h"
#include "foundation/platform/Win32.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <aclapi.h>
#include <algorithm>
#include <array>

namespace kx::platform {

using namespace win32;

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr std::u16string_view kFolder = u"It is a folder";
constexpr std::u16string_view kNoRegularFile = u"It is not a regular file";
constexpr std::u16string_view kReadOnly = u"It is read-only";

// Empty where a step succeeded, else why it did not.
using Refusal = std::u16string;

// The access rules of a file, as they are read and set.
class AccessRules {
public:
  explicit AccessRules(const std::wstring& native) {
    // A volume without access rules gives none.
    GetNamedSecurityInfoW(native.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                          &rules_, nullptr, &descriptor_);
  }
  AccessRules(const AccessRules&) = delete;
  AccessRules& operator=(const AccessRules&) = delete;
  ~AccessRules() { LocalFree(descriptor_); }

  Refusal ApplyTo(std::wstring native) const {
    if (rules_ == nullptr) return {};
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    GetSecurityDescriptorControl(descriptor_, &control, &revision);
    const DWORD inherits = (control & SE_DACL_PROTECTED) != 0 ? PROTECTED_DACL_SECURITY_INFORMATION
                                                              : UNPROTECTED_DACL_SECURITY_INFORMATION;
    const DWORD error =
        SetNamedSecurityInfoW(native.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION | inherits, nullptr,
                              nullptr, rules_, nullptr);
    const bool kept =
        error == ERROR_SUCCESS || error == ERROR_NOT_SUPPORTED || error == ERROR_INVALID_FUNCTION;
    return kept ? Refusal() : Reason(error);
  }

private:
  PACL rules_ = nullptr;
  PSECURITY_DESCRIPTOR descriptor_ = nullptr;
};

Refusal CopyStream(const std::wstring& from, const std::wstring& to) {
  const Handle source(CreateFileW(from.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
  const Handle copy(CreateFileW(to.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
  if (!source.IsOpen() || !copy.IsOpen()) return Reason(GetLastError());
  std::array<char, 65536> block;
  for (;;) {
    DWORD count = 0;
    if (::ReadFile(source.Get(), block.data(), static_cast<DWORD>(block.size()), &count, nullptr) == FALSE)
      return Reason(GetLastError());
    if (count == 0) return {};
    if (Refusal refusal = WriteAll(copy.Get(), {block.data(), count}); !refusal.empty()) return refusal;
  }
}

// All but the content proper, which has no name ("::$DATA"). A volume without such streams names none.
Refusal CopyStreams(const std::wstring& from, const std::wstring& to) {
  WIN32_FIND_STREAM_DATA stream{};
  const HANDLE found = FindFirstStreamW(from.c_str(), FindStreamInfoStandard, &stream, 0);
  if (found == INVALID_HANDLE_VALUE) return {};
  Refusal refusal;
  do {
    const std::wstring name = stream.cStreamName;
    if (!name.starts_with(L"::")) refusal = CopyStream(from + name, to + name);
  } while (refusal.empty() && FindNextStreamW(found, &stream) != FALSE);
  FindClose(found);
  return refusal;
}

// Not while somebody has it open, nor when it is about to be put in place.
void RemoveIfAbandoned(const WIN32_FIND_DATAW& found, const std::u16string& path) {
  if (!IsOld(found.ftLastWriteTime)) return;
  const Handle last(CreateFileW(WithLongPrefix(path).c_str(), DELETE, 0, nullptr, OPEN_EXISTING,
                                FILE_FLAG_DELETE_ON_CLOSE, nullptr));
}

std::u16string AnyTemporaryFile() {
  return text::FromAscii(std::string(kTemporaryFiles.Start).append("*").append(kTemporaryFiles.End));
}

void RemoveAbandonedFiles(const std::u16string& folder) {
  if (!IsFirstVisit(text::ToUtf8(folder))) return;
  const auto visit = [&folder](const WIN32_FIND_DATAW& found) {
    const std::u16string name = FromWide(found.cFileName);
    if (kTemporaryFiles.Has(text::ToUtf8(name))) RemoveIfAbandoned(found, text::JoinPath(folder, name));
  };
  ForEachEntry(WithLongPrefix(text::JoinPath(folder, AnyTemporaryFile())), visit);
}

// A new file beside the one it is for; it vanishes again unless it was put in place. No interrupt ends the
// program meanwhile.
class TemporaryFile {
public:
  explicit TemporaryFile(std::u16string_view folder) {
    do {
      path_ = WithLongPrefix(text::JoinPath(folder, text::FromAscii(kTemporaryFiles.New())));
      file_ = Handle(CreateFileW(path_.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                 CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    } while (!file_.IsOpen() && GetLastError() == ERROR_FILE_EXISTS);
    if (!file_.IsOpen()) error_ = Reason(GetLastError());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    file_.Close();
    if (placed_ || !error_.empty()) return;
    SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_NORMAL);
    DeleteFileW(path_.c_str());
  }

  const Refusal& Error() const { return error_; }

  Refusal Write(std::string_view bytes) { return WriteAll(file_.Get(), bytes); }

  // Makes all of it durable. `times`, when it is given, is another file's, whose last change becomes that of
  // this one.
  Refusal Finish(const WIN32_FILE_ATTRIBUTE_DATA* times = nullptr) {
    if (times != nullptr) SetFileTime(file_.Get(), nullptr, nullptr, &times->ftLastWriteTime);
    Refusal refusal = FlushFileBuffers(file_.Get()) == FALSE ? Reason(GetLastError()) : Refusal();
    file_.Close();
    return refusal;
  }

  // Time of creation, attributes and access rules, and what else stands in the file under names of its own.
  Refusal TakeOverFrom(const std::wstring& old) {
    WIN32_FILE_ATTRIBUTE_DATA info{};
    if (GetFileAttributesExW(old.c_str(), GetFileExInfoStandard, &info) == FALSE)
      return Reason(GetLastError());
    SetFileTime(file_.Get(), &info.ftCreationTime, nullptr, nullptr);
    if (Refusal refusal = CopyStreams(old, path_); !refusal.empty()) return refusal;
    constexpr DWORD kept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
    SetFileAttributesW(path_.c_str(), (info.dwFileAttributes & kept) | FILE_ATTRIBUTE_ARCHIVE);
    return AccessRules(old).ApplyTo(path_);
  }

  // One step for the file system: the old file or the new one stands under the name at any time. (The
  // system's ReplaceFile first moves the old one away.) Scanners and indexers look into a file just made for
  // a moment.
  Refusal RenameTo(const std::wstring& target) { return Place(target, MOVEFILE_REPLACE_EXISTING); }
  // Never replaces anything: nothing then, and IsPlaced tells.
  Refusal PlaceAsNew(const std::wstring& target) {
    Refusal refusal = Place(target, 0);
    return GetFileAttributesW(target.c_str()) != INVALID_FILE_ATTRIBUTES ? Refusal() : refusal;
  }
  bool IsPlaced() const { return placed_; }

private:
  Refusal Place(const std::wstring& target, DWORD how) {
    constexpr int mostTries = 10;
    DWORD error = ERROR_SUCCESS;
    for (int i = 0; i < mostTries && !placed_; ++i) {
      if (i > 0) Sleep(50);
      placed_ = MoveFileExW(path_.c_str(), target.c_str(), how | MOVEFILE_WRITE_THROUGH) != FALSE;
      error = placed_ ? ERROR_SUCCESS : GetLastError();
      if (error != ERROR_ACCESS_DENIED && error != ERROR_SHARING_VIOLATION) break;
    }
    if (placed_) return {};
    // Writing to the target was allowed a moment ago.
    return Reason(error == ERROR_ACCESS_DENIED ? ERROR_SHARING_VIOLATION : error);
  }

  SaveScope save_;
  std::wstring path_;
  Handle file_;
  Refusal error_;
  bool placed_ = false;
};

// Why an existing file must not be replaced; empty when it may.
Refusal RefusalToReplace(const std::wstring& native, DWORD attributes) {
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return Refusal(kFolder);
  if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) return Refusal(kReadOnly);
  const Handle file(
      CreateFileW(native.c_str(), GENERIC_WRITE | DELETE, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
  if (!file.IsOpen()) return Reason(GetLastError());
  BY_HANDLE_FILE_INFORMATION info{};
  const bool isKnown = GetFileInformationByHandle(file.Get(), &info) != FALSE;
  return isKnown && info.nNumberOfLinks > 1 ? SeveralNames(info.nNumberOfLinks) : Refusal();
}

// Where a link leads to; the path as it is when it is none.
Result<std::wstring> FollowLink(const std::wstring& native, DWORD attributes) {
  if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return native;
  const Handle file(
      CreateFileW(native.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  const auto target = TextOf([&](wchar_t* buffer, DWORD size) {
    return GetFinalPathNameByHandleW(file.Get(), buffer, size, VOLUME_NAME_DOS);
  });
  return target ? Result(*target) : Failure{Reason(GetLastError())};
}

Status WriteTo(TemporaryFile& file, const WriteContent& content) {
  return content([&file](std::string_view bytes) -> Status {
    Refusal refusal = file.Write(bytes);
    return refusal.empty() ? Status(Done{}) : Failure{std::move(refusal)};
  });
}

// Without content all but the writing is done. `target` is no link.
Refusal Replace(const std::wstring& target, const WriteContent& content) {
  if (IsDevice(target)) return Refusal(kNoRegularFile);
  const DWORD attributes = GetFileAttributesW(target.c_str());
  const bool exists = attributes != INVALID_FILE_ATTRIBUTES;
  if (!exists && GetLastError() != ERROR_FILE_NOT_FOUND) return Reason(GetLastError());
  Refusal refusal = exists ? RefusalToReplace(target, attributes) : Refusal();
  if (!refusal.empty()) return refusal;

  const std::u16string folder = text::ExtractFileDir(FromWide(target));
  if (content) RemoveAbandonedFiles(folder);
  TemporaryFile temporary(folder);
  refusal = temporary.Error();
  if (refusal.empty() && exists) refusal = temporary.TakeOverFrom(target);
  if (!refusal.empty() || !content) return refusal;
  if (const auto written = WriteTo(temporary, content); !written) return written.Message();
  refusal = temporary.Finish();
  return refusal.empty() ? temporary.RenameTo(target) : refusal;
}

// True when it was made. The traits of `like` when it exists; then its time, too, when asked.
Result<bool> MakeNew(const std::wstring& target, std::string_view bytes, const std::wstring& like,
                     bool withTime) {
  if (IsDevice(target)) return Failure{std::u16string(kNoRegularFile)};
  if (GetFileAttributesW(target.c_str()) != INVALID_FILE_ATTRIBUTES) return false;
  WIN32_FILE_ATTRIBUTE_DATA info{};
  const bool isLike =
      !like.empty() && GetFileAttributesExW(like.c_str(), GetFileExInfoStandard, &info) != FALSE;
  TemporaryFile temporary(text::ExtractFileDir(FromWide(target)));
  Refusal refusal = temporary.Error();
  if (refusal.empty() && isLike) refusal = temporary.TakeOverFrom(like);
  if (refusal.empty()) refusal = temporary.Write(bytes);
  if (refusal.empty()) refusal = temporary.Finish(isLike && withTime ? &info : nullptr);
  if (refusal.empty()) refusal = temporary.PlaceAsNew(target);
  if (!refusal.empty()) return Failure{std::move(refusal)};
  return temporary.IsPlaced();
}

Refusal MakeFolders(const std::u16string& full) {
  const std::wstring native = WithLongPrefix(full);
  if (CreateDirectoryW(native.c_str(), nullptr) != FALSE) return {};
  DWORD error = GetLastError();
  const DWORD attributes = GetFileAttributesW(native.c_str());
  const bool exists = attributes != INVALID_FILE_ATTRIBUTES;
  if (exists && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return {};
  if (exists || error != ERROR_PATH_NOT_FOUND) return Reason(error);
  const std::u16string folder = text::ExtractFileDir(full);
  if (folder.size() >= full.size()) return Reason(error);
  Refusal refusal = MakeFolders(folder);
  if (!refusal.empty()) return refusal;
  return CreateDirectoryW(native.c_str(), nullptr) == FALSE ? Reason(GetLastError()) : Refusal();
}

Status StatusOf(const Refusal& refusal, std::u16string_view action, std::u16string_view path) {
  if (!refusal.empty()) return FileFailure(action, path, refusal);
  return Done{};
}

bool IsProgram(const std::u16string& path) {
  return FileExists(path) && !IsDevice(ToWide(path));
}

} // namespace

Refusal win32::WriteAll(HANDLE file, std::string_view bytes) {
  constexpr std::size_t most = std::size_t{1} << 30;
  while (!bytes.empty()) {
    DWORD written = 0;
    const auto size = static_cast<DWORD>(std::min(bytes.size(), most));
    if (WriteFile(file, bytes.data(), size, &written, nullptr) == FALSE) return Reason(GetLastError());
    bytes.remove_prefix(written);
  }
  return {};
}

Result<std::wstring> win32::RealPathForWriting(std::u16string_view path) {
  Result<std::wstring> native = ToNative(path);
  if (!native) return native;
  const DWORD attributes = GetFileAttributesW(native->c_str());
  return attributes == INVALID_FILE_ATTRIBUTES ? native : FollowLink(*native, attributes);
}

struct FileReader::State {
  Handle File;
  std::u16string Path;
  std::uint64_t Size = 0;
};

FileReader::FileReader(std::unique_ptr<State> state) : state_(std::move(state)) {}
FileReader::FileReader(FileReader&&) noexcept = default;
FileReader& FileReader::operator=(FileReader&&) noexcept = default;
FileReader::~FileReader() = default;

// Others may write, rename and delete meanwhile: reading is in nobody's way.
Result<FileReader> FileReader::Open(std::u16string_view path) {
  const auto fail = [&](std::u16string_view reason) { return FileFailure(u"open file", path, reason); };
  const Result<std::wstring> native = ToNative(path);
  if (!native) return fail(native.Message());
  // Looked at before it is opened: opening a pipe or a device may wait for others, or do something.
  if (IsDevice(*native)) return fail(kNoRegularFile);
  if (DirectoryExists(path)) return fail(kFolder);
  Handle file(CreateFileW(native->c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                          FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  if (!file.IsOpen()) return fail(Reason(GetLastError()));
  if (GetFileType(file.Get()) != FILE_TYPE_DISK) return fail(kNoRegularFile);
  LARGE_INTEGER size{};
  if (GetFileSizeEx(file.Get(), &size) == FALSE) return fail(Reason(GetLastError()));
  return FileReader(std::make_unique<State>(
      State{std::move(file), std::u16string(path), static_cast<std::uint64_t>(size.QuadPart)}));
}

std::uint64_t FileReader::Size() const {
  return state_->Size;
}

Result<std::size_t> FileReader::Read(char* buffer, std::size_t size) {
  constexpr std::size_t most = std::size_t{1} << 30;
  DWORD count = 0;
  if (::ReadFile(state_->File.Get(), buffer, static_cast<DWORD>(std::min(size, most)), &count, nullptr) ==
      FALSE)
    return FileFailure(u"read file", state_->Path, Reason(GetLastError()));
  return std::size_t{count};
}

Status FileReader::Rewind() {
  const bool done = SetFilePointerEx(state_->File.Get(), {}, nullptr, FILE_BEGIN) != FALSE;
  return StatusOf(done ? Refusal() : Reason(GetLastError()), u"read file", state_->Path);
}

Status SaveFileInPieces(std::u16string_view path, const WriteContent& content) {
  const Result<std::wstring> native = RealPathForWriting(path);
  return StatusOf(native ? Replace(*native, content) : native.Message(), u"write file", path);
}

Result<bool> SaveNew(std::u16string_view path, std::string_view bytes, std::u16string_view like,
                     bool withTime) {
  const Result<std::wstring> native = ToNative(path);
  if (!native) return FileFailure(u"create file", path, native.Message());
  const Result<std::wstring> likeNative = like.empty() ? Result(std::wstring()) : ToNative(like);
  auto made = MakeNew(*native, bytes, likeNative ? *likeNative : std::wstring(), withTime);
  if (!made) return FileFailure(u"create file", path, made.Message());
  return made;
}

Result<std::vector<FolderEntry>> ListUnsorted(std::u16string_view path) {
  const Result<std::u16string> full = FullPath(path);
  if (!full || !DirectoryExists(path)) return FileFailure(u"list folder", path, u"It does not exist.");
  std::vector<FolderEntry> entries;
  const auto visit = [&entries](const WIN32_FIND_DATAW& found) {
    const std::u16string name = FromWide(found.cFileName);
    // A name that is no well-formed text has another one here.
    if (name != u"." && name != u"..")
      entries.push_back(
          {text::FromUtf8(text::ToUtf8(name)), (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0});
  };
  const DWORD error = ForEachEntry(WithLongPrefix(text::JoinPath(*full, u"*")), visit);
  if (error != 0) return FileFailure(u"list folder", path, Reason(error));
  return entries;
}

// A scanner may have a file open for a moment.
void RemoveTree(const std::filesystem::path& folder) noexcept try {
  std::error_code error;
  std::filesystem::remove_all(folder, error);
  if (error) std::filesystem::remove_all(folder, error);
} catch (const std::bad_alloc&) { // it stays, as what cannot be removed does
}

Status CreateDirectories(std::u16string_view path) {
  const Result<std::u16string> full = FullPath(path);
  if (!full) return FileFailure(u"create folder", path, full.Message());
  return StatusOf(MakeFolders(text::ExcludeTrailingPathDelimiter(*full)), u"create folder", path);
}

Status RemoveFile(std::u16string_view path) {
  const Result<std::wstring> native = ToNative(path);
  if (!native) return FileFailure(u"delete file", path, native.Message());
  const bool done = DeleteFileW(native->c_str()) != FALSE;
  return StatusOf(done ? Refusal() : Reason(GetLastError()), u"delete file", path);
}

Result<std::u16string> CreateTemporaryFile(std::u16string_view folder, std::u16string_view prefix,
                                           std::u16string_view extension) {
  const Result<std::u16string> full = FullPath(folder);
  if (!full) return FileFailure(u"create a file in", folder, full.Message());
  for (;;) {
    const std::u16string name = std::u16string(prefix) + text::FromAscii(RandomLetters(10));
    std::u16string path = text::JoinPath(*full, name + std::u16string(extension));
    const Handle file(CreateFileW(WithLongPrefix(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file.IsOpen()) return path;
    if (GetLastError() != ERROR_FILE_EXISTS)
      return FileFailure(u"create a file in", folder, Reason(GetLastError()));
  }
}

std::u16string TemporaryDirectory() {
  const auto folder = TextOf([](wchar_t* buffer, DWORD size) { return GetTempPathW(size, buffer); });
  const std::u16string path = text::ExcludeTrailingPathDelimiter(FromWide(folder.value_or(L"C:\\")));
  return ResolveExisting(path).value_or(path); // the variable may hold a short name
}

std::u16string CurrentDirectory() {
  const auto folder = TextOf([](wchar_t* buffer, DWORD size) { return GetCurrentDirectoryW(size, buffer); });
  return FromWide(folder.value_or(L""));
}

std::u16string ProgramFile() {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD size = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (size < path.size()) return FromWide({path.data(), size});
    path.resize(path.size() * 2); // it was cut off
  }
}

std::u16string ConfigDirectory() {
  return EnvironmentVariable(u"APPDATA").value_or(u"");
}

std::u16string StateDirectory() {
  return EnvironmentVariable(u"LOCALAPPDATA").value_or(u"");
}

std::optional<std::u16string> FindProgram(std::u16string_view name) {
  if (name.empty() || name.find_first_of(u"/\\:") != std::u16string_view::npos) return std::nullopt;
  const std::u16string searchPath = EnvironmentVariable(u"PATH").value_or(u"");
  std::u16string endings = EnvironmentVariable(u"PATHEXT").value_or(u".COM;.EXE;.BAT;.CMD");
  const bool ends = std::ranges::any_of(text::Split(endings, u';'), [&](std::u16string_view ending) {
    return !ending.empty() && text::EndsWithIgnoreCase(name, ending);
  });
  if (ends) endings.clear(); // the name is whole
  for (std::u16string_view folder : text::Split(searchPath, u';')) {
    if (folder.starts_with(u'"') && folder.ends_with(u'"') && folder.size() > 1)
      folder = folder.substr(1, folder.size() - 2);
    if (!text::IsAbsolutePath(folder)) continue; // the current folder is nobody's place for programs
    for (const std::u16string_view ending : text::Split(endings, u';')) {
      const std::u16string path = text::JoinPath(folder, std::u16string(name).append(ending));
      if (IsProgram(path)) return ResolveExisting(path);
    }
  }
  return std::nullopt;
}

} // namespace kx::platform
