// One output stream of a tool: a pipe whose bytes come as decoded lines.
#pragma once

#include "foundation/platform/CodePages-win32.h"
#include "foundation/platform/LineSplitter.h"
#include "foundation/platform/Win32.h"

#include <array>
#include <functional>
#include <string_view>

namespace kx::platform::win32 {

struct OutputPipe {
  Handle Read;
  Handle Write; // to be inherited by the tool

  bool IsOpen() const { return Read.IsOpen() && Write.IsOpen(); }
};

// Not open when the system gives none; GetLastError says why.
OutputPipe MakeOutputPipe();

// Reads ahead in the background, so that one thread can wait for this and for other things at once.
class OutputStream {
public:
  OutputStream(Handle pipe,
               const std::function<void(std::u16string_view)>& receiver); // receiver: outlives it
  OutputStream(const OutputStream&) = delete;
  OutputStream& operator=(const OutputStream&) = delete;
  ~OutputStream();

  bool IsOpen() const { return pipe_.IsOpen(); }
  HANDLE WaitHandle() const { return event_.Get(); } // signalled when there is a block

  // At most one block, so that a flood on one stream starves neither the other nor a stop; nothing when none
  // is there.
  void ReadBlock();
  // What is in the pipe now. Its end is not waited for, and a flood from a program left behind not followed.
  void ReadRest();

private:
  void StartReading(std::size_t size);
  // The bytes of the read that was started; 0 when there are none, and at the end of the stream.
  std::size_t TakeBlock(bool wait);
  void Deliver(std::string_view line);

  Handle pipe_;
  Handle event_;
  const std::function<void(std::u16string_view)>& receiver_;
  MachineOutputDecoder decoder_;
  LineSplitter splitter_;
  OVERLAPPED read_{};
  bool reading_ = false;
  std::array<char, 65536> block_; // filled by the system
};

} // namespace kx::platform::win32
