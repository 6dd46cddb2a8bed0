// A shop that is opened with a link and reports what its user looks at. For a sandbox:
//   consumer SERVICE CA-FILE PORT HOME
#include <quenwick/quenwick.h>

#include <fstream>
#include <future>
#include <iostream>
#include <iterator>

using namespace quenwick;
using namespace std::chrono_literals;

int main(int count, char** words) {
  if (count != 5) return std::cerr << "usage: consumer SERVICE CA-FILE PORT HOME\n", 2;
  std::ifstream authority(words[2]);
  auto port = static_cast<std::uint16_t>(std::stoi(words[3]));
  configure({.serviceURL = words[1],
             .trustAnchors = {std::istreambuf_iterator<char>(authority), {}},
             .connectTo = {{.toAddress = "127.0.0.1", .toPort = port}},
             .bundleIdentifier = "com.example.consumer",
             .home = words[4]});

  std::promise<DeeplinkResult> opened;
  std::promise<void> enabled;
  QWClient::setEventsEnabledHandler([&] { enabled.set_value(); });
  QWClient::start({
      .apiKey = "demo-key",
      .deeplinkDomains = {"links.shop.example"},
      .deeplinkHandler = [&](const DeeplinkResult& result) { opened.set_value(result); },
  });
  QWClient::handleUniversalLink("https://links.shop.example/p/go/1f");
  auto result = opened.get_future().get();
  if (auto link = std::get_if<std::string>(&result)) std::cout << "opened " << *link << '\n';

  enabled.get_future().get();
  QWClient::productViewed({{"id", 42}, {"price", 3.5}});
  bool isSent = QWClient::flush(10s);
  return QWClient::shutdown(5s) && isSent ? 0 : 1;
}
