#pragma once

#include <memory>
#include <utility>

#include "quenwick/platform/URLSession.h"

namespace quenwick {

/// Owns the session that a requester loads with.
class APISessionManager {
 public:
  explicit APISessionManager(platform::URLSessionConfiguration configuration)
      : session_(platform::URLSession::make(std::move(configuration))) {}

  /// Without a session, requests end without an answer.
  explicit APISessionManager(std::shared_ptr<platform::URLSession> session)
      : session_(std::move(session)) {}

  const std::shared_ptr<platform::URLSession>& session() const { return session_; }

 private:
  std::shared_ptr<platform::URLSession> session_;
};

}  // namespace quenwick
