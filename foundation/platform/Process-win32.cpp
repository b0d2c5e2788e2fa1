#include "foundation/platform/Process.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/OutputStream-win32.h"
#include "foundation/platform/ProcessInput-win32.h"
#include "foundation/platform/Win32.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <map>
#include <memory>
#include <sstream>

namespace kx::platform {

using namespace win32;

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kLookAgain(20);   // for an urgent stop
constexpr std::chrono::milliseconds kLastWords(5000); // for killed processes to be gone
constexpr std::size_t kLongestCommandLine = 32766;

Failure RunFailure(const ProcessRequest& request, std::u16string_view reason) {
  // Some of the system's messages leave a place for the program's name.
  return FileFailure(u"run", request.Executable,
                     text::ReplaceAll(reason, u"%1", text::ExtractFileName(request.Executable)));
}

// The caller's own variables, with those asked for in their place: pairs "name=value", each with its NUL,
// sorted by name, and one more NUL at the end.
std::wstring EnvironmentBlock(const ProcessRequest& request) {
  std::map<std::u16string, std::u16string, text::IgnoreCaseLess> variables;
  const std::unique_ptr<wchar_t, decltype(&FreeEnvironmentStringsW)> own(GetEnvironmentStringsW(),
                                                                         &FreeEnvironmentStringsW);
  const wchar_t* line = own.get();
  for (; line != nullptr && *line != L'\0'; line += std::wstring_view(line).size() + 1) {
    const std::u16string entry = FromWide(line);
    const std::size_t equals = entry.find(u'=', 1); // "=C:=C:\folder" are the current folders of the drives
    if (equals != std::u16string::npos) variables[entry.substr(0, equals)] = entry.substr(equals + 1);
  }
  for (const auto& [name, value] : request.Environment)
    variables[name] = value;
  std::u16string block;
  for (const auto& [name, value] : variables)
    block.append(name).append(u"=").append(value).push_back(u'\0');
  block.push_back(u'\0');
  return ToWide(block);
}

// All that a program starts belongs to it, and ends when this goes away: with us, however we end.
class Job {
public:
  Job() : job_(CreateJobObjectW(nullptr, nullptr)) { LimitBy(JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE); }

  bool Add(HANDLE process) { return AssignProcessToJobObject(job_.Get(), process) != FALSE; }

  // From now on what still runs may stay: servers that a tool leaves behind for the next one.
  void Release() { LimitBy(0); }

  void Kill() {
    TerminateJobObject(job_.Get(), 1);
    for (const auto end = Clock::now() + kLastWords; CountRunning() > 0 && Clock::now() < end;)
      Sleep(1);
  }

private:
  void LimitBy(DWORD flags) {
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = flags;
    SetInformationJobObject(job_.Get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
  }

  DWORD CountRunning() const {
    JOBOBJECT_BASIC_ACCOUNTING_INFORMATION counts{};
    QueryInformationJobObject(job_.Get(), JobObjectBasicAccountingInformation, &counts, sizeof counts,
                              nullptr);
    return counts.ActiveProcesses;
  }

  Handle job_;
};

// The attribute of a start that lets only these handles pass, whatever else may be inherited at that moment.
class InheritedHandles {
public:
  explicit InheritedHandles(std::array<HANDLE, 3> handles) : handles_(handles) {
    SIZE_T size = 0;
    InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    bytes_.resize(size);
    InitializeProcThreadAttributeList(Get(), 1, 0, &size);
    UpdateProcThreadAttribute(Get(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles_.data(), sizeof handles_,
                              nullptr, nullptr);
  }
  InheritedHandles(const InheritedHandles&) = delete;
  InheritedHandles& operator=(const InheritedHandles&) = delete;
  ~InheritedHandles() { DeleteProcThreadAttributeList(Get()); }

  LPPROC_THREAD_ATTRIBUTE_LIST Get() { return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(bytes_.data()); }

private:
  std::array<HANDLE, 3> handles_;
  std::string bytes_;
};

Handle OpenNothing() {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  return Handle(CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                            OPEN_EXISTING, 0, nullptr));
}

// What a start needs to know, looked up and checked.
struct Launch {
  std::vector<std::wstring> Programs; // the paths it may be started by
  std::wstring CommandLine;
  std::wstring Environment;
  std::wstring Folder; // empty: the current one
};

// The system starts programs in folders of short paths only.
Result<std::wstring> FolderToStartIn(std::u16string_view folder) {
  if (folder.empty()) return std::wstring();
  const auto found = ResolveExisting(folder);
  if (!found || !DirectoryExists(*found))
    return Failure{u"Its folder does not exist: " + std::u16string(folder)};
  const std::wstring native = WithLongPrefix(*found);
  if (WithoutLongPrefix(native) == native) return native;
  if (const auto brief = ShortForm(native)) return WithoutLongPrefix(*brief);
  return Failure{u"Windows cannot start programs in a folder with so long a path: " + std::u16string(folder)};
}

// In the order in which they are tried. Few tools bear a path of their own that is long or has the prefix,
// but not every system starts the short form without it.
std::vector<std::wstring> PathsToStart(std::u16string_view program) {
  const std::wstring native = WithLongPrefix(program);
  const auto brief = WithoutLongPrefix(native) == native ? std::nullopt : ShortForm(native);
  return brief ? std::vector{WithoutLongPrefix(*brief), *brief, native} : std::vector{native};
}

Result<Launch> Prepare(const ProcessRequest& request) {
  const auto program = ResolveExisting(request.Executable);
  if (!program) return RunFailure(request, Reason(ERROR_FILE_NOT_FOUND));
  Result<std::wstring> folder = FolderToStartIn(request.WorkingDirectory);
  if (!folder) return RunFailure(request, folder.Message());
  std::u16string commandLine = u"\"" + *program + u"\"";
  if (!request.Arguments.empty()) commandLine.append(u" ").append(request.Arguments);
  if (commandLine.size() > kLongestCommandLine)
    return RunFailure(request, u"Its command line is longer than the 32766 characters that Windows allows");
  return Launch{PathsToStart(*program), ToWide(commandLine), EnvironmentBlock(request), *std::move(folder)};
}

// A started program. It is not left behind: what still runs when this goes away is killed.
class Child {
public:
  Child() = default;
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() {
    if (process_.IsOpen()) job_.Kill();
  }

  // The error number, or 0. The program runs only once all it may start is bound to the job.
  DWORD Start(Launch launch, HANDLE in, HANDLE out, HANDLE err) {
    InheritedHandles handles({in, out, err});
    STARTUPINFOEXW startup{};
    startup.StartupInfo.cb = sizeof startup;
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    startup.StartupInfo.hStdInput = in;
    startup.StartupInfo.hStdOutput = out;
    startup.StartupInfo.hStdError = err;
    startup.lpAttributeList = handles.Get();
    const DWORD console = HasConsole() ? 0 : CREATE_NO_WINDOW;
    const DWORD flags = CREATE_SUSPENDED | CREATE_NEW_PROCESS_GROUP | CREATE_UNICODE_ENVIRONMENT |
                        EXTENDED_STARTUPINFO_PRESENT | console;
    PROCESS_INFORMATION info{};
    BOOL started = FALSE;
    for (const std::wstring& program : launch.Programs) {
      started =
          CreateProcessW(program.c_str(), launch.CommandLine.data(), nullptr, nullptr, TRUE, flags,
                         launch.Environment.data(), launch.Folder.empty() ? nullptr : launch.Folder.c_str(),
                         &startup.StartupInfo, &info);
      if (started != FALSE || GetLastError() != ERROR_FILE_NOT_FOUND) break;
    }
    if (started == FALSE) return GetLastError();
    process_ = Handle(info.hProcess);
    group_ = info.dwProcessId;
    const Handle thread(info.hThread);
    if (job_.Add(process_.Get()) && ResumeThread(thread.Get()) != static_cast<DWORD>(-1)) return 0;
    const DWORD error = GetLastError();
    TerminateProcess(process_.Get(), 1);
    return error;
  }

  HANDLE Process() const { return process_.Get(); }
  bool HasEnded() const { return WaitForSingleObject(process_.Get(), 0) == WAIT_OBJECT_0; }

  // False when it cannot hear us.
  bool AskToEnd() { return GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, group_) != FALSE; }

  void KillAll() { job_.Kill(); }

  // The exit code of a program that has ended. What it left behind may stay.
  int Finish() {
    DWORD code = 0;
    GetExitCodeProcess(process_.Get(), &code);
    job_.Release();
    process_.Close();
    return static_cast<int>(code);
  }

private:
  // Without one a console program would open a window.
  static bool HasConsole() { return GetConsoleCP() != 0; }

  Job job_;
  Handle process_;
  DWORD group_ = 0;
};

// Waits on everything at once until the program has ended or a stop was asked for.
class Run {
public:
  Run(Child& child, OutputStream& out, OutputStream& err, std::span<const StopSignal* const> stops)
      : child_(child), out_(out), err_(err), stops_(stops) {}

  // True when the program ended by itself.
  bool UntilEndOrStop() {
    while (!AnyRaised(stops_)) {
      if (child_.HasEnded()) return true;
      WaitAndRead(INFINITE, true);
    }
    return false;
  }

  void UntilEndOr(Clock::time_point deadline) {
    for (auto now = Clock::now(); now < deadline && !child_.HasEnded() && !AnyUrgent(stops_);
         now = Clock::now()) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - now);
      WaitAndRead(static_cast<DWORD>(std::min(left, kLookAgain).count()), false);
    }
  }

private:
  void WaitAndRead(DWORD milliseconds, bool watchStops) {
    waits_.assign({child_.Process()});
    for (const OutputStream* stream : {&out_, &err_}) {
      if (stream->IsOpen()) waits_.push_back(stream->WaitHandle());
    }
    for (const StopSignal* stop : stops_) {
      if (watchStops) waits_.push_back(reinterpret_cast<HANDLE>(stop->WaitHandle()));
    }
    WaitForMultipleObjects(static_cast<DWORD>(waits_.size()), waits_.data(), FALSE, milliseconds);
    out_.ReadBlock();
    err_.ReadBlock();
  }

  Child& child_;
  OutputStream& out_;
  OutputStream& err_;
  std::span<const StopSignal* const> stops_;
  std::vector<HANDLE> waits_;
};

} // namespace

Result<ProcessOutcome> RunProcess(const ProcessRequest& request, const ProcessOutput& output,
                                  std::span<const StopSignal* const> stops) {
  if (AnyRaised(stops)) return ProcessOutcome{0, true};
  Result<Launch> launch = Prepare(request);
  if (!launch) return Failure{launch.Message()};
  OutputPipe outPipe = MakeOutputPipe();
  OutputPipe errPipe = MakeOutputPipe();
  if (!outPipe.IsOpen() || !errPipe.IsOpen()) return RunFailure(request, Reason(GetLastError()));
  Child child;
  Handle nothing = request.Input ? Handle() : OpenNothing();
  Handle& in = request.Input ? request.Input->Ends().Read : nothing;
  const DWORD error = child.Start(*std::move(launch), in.Get(), outPipe.Write.Get(), errPipe.Write.Get());
  in.Close(); // so that writing fails once the program is gone
  if (error != 0) return RunFailure(request, Reason(error));
  outPipe.Write.Close();
  errPipe.Write.Close();

  const auto out = std::make_unique<OutputStream>(std::move(outPipe.Read), output.OnStdOut);
  const auto err = std::make_unique<OutputStream>(std::move(errPipe.Read), output.OnStdErr);
  Run run(child, *out, *err, stops);
  if (!run.UntilEndOrStop()) {
    if (!AnyUrgent(stops) && child.AskToEnd()) run.UntilEndOr(Clock::now() + request.Grace);
    child.KillAll();
    out->ReadRest();
    err->ReadRest();
    return ProcessOutcome{0, true};
  }
  out->ReadRest();
  err->ReadRest();
  return ProcessOutcome{child.Finish(), false};
}

std::u16string FaultOfExitCode(int code) {
  constexpr unsigned severityMask = 0xF0000000U, error = 0xC0000000U;
  const auto number = static_cast<unsigned>(code);
  if ((number & severityMask) != error) return {};
  std::ostringstream hexadecimal;
  hexadecimal << std::uppercase << std::hex << number;
  return u"the exception 0x" + text::FromAscii(hexadecimal.str());
}

} // namespace kx::platform
