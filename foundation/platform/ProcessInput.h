// Talks to a program that runs.
#pragma once

#include "foundation/platform/Result.h"

#include <memory>
#include <string_view>

namespace kx::platform {

// A pipe into the standard input of one program (ProcessRequest::Input). One thread may write while another
// one runs the program.
class ProcessInput {
public:
  static Result<std::shared_ptr<ProcessInput>> Open();
  ProcessInput();
  ~ProcessInput(); // closes it
  ProcessInput(const ProcessInput&) = delete;
  ProcessInput& operator=(const ProcessInput&) = delete;

  // All of it, as far as the pipe holds it at once; else as the program reads. Fails when the program reads
  // no more.
  Status Write(std::string_view bytes);
  void Close(); // the program comes to the end of its input

  struct Pipe; // the system's two ends
  Pipe& Ends() { return *ends_; }

private:
  std::unique_ptr<Pipe> ends_;
};

} // namespace kx::platform
