// The host that a subcommand opens.
#pragma once

#include "foundation/platform/StopSignal.h"
#include "foundation/text/Exceptions.h"
#include "program/cli/CommonOptions.h"
#include "program/runner/DotNetInfo.h"
#include "program/runner/OptionsStore.h"
#include "program/runner/SecretMask.h"
#include "program/runner/ServiceRegistry.h"
#include "program/runner/WebSites.h"

#include <memory>
#include <string>
#include <vector>

namespace kx::cli {

// What an editor answers to property pages. Both or none; not owned.
struct TDesignServices {
  IKxDesignService* Design = nullptr;
  IKxPropertySetDesignServices* PropertySets = nullptr;
};

// Raises EUsage for what is no drive.
void MapDrives(const std::vector<std::string>& drives);

// The host of one invocation: options store, services and plug-ins. Made once.
class THostSession {
public:
  // Raises EKxException for a broken options file or plug-in, EUsage for wrong options.
  explicit THostSession(const TCommonOptions& options, const TDesignServices& design = {});
  ~THostSession();
  THostSession(const THostSession&) = delete;
  THostSession& operator=(const THostSession&) = delete;

  TOptionsStore& Store() { return store_; }
  TServiceRegistry& Services() { return registry_; }
  platform::StopSignal& Stop() { return stop_; }
  const std::u16string& CommandLine() const { return commandLine_; }
  std::u16string KeyFile() const; // beside the options store
  // What is shown nowhere, by the console and by the runs of this host.
  const std::shared_ptr<TSecretMask>& Secrets() const { return secrets_; }
  // Settings that the options objects filled in by themselves; a failure is reported and not fatal.
  void SaveOptions();

private:
  void CheckOverrides(const std::vector<std::string>& assignments);

  const std::u16string commandLine_;
  TOptionsStore store_;
  TServiceRegistry registry_{store_};
  TDotNetInfo dotNet_{store_};
  TWebSites webSites_{store_};
  platform::StopSignal stop_;
  std::shared_ptr<TSecretMask> secrets_ = std::make_shared<TSecretMask>();
};

} // namespace kx::cli
