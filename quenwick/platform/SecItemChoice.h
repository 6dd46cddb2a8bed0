#pragma once

#include <filesystem>
#include <functional>

#include "quenwick/platform/HostConfiguration.h"

namespace quenwick::platform {

/// Where the install of that folder keeps its secrets, for good: as recorded there, else what
/// `choose` says, which is recorded. Of several processes that choose at once one decides for all.
/// Throws `Error` where nothing can be recorded.
SecItemBackendKind chosenSecItemBackend(const std::filesystem::path& folder,
                                        const std::function<SecItemBackendKind()>& choose);

}  // namespace quenwick::platform
