#pragma once

namespace quenwick::platform::inline v0 {

enum class LogLevel { debug, standard, error };

}  // namespace quenwick::platform::inline v0
