// Rewriting of AssemblyInfo source files, as the actions see it. The processor itself comes with version
// stamping; until then nothing makes one.
#pragma once

#include <memory>
#include <string_view>

namespace kx {

// Sets attributes of the file that is being processed; they are written when OnProcessFile returns.
class IAssemblyInfoAttributes {
public:
  virtual ~IAssemblyInfoAttributes() = default;
  virtual void SetAttribute(std::u16string_view name, std::u16string_view value) = 0;
};

// The action that stamps, as the processor sees it.
class IAssemblyInfoCallback {
public:
  virtual ~IAssemblyInfoCallback() = default;
  virtual void OnProcessFile(std::u16string_view fileName, IAssemblyInfoAttributes& updater) = 0;
  virtual void AssemblyInfoProcessEntry(std::u16string_view name, std::u16string_view value) = 0;
  virtual void AssemblyInfoProcessMessage(std::u16string_view text) = 0;
};

class IBrannicAssemblyInfoUpdater {
public:
  virtual ~IBrannicAssemblyInfoUpdater() = default;
  virtual void SetCallback(IAssemblyInfoCallback& callback) = 0; // which outlives the updater
  // Reads the file, asks the callback, and with `write` replaces the file. Raises EKxException that names the
  // file.
  virtual void ProcessFile(std::u16string_view fileName, bool write) = 0;
};

class TBrannicAssemblyInfo {
public:
  static std::shared_ptr<IBrannicAssemblyInfoUpdater> Create();
};

} // namespace kx
