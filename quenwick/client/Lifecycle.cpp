#include "quenwick/client/Lifecycle.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "quenwick/API/APIService/APIService.h"
#include "quenwick/client/HookLog.h"
#include "quenwick/client/HostCalls.h"
#include "quenwick/client/HostExecutor.h"
#include "quenwick/logging/Logger.h"
#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/KeysThread.h"
#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/MainActor.h"
#include "quenwick/platform/Text.h"
#include "quenwick/platform/WebURL.h"
#include "quenwick/platform/Writer.h"

namespace quenwick {
namespace {

std::optional<platform::URL> webURL(const std::string& text) {
  auto url = platform::URL::parse(text);
  return url && url->host() && platform::hasWebScheme(*url) ? url : std::nullopt;
}

bool isText(const std::optional<std::string>& text) {
  return !text || (!text->empty() && platform::isUTF8(*text));
}

using Path = std::optional<std::filesystem::path>;

/// The path, wherever the process goes afterwards; an empty one where it is none.
Path madeAbsolute(const Path& path) {
  std::error_code error;
  return path ? Path(std::filesystem::absolute(*path, error)) : path;
}

bool isPath(const Path& path) { return !path || !madeAbsolute(path)->empty(); }

/// What of the configuration is no use; none where all of it is.
std::optional<std::string> faultOf(const Configuration& configuration) {
  if (configuration.serviceURL && !webURL(*configuration.serviceURL)) {
    return "serviceURL is no URL of the web";
  }
  const auto& anchors = configuration.trustAnchors;
  if (!anchors.empty() && !platform::holdsCertificate(anchors)) {
    return "trustAnchors holds no certificate";
  }
  if (std::ranges::any_of(configuration.connectTo,
                          [](const auto& entry) { return entry.toAddress.empty(); })) {
    return "an entry of connectTo has no address";
  }
  if (!isText(configuration.bundleIdentifier)) return "bundleIdentifier is no text";
  if (!isText(configuration.bundleVersion)) return "bundleVersion is no text";
  if (!isPath(configuration.infoPlist)) return "infoPlist is no path";
  if (!isPath(configuration.home)) return "home is no path";
  return std::nullopt;
}

std::optional<platform::SecItemBackendKind> backendOf(KeychainKind kind) {
  using Backend = platform::SecItemBackendKind;
  if (kind == KeychainKind::automatic) return std::nullopt;
  return kind == KeychainKind::keyring ? Backend::secretService : Backend::sealedFile;
}

std::shared_ptr<platform::Executor> executorFrom(const Configuration& configuration) {
  const auto& post = configuration.mainExecutor;
  return post ? std::make_shared<HostExecutor>(post) : nullptr;
}

std::shared_ptr<platform::LogSink> sinkFrom(const Configuration& configuration) {
  const auto& hook = configuration.logHook;
  return hook ? std::make_shared<HookLog>(hook) : nullptr;
}

}  // namespace

bool v0::configure(Configuration configuration) {
  return !Lifecycle::shared().configure(std::move(configuration));
}

Lifecycle& Lifecycle::shared() {
  static auto& instance = *new Lifecycle;
  return instance;
}

std::optional<std::string> Lifecycle::configure(Configuration configuration) {
  auto fault = faultOf(configuration);
  if (!fault) fault = take(std::move(configuration));
  // Without the lock: the host's log hook may call the library.
  if (fault) platform::logPlatformError("The configuration was refused: " + *fault);
  return fault;
}

/// What was configured before is destroyed without the lock: it is the host's.
std::optional<std::string> Lifecycle::take(Configuration configuration) {
  std::lock_guard lock(mutex_);
  if (isShutDown_) return "the library was shut down";
  if (isInUse_ || !platform::configureHost({.bundleIdentifier = configuration.bundleIdentifier,
                                            .bundleVersion = configuration.bundleVersion,
                                            .infoPlist = madeAbsolute(configuration.infoPlist),
                                            .home = madeAbsolute(configuration.home),
                                            .keychain = backendOf(configuration.keychain)})) {
    return "the library is in use already";
  }
  std::swap(configuration_, configuration);
  // Another one's stays where neither this one nor the last names one.
  if (configuration_.mainExecutor || configuration.mainExecutor) {
    platform::MainActor::setExecutor(executorFrom(configuration_));
  }
  if (configuration_.logHook || configuration.logHook) {
    platform::setLogSink(sinkFrom(configuration_));
  }
  auto service = configuration_.serviceURL ? webURL(*configuration_.serviceURL) : std::nullopt;
  APIService::setShared(std::make_shared<APIService>(
      service ? APIService::Host::custom(*service) : APIService::Host::production(),
      sessionBasis()));
  return std::nullopt;
}

bool Lifecycle::enter() {
  if (isShutDown_) {
    platform::logPlatformError("A call was refused: the library was shut down");
    return false;
  }
  isInUse_.store(true, std::memory_order_relaxed);
  return true;
}

platform::URLSessionConfiguration Lifecycle::sessionConfiguration() {
  std::lock_guard lock(mutex_);
  return sessionBasis();
}

platform::URLSessionConfiguration Lifecycle::sessionBasis() const {
  platform::URLSessionConfiguration session;
  session.additionalTrustAnchors = configuration_.trustAnchors;
  for (const auto& [host, port, toAddress, toPort] : configuration_.connectTo) {
    session.connectTo.push_back({host, port, toAddress, toPort});
  }
  return session;
}

bool Lifecycle::writesAreDone(const Deadline& deadline) {
  bool isDone = platform::writer().drain(deadline.left());
  return platform::keysThread().drain(deadline.left()) && isDone;
}

bool Lifecycle::shutDown(const Deadline& deadline) {
  isShutDown_ = true;
  // That something was cut short is what the host asked for: only what goes wrong with the platform
  // is worth a line from here on, on standard error.
  SharedLogger::setEnabledLogTypes(QWLogType::none);
  stop_.request_stop();
  bool hasEnded = HostCalls::shared().close(deadline.left());
  platform::setLogSink(nullptr);
  platform::MainActor::setExecutor(nullptr);
  HostCalls::shared().releaseAll();
  Configuration ended;
  std::lock_guard lock(mutex_);
  std::swap(configuration_, ended);
  return hasEnded;
}

}  // namespace quenwick
