#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/Routes.h"

namespace quenwick::sandbox {

class ScenarioNode;

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

 private:
  void readLink(const ScenarioNode& node);
  void readSingleAnswer(const ScenarioNode& node);
  void readCertificate(const std::string& host, const ScenarioNode& node);
  Address readPlace(const ScenarioNode& node);
  void add(const ScenarioNode& node, const Address& address, const Answer& answer);
  void addDefaultEnds();

  Routes routes_;
  std::vector<Address> openEnds_;
  std::vector<std::string> links_;
  std::set<std::string> hosts_;
  std::map<std::string, CertificateFault> certificates_;
};

}  // namespace quenwick::sandbox
