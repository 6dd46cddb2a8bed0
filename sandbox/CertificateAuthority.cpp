#include "sandbox/CertificateAuthority.h"

#include <chrono>

#include "sandbox/Scenario.h"
#include "sandbox/StateFolder.h"

namespace quenwick::sandbox {
namespace {

using std::chrono::days;

Certificate makeAuthority() {
  return makeCertificate({.name = "Quenwick Sandbox Authority",
                          .from = -days(1),
                          .to = days(3650),
                          .isAuthority = true},
                         nullptr);
}

CertificateTerms terms(std::vector<std::string> hosts, days from, days to) {
  return {.name = "Quenwick Sandbox", .hosts = std::move(hosts), .from = from, .to = to};
}

}  // namespace

CertificateAuthority CertificateAuthority::inFolder(const std::filesystem::path& path) {
  const StateFolder folder(path);
  Certificate own = folder.readAuthority();
  if (!own.isUsable()) {
    own = makeAuthority();
    folder.writeAuthority(own);
  }
  return CertificateAuthority(std::move(own), folder.authorityFile());
}

CertificateAuthority CertificateAuthority::temporary() {
  return CertificateAuthority(makeAuthority());
}

Certificate CertificateAuthority::certificate(const std::vector<std::string>& hosts) const {
  return makeCertificate(terms(hosts, -days(1), days(90)), &own_);
}

Certificate CertificateAuthority::faultyCertificate(CertificateFault fault,
                                                    const std::vector<std::string>& hosts) const {
  switch (fault) {
    case CertificateFault::wrongHost:
      return certificate({"another-host.example"});
    case CertificateFault::expired:
      return makeCertificate(terms(hosts, -days(30), -days(1)), &own_);
    case CertificateFault::notYetValid:
      return makeCertificate(terms(hosts, days(1), days(30)), &own_);
    case CertificateFault::unknownIssuer:
      return temporary().certificate(hosts);
  }
  return certificate(hosts);
}

}  // namespace quenwick::sandbox
