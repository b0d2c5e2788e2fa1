// Any bytes as a solution: it opens or is refused with a message.
#include "host/Exceptions.h"
#include "solution/VSNETSLN.h"
#include "text/Encoding.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <thread>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  static const std::string path =
      std::filesystem::temp_directory_path() / ("kx-fuzz-" + std::to_string(getpid()) + ".sln");
  static kx::TKxEvent stop;
  // Dependencies in a circle are looked at for ever; this ends them.
  static std::jthread ticker([](const std::stop_token& over) {
    for (; !over.stop_requested(); std::this_thread::sleep_for(std::chrono::milliseconds(50)))
      stop.Raise();
  });
  stop.Clear();
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  try {
    kx::OpenSolution(kx::text::FromUtf8(path), true, &stop);
  } catch (const kx::EKxException&) {
  }
  std::remove(path.c_str());
  return 0;
}
