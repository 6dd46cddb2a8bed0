#pragma once

#include <atomic>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>

#include "quenwick/client/Configuration.h"
#include "quenwick/client/Deadline.h"
#include "quenwick/platform/URLSession.h"

namespace quenwick {

/// The library's time in its host's process: configured, in use, shut down. From any thread.
class Lifecycle {
 public:
  static Lifecycle& shared();

  /// Takes the configuration, unless the library is in use. Why it was refused, which is logged
  /// too; none where it was taken.
  std::optional<std::string> configure(Configuration configuration);

  /// Notes that the library is in use, as every call of a host does first. False, with an error
  /// line, once it was shut down.
  bool enter();

  /// What was configured for every session.
  platform::URLSessionConfiguration sessionConfiguration();

  /// Asked to stop when the library is shut down.
  std::stop_token stopToken() { return stop_.get_token(); }

  /// Waits until all that is kept is on disk; whether it is.
  static bool writesAreDone(const Deadline& deadline);

  /// No call into the host begins from now on, and all that is the host's is let go of. Whether all
  /// that runs has ended in time.
  bool shutDown(const Deadline& deadline);

 private:
  std::optional<std::string> take(Configuration configuration);
  platform::URLSessionConfiguration sessionBasis() const;

  std::mutex mutex_;
  Configuration configuration_;
  std::atomic<bool> isInUse_ = false;
  std::atomic<bool> isShutDown_ = false;
  std::stop_source stop_;
};

}  // namespace quenwick
