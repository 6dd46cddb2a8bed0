#pragma once

#include "quenwick/logging/QWLogType.h"
#include "quenwick/platform/AnyPublisher.h"
#include "quenwick/platform/Cancellable.h"
#include "quenwick/platform/Error.h"
#include "quenwick/platform/LogLevel.h"
#include "quenwick/platform/TaskHandle.h"
#include "quenwick/platform/URL.h"
#include "quenwick/platform/Value.h"

namespace quenwick::inline v0 {

using platform::AnyPublisher;
using platform::Cancellable;
using platform::Dictionary;
using platform::List;
using platform::LogLevel;
using platform::PlatformError;
using platform::TaskHandle;
using platform::URL;
using platform::Value;

}  // namespace quenwick::inline v0
