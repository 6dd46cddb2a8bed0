#pragma once

#include <memory>
#include <stop_token>

#include "quenwick/platform/FailingPublisher.h"
#include "quenwick/platform/URLSession.h"

namespace quenwick::platform {

/// Loads the request once for every subscriber, who is called on the pool: with the answer, or
/// with the `PlatformError` that the load failed with. A requested stop ends the load with the
/// error of a cancelled one; a subscription that is destroyed ends it without a further call.
FailingPublisher<DataResponse> dataTaskPublisher(const std::shared_ptr<URLSession>& session,
                                                 URLRequest request,
                                                 const std::stop_token& stop = {});

}  // namespace quenwick::platform
