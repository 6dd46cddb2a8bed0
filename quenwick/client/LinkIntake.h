#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string_view>

#include "quenwick/client/DeeplinkResult.h"
#include "quenwick/client/HandleableLinks.h"
#include "quenwick/client/QWClient.h"
#include "quenwick/client/StoredDeeplink.h"
#include "quenwick/platform/URLSession.h"

namespace quenwick {

/// The links that come to the application, from any thread, and what became of them.
class LinkIntake {
 public:
  static LinkIntake& shared();

  HandleableLinks& handleableLinks() { return handleableLinks_; }

  bool canHandle(std::string_view link) const;
  /// Resolves the link if it can be handled; the outcome goes to the shared client's handlers.
  bool handle(std::string_view link);

  /// Resolves any link. `completion` is called once, on a thread of the library's.
  void resolve(std::string_view link, const ResolveOptions& options,
               std::function<void(const DeeplinkResult&)> completion);

  /// The failure of a link that was not resolved at all.
  static DeeplinkResolutionError failure(std::string_view link, std::string_view reason);

  StoredDeeplink& stored() { return *stored_; }

 private:
  std::shared_ptr<platform::URLSession> session();
  /// On the main actor.
  void deliver(const DeeplinkResult& result);

  HandleableLinks handleableLinks_;
  const std::shared_ptr<StoredDeeplink> stored_ = StoredDeeplink::make();
  std::once_flag hasSession_;
  std::shared_ptr<platform::URLSession> session_;
};

}  // namespace quenwick
