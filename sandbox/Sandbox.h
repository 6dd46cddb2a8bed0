#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/BehaviorPart.h"
#include "sandbox/ScenarioError.h"

namespace quenwick::sandbox {

struct Options {
  /// Ports on 127.0.0.1; 0 takes any free one.
  std::uint16_t port = 0;
  std::uint16_t httpPort = 0;
  /// Folder of the certificate authority and the secret, made if needed; empty takes
  /// `Sandbox::defaultState()`.
  std::filesystem::path state = {};
  /// The scenario as JSON text; empty takes the built-in one.
  std::string scenario = {};
};

/// The service on this machine: an HTTPS and an HTTP server on 127.0.0.1 that answer as a scenario
/// says and keep what they received. It serves from construction to destruction, on threads of its
/// own that block all signals. All members may be called from any thread.
class Sandbox {
 public:
  /// Both ports are bound when this returns. Throws `ScenarioError` for a bad scenario, and
  /// `std::runtime_error` when a port is taken or the state folder cannot be used.
  explicit Sandbox(const Options& options);

  /// Stops at once: held connections are cut and delayed answers are dropped.
  ~Sandbox();

  Sandbox(const Sandbox&) = delete;
  Sandbox& operator=(const Sandbox&) = delete;

  std::uint16_t port() const;
  std::uint16_t httpPort() const;

  /// The PEM file that a client must trust. It stays the same between starts.
  std::filesystem::path certificateAuthority() const;

  /// Every host name of the scenario, in lower case; the server's certificate names them all.
  std::vector<std::string> hosts() const;

  /// The scenario's links, as it spells them.
  std::vector<std::string> links() const;

  /// The last requests received, at most 100,000, as {"requests":[...]} in the order received.
  std::string requests() const;
  void forgetRequests();

  /// The base URL of the verification handshake, as the scenario spells it, and the API keys that
  /// it accepts; empty if the scenario says nothing of behaviour.
  std::string service() const;
  std::vector<std::string> keys() const;

  /// The last events accepted, and the last requests refused, as {"events":[...]} and
  /// {"refusals":[...]} in the order received; `forgetEvents` forgets both.
  std::string events() const;
  std::string refusals() const;
  void forgetEvents();

  /// What the next right requests get in place of the right answer, as in a scenario's "faults";
  /// an empty list ends it. Throws `ScenarioError`.
  void setFaults(BehaviorPart part, std::string_view faults);

  static std::string_view defaultScenario();

  /// quenwick-sandbox in the user's data folder. Throws `std::runtime_error` without a home.
  static std::filesystem::path defaultState();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace quenwick::sandbox
