#pragma once

#include <chrono>
#include <concepts>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quenwick/API/Models/OrderCompletedProperties.h"
#include "quenwick/API/Models/ProductProperties.h"
#include "quenwick/API/Models/ProductSearchedProperties.h"
#include "quenwick/client/Configuration.h"
#include "quenwick/client/DeeplinkResult.h"
#include "quenwick/client/OpeningLinks.h"
#include "quenwick/client/PublicTypes.h"
#include "quenwick/platform/Export.h"

namespace quenwick {

class BehaviorEventManager;
class DeeplinkHandlers;
class EventsEnabled;
class LinkIntake;

inline namespace v0 {

/// What `QWClient::start` takes; written with designated initialisers.
struct StartOptions {
  /// The application's key for behaviour events; without one that of its Info.plist, under
  /// "quen_wick_api_key", is taken.
  std::optional<std::string> apiKey = {};
  /// Hosts of the application's links, beside those that its Info.plist lists.
  std::vector<std::string> deeplinkDomains = {};
  /// What the application was launched with; a URL in it is handled.
  LaunchOptions launchOptions = {};
  /// False leaves behaviour events off until `registerForBehaviors` is called.
  bool shouldRegisterForBehaviorEvents = true;
  /// Called on the main actor with the outcome of every link that the application is opened with.
  DeeplinkHandler deeplinkHandler = {};
};

/// What `QWClient::startWithResult` takes.
struct StartWithResultOptions {
  /// As `StartOptions::apiKey`.
  std::optional<std::string> apiKey = {};
  /// As `StartOptions::deeplinkDomains`.
  std::vector<std::string> deeplinkDomains = {};
  /// As `StartOptions::launchOptions`.
  LaunchOptions launchOptions = {};
  /// As `StartOptions::deeplinkHandler`, for callers that cannot take a variant.
  DeeplinkCompatibilityHandler result = {};
};

/// When a resolution is to end, whatever has become of it by then.
struct ResolveOptions {
  /// How long it may take from now; no end of its own where none is given.
  std::optional<std::chrono::nanoseconds> deadline = {};
  /// Ends it when asked to stop.
  std::stop_token stop = {};
};

/// What a host calls, and nothing else. Every operation may be called from any thread, before
/// `start` and after it, any number of times, and none throws. Each returns at once, without
/// waiting for the network: the first one that needs what is kept opens it, and only on an
/// install's first launch waits until its identifier is on disk. `flush` and `shutdown` wait, and
/// say so.
///
/// What fails is logged; outcomes of links reach the host's handlers, on the main actor
/// (`Configuration::mainExecutor`). What a handler throws ends in one error line.
class QUENWICK_EXPORT QWClient {
 public:
  /// The process's client, made on first use.
  static std::shared_ptr<QWClient> shared();
  /// Puts another in its place: its handlers are called from now on, none where it is new, and its
  /// events are enabled by the next registration. Domains, paths and the stored link stay. Null
  /// does nothing.
  static void setShared(std::shared_ptr<QWClient> client);

  /// Makes sure that the install has its identifier: on its first launch the constructor waits
  /// until that is on disk.
  QWClient();
  ~QWClient();
  QWClient(const QWClient&) = delete;
  QWClient& operator=(const QWClient&) = delete;

  /// Starts the library: sets the handler, registers the domains, handles the link that the
  /// application was launched with, and has behaviour events enabled once the service has confirmed
  /// the key, which it does not wait for. Called again it replaces the handler, adds the domains,
  /// handles its launch options anew and registers for events anew.
  static void start(StartOptions options);
  /// The same with a handler that takes a link or an error, which is set beside the other form's:
  /// both are called. Always registers for events.
  static void startWithResult(StartWithResultOptions options);

  /// Has behaviour events enabled once the service has confirmed the key; one error line says why
  /// it did not, and events stay as they are. Every call asks anew, in a task of its own, unless
  /// the answer of the last week is at hand. The handle may be dropped.
  static std::optional<TaskHandle> registerForBehaviors(std::string_view apiKey);
  /// The same with the bundle's key under "quen_wick_api_key"; nothing, and an error line, without
  /// one.
  static std::optional<TaskHandle> registerForBehaviorsFromPlist(
      const Bundle& bundle = Bundle::main());

  /// Of the shared client: called on the main actor whenever its events become enabled, and once
  /// where they are already. One at a time: the next replaces it, an empty one removes it.
  static void setEventsEnabledHandler(std::function<void()> handler);

  /// Sends the events; made on first use.
  BehaviorEventManager& eventManager();

  /// Which categories are logged: all until changed, none after `shutdown`. At any time, also
  /// before `configure`.
  static QWLogType enabledLogTypes();
  /// Sets them, for the whole process, at once. Error lines about the library's own files and
  /// calls are always written.
  static void setEnabledLogTypes(QWLogType types);

  /// @name Links
  /// @{

  /// Adds hosts whose links belong to the application: "shop.example", without scheme, port or
  /// path, compared letter by letter with the link's. They stay for the process; none is ever
  /// removed.
  static void registerDeeplinkDomains(const std::vector<std::string>& domains);
  /// Adds those that the bundle's Info.plist lists under "quen_wick_universal_link_domains", or
  /// under the first of three other spellings that has a list of texts. `start` has done it.
  static void registerDeeplinkDomainsFromPlist(const Bundle& bundle = Bundle::main());
  /// The domains registered so far.
  static std::set<std::string> domains();

  /// Whether the link lies with a registered domain and has a tracking shape or matches one of the
  /// host's handleable paths.
  static bool canHandleURL(std::string_view url);
  /// Resolves a link that the application is opened with, if it can be handled, and says at once
  /// whether it can. Where it resolved it is put into `storedDeeplink`, and then the outcome goes
  /// to the handlers, on the main actor, in the order in which links end; where none is set by then
  /// a line says so. Every call resolves anew.
  static bool handleUniversalLink(std::string_view url);
  /// The link of an activity that browses the web.
  static bool handleUniversalLink(const NSUserActivity& activity);
  /// The first activity that browses the web and has a link.
  static bool handleUniversalLink(const UISceneConnectionOptions& options);
  /// The link under `UIApplicationLaunchOptionsURLKey`. `start` does it with its own.
  static bool handleURLFromLaunchOptions(const LaunchOptions& options);

  /// On the install's first launch: handles the link that the pasteboard holds, as a URL or as a
  /// text that is one, if a window toolkit has brought a pasteboard. Its content is read only where
  /// it says that it has such. Every call of that launch looks anew. `completion`, if given, is
  /// called on the main actor with the link that was looked at, whether or not it can be handled,
  /// and with none where there was none or the launch is a later one. A word counts as a link too,
  /// as of a relative URL: it is handed to `completion`, and a debug line tells it.
  static void checkPasteboardOnInstall(
      std::function<void(const std::optional<std::string>& link)> completion = {});

  /// Handles the first of the pasted items that is a link, an item's URL before its text; whether
  /// that one can be handled. Any text counts as a link that has no blank and nothing else that a
  /// URL cannot have, a single word too: it is looked at, and a debug line tells it.
  static bool paste(const std::vector<NSItemProvider>& itemProviders);

  /// Resolves a link whether or not it can be handled; handlers and `storedDeeplink` hear nothing
  /// of it. `completion` is called on the main actor, once, unless the library is shut down before.
  /// A resolution that is stopped, or past its deadline, ends at once with a failure.
  static void resolve(std::string_view url, DeeplinkHandler completion,
                      const ResolveOptions& options = {});
  /// The same as a future, which never throws and is always fulfilled.
  static std::future<DeeplinkResult> resolve(std::string_view url,
                                             const ResolveOptions& options = {});

  /// Where the last link led that the application was opened with and that resolved, in this
  /// process; none before, and none after `shutdown`.
  static std::optional<std::string> storedDeeplink();
  /// That and its changes, on the main actor: the value of the moment soon after `subscribe`, and
  /// then each new one, until what `subscribe` returned is destroyed.
  static AnyPublisher<std::optional<std::string>> storedDeeplinkPublisher();

  /// Patterns (regular expressions) that make further links of a registered host handleable where
  /// one is found in the link. A host's new list replaces its old one. A pattern that does not
  /// compile is never found, and one error line says so.
  static void addHandleablePaths(const std::map<std::string, std::vector<std::string>>& paths);
  /// Removes the host's patterns; nothing happens where it has none.
  static void removeHandleablePaths(const std::string& host);
  /// Removes the patterns of all hosts.
  static void clearHandleablePaths();
  /// The patterns by host, as they were given.
  static std::map<std::string, std::vector<std::string>> handleablePaths();

  /// The link-user identifier: what the host has set, else what the last link carried.
  static std::optional<std::string> qwU();
  /// Sets it; none removes it. It is on disk within a tenth of a second. What is not UTF-8, or
  /// longer than 1 MiB, is refused with an error line.
  static void setQWU(std::optional<std::string> value);

  /// @}
  /// @name Events
  /// A dictionary is checked, and refused with an error line where it lacks something or holds what
  /// JSON cannot; a moved one is not copied. Events go out in the order of the calls; one offered
  /// while events are not enabled is refused with a line, and what became of each is logged.
  /// @{

  /// A product was looked at.
  static void productViewed(Dictionary dictionary);
  /// The same of a record, whose fields are checked when the program is compiled.
  template <std::same_as<ProductProperties> Properties>
  static void productViewed(Properties properties) {
    productViewedTyped(std::move(properties));
  }
  /// A product was put into the cart.
  static void productAdded(Dictionary dictionary);
  /// The same of a record, whose fields are checked when the program is compiled.
  template <std::same_as<ProductProperties> Properties>
  static void productAdded(Properties properties) {
    productAddedTyped(std::move(properties));
  }
  /// A product was taken out of the cart.
  static void productRemoved(Dictionary dictionary);
  /// The same of a record, whose fields are checked when the program is compiled.
  template <std::same_as<ProductProperties> Properties>
  static void productRemoved(Properties properties) {
    productRemovedTyped(std::move(properties));
  }
  /// An order was placed; a dictionary needs one product at least.
  static void orderCompleted(Dictionary dictionary);
  /// The same of a record, whose fields are checked when the program is compiled.
  template <std::same_as<OrderCompletedProperties> Properties>
  static void orderCompleted(Properties properties) {
    orderCompletedTyped(std::move(properties));
  }
  /// A category was looked at.
  static void categoryViewed(Dictionary dictionary);
  /// The same of a record, whose fields are checked when the program is compiled.
  template <std::same_as<ProductCategory> Properties>
  static void categoryViewed(Properties category) {
    categoryViewedTyped(std::move(category));
  }
  /// Products were searched. Of searches within half a second of each other the last is sent.
  static void productSearched(Dictionary dictionary);
  /// The same of a record, whose fields are checked when the program is compiled.
  template <std::same_as<ProductSearchedProperties> Properties>
  static void productSearched(Properties properties) {
    productSearchedTyped(std::move(properties));
  }
  /// The user is known to the application by that identifier.
  static void identifyUser(std::string_view id);
  /// The same with the link-user identifier; nothing where there is none.
  static void identifyUser();
  /// An event of the application's own.
  static void logEvent(std::string_view name, Dictionary properties = {});

  /// @}
  /// @name In-app views
  /// Shown over the application's active window by a window toolkit (`quenwick::ui::install` brings
  /// GTK's); without one, or for a link that is no URL, an error line is written. `handler` is
  /// called on the main actor with the identifier of a tapped button.
  /// @{

  /// A page of the service, which may carry buttons.
  static void showInAppMessage(std::string_view link, bool hideCloseButton = false,
                               std::function<void(const std::string& buttonID)> handler = {});
  /// An ordinary page.
  static void showInAppBrowser(std::string_view link,
                               std::function<void(const std::string& buttonID)> handler = {});

  /// @}
  /// @name The end
  /// @{

  /// Sends a search that still waits for the user to pause, and waits until the service has
  /// answered for every event of the shared client and all that is kept is on disk; at most for the
  /// duration. Whether it is so. May be called on the main thread, which it blocks that long, and
  /// any number of times.
  static bool flush(std::chrono::nanoseconds atMost);

  /// Ends the library in this process: calls no handler, publisher's receiver or hook any more when
  /// it returns, releases them, ends resolutions, and waits until all that is kept is on disk; at
  /// most for the duration. Whether all of it has ended. A handler may call it, and is itself not
  /// waited for. Events whose turn to be sent has not come are lost: `flush` first. Every later
  /// call is refused with an error line, but for those of the log types; another `shutdown` waits
  /// again.
  static bool shutdown(std::chrono::nanoseconds atMost);

  /// @}

 private:
  friend LinkIntake;
  struct State;

  static bool enter();
  static void productViewedTyped(ProductProperties properties);
  static void productAddedTyped(ProductProperties properties);
  static void productRemovedTyped(ProductProperties properties);
  static void orderCompletedTyped(OrderCompletedProperties properties);
  static void categoryViewedTyped(ProductCategory category);
  static void productSearchedTyped(ProductSearchedProperties properties);
  DeeplinkHandlers& deeplinkHandlers();
  EventsEnabled& eventsEnabled();

  std::shared_ptr<State> state_;
};

}  // namespace v0
}  // namespace quenwick
