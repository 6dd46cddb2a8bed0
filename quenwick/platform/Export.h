#pragma once

#if defined(__GNUC__)
#define QUENWICK_EXPORT __attribute__((visibility("default")))
#else
#define QUENWICK_EXPORT
#endif

/// What the library's own window toolkit calls in it. Exported, and no promise to anybody else.
#define QUENWICK_TOOLKIT_EXPORT QUENWICK_EXPORT
