#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/BehaviorTerms.h"
#include "sandbox/Routes.h"

namespace quenwick::sandbox {

class JSONNode;

/// What is wrong with the certificate that a host shows.
enum class CertificateFault { wrongHost, expired, notYetValid, unknownIssuer };

/// What the servers answer, read from JSON. Does not change once it is made.
class Scenario {
 public:
  /// Throws `ScenarioError`.
  explicit Scenario(std::string_view text);

  const Routes& routes() const { return routes_; }
  const std::vector<std::string>& links() const { return links_; }
  const std::set<std::string>& hosts() const { return hosts_; }
  const std::map<std::string, CertificateFault>& certificates() const { return certificates_; }
  const std::optional<BehaviorTerms>& behavior() const { return behavior_; }

 private:
  void read(const JSONNode& root);
  void readBehavior(const JSONNode& node);
  void readLink(const JSONNode& node);
  void readSingleAnswer(const JSONNode& node);
  void readCertificate(const std::string& host, const JSONNode& node);
  Address readPlace(const JSONNode& node);
  void add(const JSONNode& node, const Address& address, const Answer& answer);
  void addDefaultEnds();

  Routes routes_;
  std::vector<Address> openEnds_;
  std::vector<std::string> links_;
  std::set<std::string> hosts_;
  std::map<std::string, CertificateFault> certificates_;
  std::optional<BehaviorTerms> behavior_;
};

}  // namespace quenwick::sandbox
