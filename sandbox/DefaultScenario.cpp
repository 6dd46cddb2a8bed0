#include <boost/json/serialize.hpp>
#include <boost/json/string.hpp>
#include <string>
#include <utility>

#include "sandbox/Sandbox.h"

namespace quenwick::resources {
extern const std::string_view kSpringPage, kOfferPage, kSizesPage, kLookbookPage, kCarePage;
}  // namespace quenwick::resources

namespace quenwick::sandbox {
namespace {

constexpr std::string_view kDefaultScenario = R"({
  "links": [
    {"link": "https://links.shop.example/p/go/1f",
     "chain": [
       {"status": 302, "to": "https://hop.shop.example/p/rp/deadbeef/url?qw_u=alice"},
       {"status": 307, "to": "https://shop.example/products/42?utm_source=mail"}],
     "end": {"body": "<!doctype html><title>Product 42</title><h1>Product 42</h1>\n"}},

    {"link": "https://links.shop.example/p/rp/deadbeef/url?qw_u=bob",
     "chain": [{"status": 301, "to": "https://shop.example/products/7?qw_u=bob"}]},

    {"link": "https://links.shop.example/p/rpm/0a1b/mail/url",
     "chain": [{"status": 303, "to": "/landing?qw_u=carol"}]},

    {"link": "https://links.shop.example/p/cp/x/c",
     "chain": [{"status": 308, "to": "https://www.shop.example/campaign/spring"}]},

    {"link": "https://links.shop.example/p/go/a5",
     "chain": [
       {"status": 301, "to": "/p/go/00ff"},
       {"status": 302, "to": "../rp/c0ffee/url?qw_u=dave"},
       {"status": 303, "to": "//www.shop.example/sale?qw_u=erin"}]},

    {"link": "https://links.shop.example/p/go/5e0",
     "chain": [
       {"status": 301, "to": "/p/go/5e1?qw_u=u1"},
       {"status": 302, "to": "5e2?qw_u=u2"},
       {"status": 303, "to": "./5e3?qw_u=u3"},
       {"status": 307, "to": "//hop.shop.example/p/rp/00ff/url?qw_u=u4"},
       {"status": 308, "to": "../../../five-statuses"}],
     "end": {"type": "text/plain", "body": "after all five statuses\n"}},

    {"link": "https://links.shop.example/p/go/4a17",
     "chain": [
       {"status": 302, "to": "https://hop.shop.example/offers?qw_hr=1&qw_u=frank"},
       {"status": 302, "to": "https://shop.example/offers"}]},

    {"link": "https://links.shop.example/p/go/a99",
     "chain": [
       {"status": 302, "to": "https://hop.shop.example/p/rp/beef/url?qw_u=grace"},
       {"status": 302, "to": "shopapp://product/42"}]},

    {"link": "https://links.shop.example/p/go/404",
     "chain": [{"status": 302, "to": "https://shop.example/gone"}],
     "end": {"status": 410, "type": "text/plain", "body": "This offer is over.\n"}},

    {"link": "https://links.shop.example/p/go/500",
     "chain": [{"status": 302, "to": "https://shop.example/broken"}],
     "end": {"status": 500, "type": "application/octet-stream", "bodyBase64": "AP/+gIEAAQI="}},

    {"link": "https://links.shop.example/p/go/100b",
     "chain": [{"status": 302, "to": "https://links.shop.example/p/go/100b"}]},

    {"link": "https://links.shop.example/p/go/5100",
     "chain": [
       {"status": 302, "to": "https://hop.shop.example/slow", "delay": 500},
       {"status": 302, "to": "https://shop.example/slow", "delay": 500}]},

    {"link": "https://links.shop.example/p/go/90",
     "end": {"delay": 90000}},

    {"link": "https://links.shop.example/p/go/c0",
     "chain": [{"status": 302, "to": "https://hop.shop.example/cut-before"}],
     "end": {"cut": "before"}},

    {"link": "https://links.shop.example/p/go/c1",
     "chain": [{"status": 302, "to": "https://hop.shop.example/cut-during"}],
     "end": {"cut": "during"}},

    {"link": "https://links.shop.example/p/go/b16",
     "chain": [{"status": 302, "to": "https://shop.example/huge"}],
     "end": {"type": "text/plain", "body": "All work. ", "repeatBody": 1000000000}},

    {"link": "https://links.shop.example/p/go/e4d1",
     "chain": [{"status": 302, "to": "https://shop.example/endless"}],
     "end": {"type": "text/plain", "repeatBody": 1000000000000000, "chunked": true}},

    {"link": "http://links.shop.example/p/go/477",
     "chain": [
       {"status": 302, "to": "http://hop.shop.example/p/rp/abc/url?qw_u=heidi"},
       {"status": 302, "to": "http://shop.example/plain"}]},

    {"link": "https://links.shop.example/p/go/d0",
     "chain": [{"status": 302, "to": "https://expired.shop.example/"}]},
    {"link": "https://links.shop.example/p/go/d1",
     "chain": [{"status": 302, "to": "https://wrong-host.shop.example/"}]},
    {"link": "https://links.shop.example/p/go/d2",
     "chain": [{"status": 302, "to": "https://unknown-issuer.shop.example/"}]},
    {"link": "https://links.shop.example/p/go/d3",
     "chain": [{"status": 302, "to": "https://not-yet-valid.shop.example/"}]},

    {"link": "/p/go/ff",
     "chain": [{"status": 302, "to": "/any-host"}]}
  ],

  "answers": [
    {"at": "https://shop.example/", "body": "<!doctype html><title>Shop</title><h1>Shop</h1>\n"},
    {"at": "https://links.shop.example/p/go/304", "status": 302, "type": "text/plain",
     "body": "a redirect that leads nowhere\n"},

    {"at": "/messages/spring", "body": "@spring"},
    {"at": "/messages/offer", "body": "@offer"},
    {"at": "/messages/sizes", "body": "@sizes"},
    {"at": "/pages/lookbook", "body": "@lookbook"},
    {"at": "/pages/care", "body": "@care"},
    {"at": "/pages/slow", "body": "@lookbook", "delay": 4000},
    {"at": "/pages/failing", "cut": "before"}
  ],

  "behavior": {
    "service": "https://api.shop.example",
    "endpoint": "https://events.shop.example/v1/events",
    "keys": [
      {"key": "demo-key"},
      {"key": "shop-key", "bundleIdentifiers": ["com.example.shop"]}]
  },

  "certificates": {
    "expired.shop.example": "expired",
    "wrong-host.shop.example": "wrong-host",
    "unknown-issuer.shop.example": "unknown-issuer",
    "not-yet-valid.shop.example": "not-yet-valid"
  }
})";

/// Puts the pages, which are files of their own, where the scenario names them.
std::string withPages(std::string scenario) {
  for (auto [name, page] : {std::pair(R"("@spring")", resources::kSpringPage),
                            {R"("@offer")", resources::kOfferPage},
                            {R"("@sizes")", resources::kSizesPage},
                            {R"("@lookbook")", resources::kLookbookPage},
                            {R"("@care")", resources::kCarePage}}) {
    auto body = boost::json::serialize(boost::json::string(page));
    for (auto at = scenario.find(name); at != scenario.npos; at = scenario.find(name, at)) {
      scenario.replace(at, std::string_view(name).size(), body);
      at += body.size();
    }
  }
  return scenario;
}

}  // namespace

std::string_view Sandbox::defaultScenario() {
  static const std::string scenario = withPages(std::string(kDefaultScenario));
  return scenario;
}

}  // namespace quenwick::sandbox
