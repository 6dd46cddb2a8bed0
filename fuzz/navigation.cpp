// Letters for the view and the navigation, the page's link, and the URL that is navigated to, a
// line each. "b" stands for the in-app browser, "h" for a hidden close button, "u" for a person's
// tap, "m" and "i" for the page itself and a frame in it, "w" for a window of its own.

#include <algorithm>

#include "fuzz/Target.h"
#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/Text.h"
#include "quenwick/platform/URLComponents.h"
#include "quenwick/ui/WebViewController.h"
#include "tests/support/SilentLog.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/ui/RecordingToolkit.h"

namespace quenwick::fuzz {
namespace {

using platform::URL;
using tests::Record;

struct Case {
  bool asInAppBrowser;
  bool hidesCloseButton;
  URL link;
  platform::NavigationAction action;
};

std::vector<platform::URLQueryItem> itemsOf(const URL& url) {
  return platform::URLComponents(url).queryItems();
}

bool carries(const URL& url, std::string_view name) {
  return std::ranges::count(itemsOf(url), name, &platform::URLQueryItem::name) > 0;
}

Record reportOf(const URL& url) {
  const auto items = itemsOf(url);
  auto found = std::ranges::find(items, "buttonID", &platform::URLQueryItem::name);
  if (found == items.end() || !found->value) return {};
  return {"button " + *found->value};
}

/// What a tap on a URL comes to; the first line says whether it goes on in place.
Record outcomeOfTap(const Case& each) {
  const auto& url = each.action.url;
  auto scheme = platform::lowercased(url.scheme());
  bool isWeb = scheme == "http" || scheme == "https";
  bool isInFrame = !each.asInAppBrowser && carries(url, "inFrame");
  bool isForBrowser = isWeb && !each.asInAppBrowser && !isInFrame && carries(url, "inAppBrowser");
  bool isInside = isWeb && (each.asInAppBrowser || isInFrame);

  Record record{isInside ? "allow" : "cancel"};
  if (!isWeb) record.push_back("open " + url.absoluteString());
  for (const auto& line : reportOf(url)) record.push_back(line);
  if (isWeb && !isInside && !isForBrowser) record.push_back("open " + url.absoluteString());
  if (!isWeb || isForBrowser) record.emplace_back("dismiss animated");
  if (isForBrowser) record.emplace_back("present over main");
  return record;
}

class View {
 public:
  explicit View(const Case& each) {
    toolkit_->addWindow("main", true);
    WebViewController::show(each.link, each.asInAppBrowser, each.hidesCloseButton,
                            [this](const std::string& id) { toolkit_->note("button " + id); });
    toolkit_->run();
    controller_ = std::static_pointer_cast<WebViewController>(toolkit_->presented.at(0));
    shown = toolkit_->taken();
  }

  const platform::URLRequest& loaded() const { return toolkit_->loaded; }

  /// What is done, the answer to the engine first, as far as the next view that is shown.
  Record navigate(const platform::NavigationAction& action) {
    Record answers;
    toolkit_->delegate.lock()->webView(
        controller_->webView(), action, [&](platform::NavigationPolicy policy) {
          answers.emplace_back(policy == platform::NavigationPolicy::allow ? "allow" : "cancel");
        });
    toolkit_->run();
    auto record = toolkit_->taken();
    auto next = std::ranges::find(record, "present over main");
    if (next != record.end()) record.erase(next + 1, record.end());
    answers.insert(answers.end(), record.begin(), record.end());
    return answers;
  }

  Record shown;

 private:
  std::shared_ptr<tests::RecordingToolkit> toolkit_ = tests::RecordingToolkit::install();
  std::shared_ptr<WebViewController> controller_;
};

void checkPage(const Case& each, const View& view) {
  auto items = itemsOf(each.link);
  for (const auto& [name, value] :
       {std::pair("qw_viewport_width", "390"), {"qw_viewport_height", "844"}}) {
    items.push_back({name, value});
  }
  items.push_back({"inFrame", std::nullopt});
  const auto& url = *view.loaded().url;
  bool isEmptyQuery = itemsOf(each.link).empty();
  holds(itemsOf(url) == items, "a page's link keeps its items and gains the view's",
        url.absoluteString());
  holds(isEmptyQuery || url.query()->starts_with(*each.link.query()),
        "a page's link keeps its query as it is written", url.absoluteString());
  holds(url.path() == each.link.path() && url.authority() == each.link.authority() &&
            url.fragment() == each.link.fragment(),
        "a page's link leads to the same place", url.absoluteString());
  bool isHidden = std::ranges::count(view.shown, "hide") == 1;
  holds(isHidden || !each.hidesCloseButton, "the host's wish hides the close button");
  holds(!isHidden || each.hidesCloseButton || carries(each.link, "hideCloseButton"),
        "only the host or the link hides the close button", each.link.absoluteString());
}

void check(const Case& each) {
  View view(each);
  checkPage(each, view);
  auto done = view.navigate(each.action);
  std::string shown;
  for (const auto& line : done) shown += line + "\n";
  if (each.action.isUserInitiated) {
    holds(done == outcomeOfTap(each), "a tap does what its URL says", shown);
    return;
  }
  auto scheme = platform::lowercased(each.action.url.scheme());
  bool isOpened =
      std::ranges::any_of(done, [](const auto& line) { return line.starts_with("open"); });
  bool isDocument = scheme == "about" || scheme == "data" || scheme == "blob";
  bool isWeb = scheme == "http" || scheme == "https";
  holds(!isDocument || !isOpened, "a document that nobody tapped is not opened outside", shown);
  holds(!isWeb || each.action.isMainFrame == true || !isOpened,
        "an inner frame opens nothing outside", shown);
  holds(!(isWeb || isDocument) || !each.action.opensNewWindow || done == Record{"cancel"},
        "a window that nobody asked for is refused", shown);
}

void setUp() {
  static tests::TemporaryDirectory home;
  platform::configureHost(
      {.bundleIdentifier = "com.example.fuzz", .bundleVersion = "1", .home = home.path()});
  tests::SilentLog::install();
}

}  // namespace
}  // namespace quenwick::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quenwick;
  [[maybe_unused]] static const bool isSetUp = (fuzz::setUp(), true);
  fuzz::Input input(data, size);
  const auto letters = input.line();
  auto has = [letters](char letter) { return letters.find(letter) != letters.npos; };
  auto link = platform::URL::parse(std::string(input.line()));
  auto target = platform::URL::parse(std::string(input.line()));
  if (!link || !target) return 0;
  std::optional<bool> isMainFrame;
  if (has('m') || has('i')) isMainFrame = has('m');
  fuzz::check({has('b'), has('h'), *link, {*target, has('u'), isMainFrame, has('w')}});
  return 0;
}
