#include "sandbox/Sandbox.h"

#include <cstdlib>
#include <stdexcept>

#include "sandbox/CertificateAuthority.h"
#include "sandbox/Server.h"
#include "sandbox/Service.h"
#include "sandbox/TLSContext.h"

namespace quenwick::sandbox {

struct Sandbox::Parts {
  explicit Parts(const Options& options)
      : service(options.scenario.empty() ? defaultScenario() : options.scenario),
        authority(
            CertificateAuthority::inFolder(options.state.empty() ? defaultState() : options.state)),
        context(authority, service.scenario),
        https(options.port, context.handle(), service),
        http(options.httpPort, nullptr, service) {}

  ~Parts() { service.pause.end(); }

  Service service;
  CertificateAuthority authority;
  TLSContext context;
  Server https;
  Server http;
};

Sandbox::Sandbox(const Options& options) : parts_(std::make_unique<Parts>(options)) {}

Sandbox::~Sandbox() = default;

std::uint16_t Sandbox::port() const { return parts_->https.port(); }

std::uint16_t Sandbox::httpPort() const { return parts_->http.port(); }

std::filesystem::path Sandbox::certificateAuthority() const { return parts_->authority.file(); }

std::vector<std::string> Sandbox::hosts() const {
  const auto& hosts = parts_->service.scenario.hosts();
  return {hosts.begin(), hosts.end()};
}

std::vector<std::string> Sandbox::links() const { return parts_->service.scenario.links(); }

std::string Sandbox::requests() const { return parts_->service.recorder.json(); }

void Sandbox::forgetRequests() { parts_->service.recorder.forget(); }

std::filesystem::path Sandbox::defaultState() {
  const char* data = std::getenv("XDG_DATA_HOME");
  if (data != nullptr && *data == '/') return std::filesystem::path(data) / "quenwick-sandbox";
  const char* home = std::getenv("HOME");
  if (home == nullptr || *home != '/') throw std::runtime_error("there is no home folder");
  return std::filesystem::path(home) / ".local/share/quenwick-sandbox";
}

}  // namespace quenwick::sandbox
