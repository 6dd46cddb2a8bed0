#include "quenwick/client/HandleableLinks.h"

#include <algorithm>

#include "quenwick/deeplink/DeeplinkPath.h"
#include "quenwick/logging/Logger.h"
#include "quenwick/platform/Error.h"
#include "quenwick/platform/System.h"
#include "quenwick/platform/Text.h"

namespace quenwick {
namespace {

constexpr int kEncodedHostVersion = 16;

/// The host as the system's accessor of the time gives it: percent-encoded, or decoded before.
std::string hostOf(const platform::URL& url) {
  auto host = url.host().value_or("");
  if (platform::systemAtLeast(kEncodedHostVersion)) return std::string(host);
  return platform::percentDecoded(host);
}

}  // namespace

void HandleableLinks::insertDomains(const std::vector<std::string>& domains) {
  std::lock_guard lock(mutex_);
  domains_.insert(domains.begin(), domains.end());
}

std::set<std::string> HandleableLinks::domains() const {
  std::lock_guard lock(mutex_);
  return {domains_.begin(), domains_.end()};
}

HandleableLinks::Patterns HandleableLinks::compile(const std::vector<std::string>& texts) {
  Patterns patterns{texts, {}};
  for (const auto& text : texts) {
    try {
      patterns.compiled.push_back(platform::RegularExpression::compile(text));
    } catch (const platform::Error& error) {
      Logger::error(QWLogType::deeplink, "The path pattern " + platform::shown(text) +
                                             " is never found: " + error.localizedDescription());
    }
  }
  return patterns;
}

void HandleableLinks::addPaths(const Paths& paths) {
  for (const auto& [host, texts] : paths) {
    auto patterns = std::make_shared<const Patterns>(compile(texts));
    std::lock_guard lock(mutex_);
    patterns_.insert_or_assign(host, std::move(patterns));
  }
}

void HandleableLinks::removePaths(const std::string& host) {
  std::lock_guard lock(mutex_);
  patterns_.erase(host);
}

void HandleableLinks::clearPaths() {
  std::lock_guard lock(mutex_);
  patterns_.clear();
}

HandleableLinks::Paths HandleableLinks::paths() const {
  Paths paths;
  std::lock_guard lock(mutex_);
  for (const auto& [host, patterns] : patterns_) paths.emplace(host, patterns->texts);
  return paths;
}

bool HandleableLinks::contains(const platform::URL& url) const {
  auto host = hostOf(url);
  if (host.empty()) {
    Logger::debug(QWLogType::deeplink, "Could not extract host from url " + url.absoluteString());
    return false;
  }
  Logger::debug(QWLogType::deeplink, "Found host: " + host);
  {
    std::lock_guard lock(mutex_);
    if (!domains_.contains(host)) return false;
  }
  return DeeplinkPath::path(url) || isFound(url, host);
}

bool HandleableLinks::isFound(const platform::URL& url, std::string_view host) const {
  std::shared_ptr<const Patterns> patterns;
  {
    std::lock_guard lock(mutex_);
    auto found = patterns_.find(host);
    if (found != patterns_.end()) patterns = found->second;
  }
  return patterns && std::ranges::any_of(patterns->compiled, [&](const auto& pattern) {
           return pattern.isFound(url.absoluteString());
         });
}

}  // namespace quenwick
