#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "quenwick/platform/JSONSerialization.h"
#include "tests/support/SandboxService.h"
#include "tests/ui/Display.h"
#include "tests/ui/Host.h"

namespace quenwick::tests {

using platform::Dictionary;
using platform::List;
using platform::Value;

inline constexpr int kWidth = 800;
inline constexpr int kHeight = 600;

/// A page that tells the sandbox when it is seen and can be tapped.
inline std::string page(const std::string& body) {
  return "<!doctype html><body style='margin:0;background:#12ab34'>" + body +
         "<script>requestAnimationFrame(()=>requestAnimationFrame(()=>"
         "{new Image().src='/ready'}))</script>";
}

/// In-app views as a person meets them: a real engine, a real pointer and keyboard, a real server.
class WebViewTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    display_ = std::make_unique<Display>(kWidth, kHeight);
    host_ = std::make_unique<Host>(display_->name());
    host_->tell("link-user alice");
  }
  static void TearDownTestSuite() {
    host_.reset();
    display_.reset();
  }

  /// Serves the pages, each at its path.
  void serve(const std::vector<std::pair<std::string, Dictionary>>& answers) {
    List all;
    for (auto [path, answer] : answers) {
      answer.set("at", path);
      all.push_back(answer);
    }
    service_ = std::make_unique<SandboxService>(
        platform::JSONSerialization::text(Dictionary{{"answers", all}}));
  }
  void serve(const std::string& path, const std::string& body) {
    serve({{path, {{"body", body}}}});
  }

  /// Serves the page, and what its links lead to.
  void serveSite(const std::string& body) {
    Dictionary attached{{"Content-Disposition", "attachment; filename=a.txt"}};
    serve({{"/page", {{"body", body}}},
           {"/in", {{"body", "in"}}},
           {"/web", {{"body", "web"}}},
           {"/out", {{"body", "out"}}},
           {"/inner", {{"body", page("")}}},
           {"/file", {{"body", "bytes"}, {"headers", attached}}}});
  }

  std::string address(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(service_->sandbox().httpPort()) + path;
  }

  /// Shows the page and waits until it is there, and has said that it can be used.
  void show(const std::string& command, const std::string& path) {
    start(command, path);
    ASSERT_TRUE(eventually([&] { return query("/ready").has_value(); })) << path;
  }
  void start(const std::string& command, const std::string& path) {
    service_->sandbox().forgetRequests();
    host_->tell(command + " " + address(path));
    ASSERT_EQ(host_->next("covered"), Value(true));
    display_->focusWindow();
  }

  void tap() { display_->click(kWidth / 2, kHeight / 2); }
  bool isClosed() { return host_->next("covered", Value(false)) == Value(false); }
  void close() {
    display_->pressEscape();
    EXPECT_TRUE(isClosed());
  }

  /// Waits for the end of a view that closes itself, or closes it.
  void leave(bool closesItself) {
    if (!closesItself) return close();
    EXPECT_TRUE(isClosed());
  }

  /// The query with which the path was asked for last; none where it was not.
  std::optional<std::string> query(const std::string& path) const {
    std::optional<std::string> found;
    for (const auto& request : service_->requests()) {
      if (*request.find("path") == Value(path)) found = *request.find("query")->as<std::string>();
    }
    return found;
  }

  /// The URLs that are opened outside, once one is.
  static std::vector<std::string> nextOpened() {
    std::vector<std::string> urls;
    eventually([&] { return !(urls = host_->opened()).empty(); });
    return urls;
  }

  Dictionary closeButton() {
    host_->tell("close-button");
    auto described = host_->next("closeButton");
    return described.as<Dictionary>() ? *described.as<Dictionary>() : Dictionary();
  }

  static inline std::unique_ptr<Display> display_;
  static inline std::unique_ptr<Host> host_;
  std::unique_ptr<SandboxService> service_;
};

}  // namespace quenwick::tests
