#include "contract/Process.h"

#include "foundation/platform/Process.h"
#include "foundation/text/Exceptions.h"

#include <array>

namespace kx {

namespace {

class TSystemProcess : public IKxProcess {
public:
  explicit TSystemProcess(const TKxEvent& stop) : stop_(stop) {}

  TKxProcessSettings& Settings() override { return settings_; }
  int GetExitCode() const override { return exitCode_; }

  void Run() override {
    const std::array<const TKxEvent*, 2> stops{&stop_, settings_.TerminateEvent};
    const std::size_t count = settings_.TerminateEvent != nullptr ? 2 : 1;
    const auto outcome =
        platform::RunProcess({settings_.Executable, settings_.Parameters, settings_.StartingDirectory, {}},
                             Output(), std::span(stops).first(count));
    if (!outcome) throw EKxException(outcome.Message());
    exitCode_ = outcome->Stopped ? ExitCodeTerminated : outcome->ExitCode;
  }

private:
  platform::ProcessOutput Output() {
    return {[this](std::u16string_view line) {
              if (settings_.OnStdOutData) settings_.OnStdOutData(*this, line);
            },
            [this](std::u16string_view line) {
              if (settings_.OnStdErrData) settings_.OnStdErrData(*this, line);
            }};
  }

  const TKxEvent& stop_;
  TKxProcessSettings settings_;
  int exitCode_ = 0;
};

} // namespace

void RaiseIfStopped(const TKxEvent* stop) {
  if (stop != nullptr && stop->IsRaised()) throw EKxException(std::u16string(TerminatedByUser));
}

std::shared_ptr<IKxProcess> NewSystemProcess(const TKxEvent& stop) {
  return std::make_shared<TSystemProcess>(stop);
}

} // namespace kx
