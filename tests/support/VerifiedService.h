#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "quenwick/platform/URL.h"
#include "quenwick/platform/Value.h"
#include "tests/support/SandboxService.h"

namespace quenwick::tests {

/// A sandbox with which the library has done the handshake: the shared API service reaches it, the
/// keychain holds its credential.
class VerifiedService {
 public:
  VerifiedService();

  sandbox::Sandbox& sandbox() { return service_->sandbox(); }
  /// Where events go.
  const platform::URL& endpoint() const { return endpoint_; }
  void setFaults(std::string_view faults);
  void expectRefusals() { service_->expectRefusals(); }

  /// The events accepted so far, as the sandbox lists them to who asks it; and the requests
  /// refused.
  std::vector<platform::Dictionary> events();
  std::vector<platform::Dictionary> refusals();

  /// What the sandbox received at the endpoint's host, as paths.
  std::vector<std::string> receivedPaths() const;

  /// Ends the sandbox: what is under way is cut, what comes after finds nobody.
  void end();

 private:
  std::unique_ptr<SandboxService> service_;
  platform::URL endpoint_;
};

/// The value with the keys of every dictionary in order, so that equal ones compare equal.
platform::Value sorted(const platform::Value& value);

}  // namespace quenwick::tests
