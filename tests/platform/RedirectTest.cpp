#include <gtest/gtest.h>

#include "quenwick/platform/URLRequest.h"

namespace quenwick::platform {
namespace {

URLRequest post(const char* url) {
  return {.url = URL::parse(url),
          .httpMethod = "POST",
          .headerFields = {{"Authorization", "secret"}, {"Content-Type", "text/plain"}, {"X", "y"}},
          .httpBody = "body"};
}

HTTPURLResponse redirect(int status, const char* target) {
  HTTPURLResponse response;
  response.statusCode = status;
  response.headerFields = {{"location", target}};
  return response;
}

TEST(Redirect, TheMethodChangesAsTheStatusSays) {
  struct Row {
    int status;
    const char* method;
    const char* next;
  };
  for (const auto& row :
       {Row{301, "POST", "GET"}, Row{302, "POST", "GET"}, Row{303, "POST", "GET"},
        Row{307, "POST", "POST"}, Row{308, "POST", "POST"}, Row{301, "PUT", "PUT"},
        Row{303, "PUT", "GET"}, Row{303, "HEAD", "HEAD"}, Row{302, "GET", "GET"}}) {
    auto request = post("https://a.example/x");
    request.httpMethod = row.method;
    auto next = redirectedRequest(request, redirect(row.status, "/y"));
    ASSERT_TRUE(next);
    EXPECT_EQ(next->httpMethod, row.next) << row.status << row.method;
    bool keepsBody = std::string_view(row.method) == row.next;
    EXPECT_EQ(next->httpBody.has_value(), keepsBody);
    EXPECT_EQ(headerField(next->headerFields, "content-type") != nullptr, keepsBody);
    EXPECT_EQ(next->url->absoluteString(), "https://a.example/y");
  }
}

TEST(Redirect, CredentialsStayWithTheirServer) {
  for (auto [target, keeps] : {std::pair("https://a.example:443/y", true),
                               {"//b.example/", false},
                               {"https://a.example:8443/", false}}) {
    auto request = post("https://a.example/x");
    for (const auto* name : {"cookie", "Cookie2", "Proxy-Authorization", "WWW-Authenticate"}) {
      request.headerFields.emplace_back(name, "secret");
    }
    auto next = redirectedRequest(request, redirect(307, target));
    ASSERT_TRUE(next);
    EXPECT_EQ(next->headerFields.size(), keeps ? 7U : 2U) << target;
    EXPECT_NE(headerField(next->headerFields, "X"), nullptr);
  }
}

TEST(Redirect, WhatWasSentEncryptedIsNotSentInClear) {
  struct Row {
    int status;
    const char* method;
    const char* target;
    bool isFollowed;
  };
  for (const auto& row :
       {Row{307, "POST", "http://a.example/", false}, Row{308, "POST", "HTTP://b.example/", false},
        Row{302, "PUT", "http://a.example/", false}, Row{303, "POST", "http://a.example/", true},
        Row{302, "POST", "http://a.example/", true}, Row{307, "POST", "https://b.example/", true},
        Row{307, "POST", "shopapp://x", true}}) {
    auto request = post("https://a.example/x");
    request.httpMethod = row.method;
    auto next = redirectedRequest(request, redirect(row.status, row.target));
    ASSERT_EQ(next.has_value(), row.isFollowed) << row.status << row.method << row.target;
    EXPECT_FALSE(next && next->url->origin() != request.url->origin() &&
                 headerField(next->headerFields, "Authorization"));
  }
  auto bare = post("https://a.example/x");
  bare.httpBody.reset();
  EXPECT_TRUE(redirectedRequest(bare, redirect(307, "http://a.example/"))) << "there is no body";
  auto clear = post("http://a.example/x");
  EXPECT_TRUE(redirectedRequest(clear, redirect(307, "http://b.example/"))) << "it was in clear";
}

TEST(Redirect, OnlyATargetThatParsesIsOne) {
  auto request = post("https://a.example/x/");
  EXPECT_FALSE(redirectedRequest(request, redirect(300, "/y")));
  EXPECT_FALSE(redirectedRequest(request, redirect(304, "/y")));
  EXPECT_FALSE(redirectedRequest(request, redirect(302, "")));
  EXPECT_FALSE(redirectedRequest(request, redirect(302, "https://h:port/")));
  EXPECT_FALSE(redirectedRequest(request, redirect(302, "/a\x01")));
  auto none = redirect(302, "/");
  none.headerFields.clear();
  EXPECT_FALSE(redirectedRequest(request, none));
}

TEST(Redirect, TargetsAsServersSendThemAreFollowed) {
  for (auto [target, url] : {std::pair("y?n=a b", "https://a.example/x/y?n=a%20b"),
                             {"/\xfc", "https://a.example/%FC"},
                             {"/50%", "https://a.example/50%"},
                             {"shopapp:p/42", "shopapp:p/42"},
                             {"?qw_u=a%2fb", "https://a.example/x/?qw_u=a%2fb"}}) {
    auto next = redirectedRequest(post("https://a.example/x/"), redirect(302, target));
    ASSERT_TRUE(next) << target;
    EXPECT_EQ(next->url->absoluteString(), url);
  }
}

}  // namespace
}  // namespace quenwick::platform
