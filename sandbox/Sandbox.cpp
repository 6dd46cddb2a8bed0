#include "sandbox/Sandbox.h"

#include <cstdlib>
#include <stdexcept>

#include "sandbox/CertificateAuthority.h"
#include "sandbox/JSONNode.h"
#include "sandbox/Server.h"
#include "sandbox/Service.h"
#include "sandbox/TLSContext.h"

namespace quenwick::sandbox {

struct Sandbox::Parts {
  explicit Parts(const Options& options)
      : folder(options.state.empty() ? defaultState() : options.state),
        service(options.scenario.empty() ? defaultScenario() : options.scenario, folder),
        authority(CertificateAuthority::inFolder(folder)),
        context(authority, service.scenario),
        https(options.port, context.handle(), service),
        http(options.httpPort, nullptr, service) {}

  ~Parts() { service.pause.end(); }

  const std::filesystem::path folder;
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

std::string Sandbox::service() const {
  const auto& terms = parts_->service.scenario.behavior();
  return terms ? terms->service : std::string();
}

std::vector<std::string> Sandbox::keys() const {
  const auto& terms = parts_->service.scenario.behavior();
  return terms ? terms->keyTexts() : std::vector<std::string>();
}

std::string Sandbox::events() const {
  const auto& behavior = parts_->service.behavior;
  return behavior ? behavior->journal().events() : R"({"events":[]})";
}

std::string Sandbox::refusals() const {
  const auto& behavior = parts_->service.behavior;
  return behavior ? behavior->journal().refusals() : R"({"refusals":[]})";
}

void Sandbox::forgetEvents() {
  if (parts_->service.behavior) parts_->service.behavior->journal().forget();
}

void Sandbox::setFaults(BehaviorPart part, std::string_view faults) {
  if (!parts_->service.behavior) throw ScenarioError("behavior: is missing");
  try {
    parts_->service.behavior->setFaults(part, faults);
  } catch (const JSONError& error) {
    throw ScenarioError(error.what());
  }
}

std::filesystem::path Sandbox::defaultState() {
  const char* data = std::getenv("XDG_DATA_HOME");
  if (data != nullptr && *data == '/') return std::filesystem::path(data) / "quenwick-sandbox";
  const char* home = std::getenv("HOME");
  if (home == nullptr || *home != '/') throw std::runtime_error("there is no home folder");
  return std::filesystem::path(home) / ".local/share/quenwick-sandbox";
}

}  // namespace quenwick::sandbox
