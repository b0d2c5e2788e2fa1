#include "foundation/platform/Process.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/LineSplitter.h"
#include "foundation/platform/Posix.h"
#include "foundation/platform/ProcessInput-posix.h"
#include "foundation/platform/ProcessTree-posix.h"
#include "foundation/platform/ProcessWatcher-posix.h"
#include "foundation/platform/Spawn-posix.h"
#include "foundation/platform/System.h"
#include "foundation/text/CommandLine.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kx::platform {

using namespace posix;

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kLookAgain(20); // for what the system does not tell

struct Pipe {
  Descriptor Read{};
  Descriptor Write{};

  bool IsOpen() const { return Read.IsOpen() && Write.IsOpen(); }
};

// Not open when there are no descriptors left.
Pipe MakePipe() {
  std::array<int, 2> ends{-1, -1};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) return Pipe{};
  Pipe pipe{AboveStandardStreams(Descriptor(ends[0])), AboveStandardStreams(Descriptor(ends[1]))};
  fcntl(pipe.Read.Get(), F_SETFL, O_NONBLOCK);
  return pipe;
}

// The name of the environment variable that carries the marks of a run and of the runs around it.
constexpr const char* kRunMarkVariable = "KX_RUN_ID";

std::string NewRunMark() {
  static std::atomic<unsigned> runs{0};
  return std::to_string(getpid()) + "-" + std::to_string(++runs) + "-" + RandomLetters(16);
}

std::vector<std::string> EnvironmentFor(const ProcessRequest& request, const std::string& mark) {
  auto wanted = request.Environment;
  const std::u16string markName = text::FromAscii(kRunMarkVariable);
  const std::u16string around = EnvironmentVariable(markName).value_or(u"");
  wanted.emplace_back(markName, around + (around.empty() ? u"" : u":") + text::FromAscii(mark));

  std::vector<std::string> lines;
  for (char** line = environ; line != nullptr && *line != nullptr; ++line)
    lines.emplace_back(*line);
  for (const auto& [name, value] : wanted) {
    const std::string start = text::ToUtf8(name) + "=";
    std::erase_if(lines, [&](const std::string& line) { return line.starts_with(start); });
    lines.push_back(start + text::ToUtf8(value));
  }
  return lines;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts)
    pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

// The descriptors that become a program's own.
struct Streams {
  int In; // negative: it reads nothing
  int Out;
  int Err;
};

// A started program. It is not left behind: what still runs when this goes away is killed.
class Child {
public:
  explicit Child(std::string mark) : tree_{.Mark = std::move(mark)} {}
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() {
    if (process_ > 0) KillAll();
  }

  // The error number, or 0.
  int Start(const std::string& program, std::vector<std::string> arguments,
            std::vector<std::string> environment, const std::string& folder, const Streams& streams) {
    SpawnActions actions;
    if (streams.In < 0) {
      posix_spawn_file_actions_addopen(actions.Get(), STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    } else {
      posix_spawn_file_actions_adddup2(actions.Get(), streams.In, STDIN_FILENO);
    }
    posix_spawn_file_actions_adddup2(actions.Get(), streams.Out, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(actions.Get(), streams.Err, STDERR_FILENO);
    if (!folder.empty()) posix_spawn_file_actions_addchdir_np(actions.Get(), folder.c_str());
    const SpawnAttributes attributes(POSIX_SPAWN_SETPGROUP);
    if (const int error = watcher_.Start(tree_.Mark); error != 0) return error;
    pid_t process = 0;
    const int error = posix_spawn(&process, program.c_str(), actions.Get(), attributes.Get(),
                                  Pointers(arguments).data(), Pointers(environment).data());
    if (error != 0) return error;
    process_ = process;
    tree_.Group = process;
    watcher_.Add(process);
    handle_ = Descriptor(static_cast<int>(syscall(SYS_pidfd_open, process_, 0)));
    return 0;
  }

  int Handle() const {
    return handle_.Get();
  } // readable when the program has ended; negative when not to be had

  // Leaves it to be waited for, so that its number, which is its group's too, stays taken.
  bool HasEnded() const {
    siginfo_t info{};
    const int result = waitid(P_PID, static_cast<id_t>(process_), &info, WEXITED | WNOHANG | WNOWAIT);
    return result == 0 ? info.si_pid != 0 : errno != EINTR;
  }

  void AskToEnd() { AskTreeToEnd(tree_); }

  void KillAll() {
    KillTree(tree_);
    Reap();
  }

  // The exit code of a program that has ended. Nothing when the system has not kept it for us.
  std::optional<int> Reap() {
    watcher_.Dismiss(); // while the number is still taken
    int status = 0;
    const pid_t process = std::exchange(process_, 0);
    while (waitpid(process, &status, 0) < 0) {
      if (errno != EINTR) return std::nullopt;
    }
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  }

private:
  ProcessTree tree_;
  ProcessWatcher watcher_;
  pid_t process_ = 0;
  Descriptor handle_;
};

// One of the two streams: bytes in, decoded lines out.
class OutputStream {
public:
  OutputStream(Descriptor pipe, const std::function<void(std::u16string_view)>& receiver)
      : pipe_(std::move(pipe)), receiver_(receiver),
        splitter_([this](std::string_view line) { Deliver(line); }) {}
  OutputStream(const OutputStream&) = delete;
  OutputStream& operator=(const OutputStream&) = delete;

  int Handle() const { return pipe_.Get(); }

  // At most one block, so that a flood on one stream starves neither the other nor a stop.
  void ReadBlock() { ReadUpTo(block_.size()); }

  // What is in the pipe now. Its end is not waited for, and a flood from a program left behind not followed.
  void ReadRest() {
    int size = 0;
    std::size_t left = ioctl(pipe_.Get(), FIONREAD, &size) == 0 ? static_cast<std::size_t>(size) : 0;
    for (std::size_t count = 1; left > 0 && count > 0; left -= count)
      count = ReadUpTo(left);
    pipe_.Close();
    splitter_.Finish();
  }

private:
  std::size_t ReadUpTo(std::size_t size) {
    const ssize_t count = read(pipe_.Get(), block_.data(), std::min(size, block_.size()));
    if (count > 0) {
      splitter_.Feed({block_.data(), static_cast<std::size_t>(count)});
      return static_cast<std::size_t>(count);
    }
    if (count == 0 || (errno != EINTR && errno != EAGAIN)) pipe_.Close();
    return 0;
  }

  void Deliver(std::string_view line) {
    if (receiver_) receiver_(decoder_.Decode(line));
  }

  Descriptor pipe_;
  const std::function<void(std::u16string_view)>& receiver_;
  text::ToolOutputDecoder decoder_;
  LineSplitter splitter_;
  std::array<char, 65536> block_; // filled by read
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
      WaitAndRead(std::nullopt, true);
    }
    return false;
  }

  void UntilEndOr(Clock::time_point deadline) {
    for (auto now = Clock::now(); now < deadline && !child_.HasEnded() && !AnyUrgent(stops_);
         now = Clock::now()) {
      WaitAndRead(std::min(std::chrono::ceil<std::chrono::milliseconds>(deadline - now), kLookAgain), false);
    }
  }

private:
  void WaitAndRead(std::optional<std::chrono::milliseconds> time, bool watchStops) {
    if (child_.Handle() < 0) time = std::min(time.value_or(kLookAgain), kLookAgain);
    waits_.assign({{out_.Handle(), POLLIN, 0}, {err_.Handle(), POLLIN, 0}, {child_.Handle(), POLLIN, 0}});
    for (const StopSignal* stop : stops_) {
      if (watchStops) waits_.push_back({static_cast<int>(stop->WaitHandle()), POLLIN, 0});
    }
    if (poll(waits_.data(), waits_.size(), time ? static_cast<int>(time->count()) : -1) <= 0) return;
    if (waits_[0].revents != 0) out_.ReadBlock();
    if (waits_[1].revents != 0) err_.ReadBlock();
  }

  Child& child_;
  OutputStream& out_;
  OutputStream& err_;
  std::span<const StopSignal* const> stops_;
  std::vector<pollfd> waits_;
};

Failure RunFailure(const ProcessRequest& request, std::u16string_view reason) {
  return FileFailure(u"run", request.Executable, reason);
}

// Starts the program; fails with the reason why it cannot be.
Status Start(const ProcessRequest& request, const std::string& mark, Child& child, const Streams& streams) {
  const auto program = FindNative(request.Executable);
  if (!program) return RunFailure(request, Reason(ENOENT));
  std::string folder;
  if (!request.WorkingDirectory.empty()) {
    if (!DirectoryExists(request.WorkingDirectory)) {
      return RunFailure(request, u"Its folder does not exist: " + request.WorkingDirectory);
    }
    folder = FindNative(request.WorkingDirectory).value_or("");
  }
  std::vector<std::string> arguments{*program};
  for (const auto& argument : text::SplitCommandLine(request.Arguments)) {
    arguments.push_back(text::ToUtf8(argument));
  }
  const int error =
      child.Start(*program, std::move(arguments), EnvironmentFor(request, mark), folder, streams);
  if (error != 0) return RunFailure(request, Reason(error));
  return Done{};
}

} // namespace

Result<ProcessOutcome> RunProcess(const ProcessRequest& request, const ProcessOutput& output,
                                  std::span<const StopSignal* const> stops) {
  if (AnyRaised(stops)) return ProcessOutcome{0, true};
  Pipe outPipe = MakePipe();
  Pipe errPipe = MakePipe();
  if (!outPipe.IsOpen() || !errPipe.IsOpen()) return RunFailure(request, Reason(errno));
  const std::string mark = NewRunMark();
  Child child(mark);
  const Streams streams{request.Input ? request.Input->Ends().Read.Get() : -1, outPipe.Write.Get(),
                        errPipe.Write.Get()};
  const Status started = Start(request, mark, child, streams);
  if (request.Input) request.Input->Ends().Read.Close(); // so that writing fails once the program is gone
  if (!started) return Failure{started.Message()};
  outPipe.Write.Close();
  errPipe.Write.Close();

  const auto out = std::make_unique<OutputStream>(std::move(outPipe.Read), output.OnStdOut);
  const auto err = std::make_unique<OutputStream>(std::move(errPipe.Read), output.OnStdErr);
  Run run(child, *out, *err, stops);
  if (!run.UntilEndOrStop()) {
    if (!AnyUrgent(stops)) child.AskToEnd();
    run.UntilEndOr(Clock::now() + request.Grace);
    child.KillAll();
    out->ReadRest();
    err->ReadRest();
    return ProcessOutcome{0, true};
  }
  out->ReadRest();
  err->ReadRest();
  const auto exitCode = child.Reap();
  if (!exitCode) return RunFailure(request, u"The system did not say how it ended");
  return ProcessOutcome{*exitCode, false};
}

std::u16string FaultOfExitCode(int code) {
  const int number = code - 128;
  const char* const name = number > 0 ? sigabbrev_np(number) : nullptr;
  if (name == nullptr) return {};
  return u"signal " + text::FromInteger(number) + u" (SIG" + text::FromAscii(name) + u")";
}

} // namespace kx::platform
