#pragma once

#include "quenwick/platform/Bundle.h"

namespace quenwick {

/// The library's own bundle, embedded in it: its version and its object store's model. Made by
/// the first call, never destroyed.
const platform::Bundle& libraryBundle();

}  // namespace quenwick
