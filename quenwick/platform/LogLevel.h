#pragma once

namespace quenwick::platform::inline v0 {

/// How much a line matters. Lines of `debug` are written nowhere unless a log hook takes them.
/// `standard` is the default level: "default" in a line, `QUENWICK_LOG_DEFAULT` in C.
enum class LogLevel { debug, standard, error };

}  // namespace quenwick::platform::inline v0
