#ifndef QUENWICK_C_H
#define QUENWICK_C_H

/// @file
/// The library for every language that can call C. Operations go by selector, arguments and answers
/// are JSON; docs/c-interface.md has examples.
///
/// Unless it says otherwise a function may be called from any thread, several at once, at any time,
/// from within a callback too; none waits for the network, and none lets an exception through. The
/// first one that needs what is kept reads it from the disk. All texts are UTF-8 and end with a
/// zero byte. The library copies what it is given: a text or a struct may go as soon as the call
/// returns.

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

/// Marks what the shared library offers.
#if defined(__GNUC__)
#define QUENWICK_API __attribute__((visibility("default")))
#else
#define QUENWICK_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// The version of the library, "1.2.3". It belongs to the library.
QUENWICK_API const char* quenwick_version(void);

/// Frees a text that the library has handed out; null is let through.
QUENWICK_API void quenwick_free(char* text);

// What a host is called by. Each is a function and what it gets as its first argument. `destroy`,
// which may be null, is called with that once, when the library lets go of it: at once where the
// call that it is given to is refused, later where it is replaced, has done its work or is
// cancelled, and at the latest by `quenwick_shutdown`. It comes on any thread, after the last call
// of the function has returned, and may call the library.

/// Gets the arguments of the callback as a JSON array. `arguments` belongs to the library and lasts
/// as long as the call. Called on the main actor.
typedef struct quenwick_callback {
  /// Gets the context and the arguments.
  void (*call)(void* context, const char* arguments);
  /// The host's; the library only hands it on.
  void* context;
  /// May be null.
  void (*destroy)(void* context);
} quenwick_callback;

/// Runs `work(argument)` later, once, on the thread on which the host's callbacks are to come: its
/// main loop. In the order of the calls and one at a time. Called from any thread, several at once;
/// must not run the work itself. Work that is left when the library has been shut down is to be run
/// all the same: it does nothing but free what it holds.
typedef struct quenwick_executor {
  /// Takes the work and its argument.
  void (*post)(void* context, void (*work)(void* argument), void* argument);
  /// The host's; the library only hands it on.
  void* context;
  /// May be null.
  void (*destroy)(void* context);
} quenwick_executor;

/// How much a line of the log matters; the default level is `LogLevel::standard` in C++.
enum { QUENWICK_LOG_DEBUG = 0, QUENWICK_LOG_DEFAULT = 1, QUENWICK_LOG_ERROR = 2 };

/// Takes what is logged. `message` belongs to the library and lasts as long as the call. Called
/// from any thread, several at once. It may call the library, but neither `quenwick_flush` nor
/// `quenwick_shutdown`; what is logged meanwhile goes to standard error.
typedef struct quenwick_log {
  /// Gets the context, one of the QUENWICK_LOG_ levels and the text.
  void (*write)(void* context, int level, const char* message);
  /// The host's; the library only hands it on.
  void* context;
  /// May be null.
  void (*destroy)(void* context);
} quenwick_log;

/// Sets the configuration of the process, before any selector is performed; called twice before
/// that, the second replaces the first. A JSON object with any of the keys "serviceURL",
/// "trustAnchors" (PEM text), "connectTo" (a list of {"host", "port", "toAddress", "toPort"}),
/// "bundleIdentifier", "bundleVersion", "infoPlist" and "home" (paths), and "keychain"
/// ("automatic", "keyring" or "sealedFile"). An interpreter must set the bundle's identifier and
/// version: its executable is not the application.
///
/// `executor` and `log` may be null: callbacks then come on a thread of the library's, and what is
/// logged goes to standard error. False where it is refused; nothing has changed then, and `error`,
/// if not null, is set to a text that says why, to be freed by `quenwick_free`, else to null.
QUENWICK_API bool quenwick_configure(const char* configuration, const quenwick_executor* executor,
                                     const quenwick_log* log, char** error);

/// Performs the selector with the arguments, a JSON array in the selector's order. A callback has
/// no place in the array: it is given beside it, and null where the selector takes none.
///
/// True where the selector was performed; `answer`, if not null, is then set to its result as JSON,
/// "null" where it has none. False where nothing was done: `answer` is then a text that says what
/// is wrong and where, as in "setQWU:, argument 1 (value): must be text and is an integer".
/// Either is to be freed by `quenwick_free`; null stands for a lack of memory.
QUENWICK_API bool quenwick_perform(const char* selector, const char* arguments,
                                   const quenwick_callback* callback, char** answer);

/// Every selector with its arguments, its callback and its result, and the initialisers of the
/// property records, as JSON. To be freed by `quenwick_free`; null stands for a lack of memory.
QUENWICK_API char* quenwick_selectors(void);

/// Sends a search that still waits for the user to pause, and waits until the service has answered
/// for every event of the shared client and all that is kept is on disk; at most that long. Whether
/// it is so. May be called on the main thread, which it blocks that long.
QUENWICK_API bool quenwick_flush(uint32_t milliseconds);

/// Ends the library in this process: calls nothing of the host's any more when it returns, has
/// called every `destroy`, and waits until all that is kept is on disk; at most that long. Whether
/// all of it has ended. A callback within which it is called is let go of when that returns. Events
/// whose turn to be sent has not come are lost: flush first. Every later call is refused. To be
/// called before an interpreter ends and before a plug-in that uses the library is closed; the
/// library itself stays loaded.
QUENWICK_API bool quenwick_shutdown(uint32_t milliseconds);

#ifdef __cplusplus
}
#endif

#endif
