#pragma once

// The window toolkit of the library: in-app views, the clipboard and the main actor on GTK 4 and
// WebKitGTK 6.0. For applications with windows; those without one need nothing of it.

#include "quenwick/platform/Export.h"

typedef struct _WebKitNetworkSession WebKitNetworkSession;

namespace quenwick::ui::inline v0 {

struct Options {
  /// Lets the person inspect pages by the context menu. For development.
  bool developerTools = false;
  /// Where pages keep cookies and other data, referenced from here on. By default an ephemeral
  /// session of the library's own, which forgets everything when the process ends. Certificates
  /// are verified as that session says; the library's own accepts none that does not hold.
  WebKitNetworkSession* networkSession = nullptr;
};

/// Connects the library with GTK: in-app views are shown over the application's active window,
/// links that lead out of a page are opened by the person's programs, the clipboard can be read,
/// and the host's handlers run in GLib's default main context.
///
/// Called once, on the thread that runs GTK's main loop, when GTK is initialised (in the startup or
/// activate handler of a GtkApplication) and before the first view is shown. False, and nothing
/// changed, the second time.
QUENWICK_EXPORT bool install(const Options& options = {});

}  // namespace quenwick::ui::inline v0
