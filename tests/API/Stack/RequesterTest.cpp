#include "quenwick/API/Stack/Requester.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <thread>

#include "quenwick/API/Stack/APISource.h"
#include "quenwick/API/Stack/DataContainer.h"
#include "quenwick/API/Stack/DecodingError.h"
#include "quenwick/API/Stack/GeneralAPIError.h"
#include "quenwick/API/Stack/Nothing.h"
#include "quenwick/auth/AuthenticationKeychain.h"
#include "quenwick/auth/SecureSessionData.h"
#include "tests/support/FatalMessage.h"
#include "tests/support/FileContents.h"
#include "tests/support/PeakMemory.h"
#include "tests/support/Program.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SandboxService.h"

namespace quenwick {
namespace {

using platform::Dictionary;
using platform::URL;
using Lines = std::vector<std::string>;
using TokenError = AuthenticationTokenManager::TokenError;

constexpr auto kBase = "https://api.example";

struct Point {
  int x = 0;
  static constexpr auto fields() { return std::tuple{Field{"x", &Point::x}}; }
};
using Answer = DataContainer<Point>;

constexpr auto kScenario = R"({"answers": [
    {"at": "https://api.example/ok", "json": {"data": {"x": 7}}},
    {"at": "https://api.example//ok", "json": {"data": {"x": 8}}},
    {"at": "https://api.example/299", "status": 299, "json": {"data": {"x": 9}}},
    {"at": "https://api.example/twice", "body": "{\"data\":{\"x\":1},\"data\":{\"x\":2,\"x\":3}}"},
    {"at": "https://api.example/204", "status": 204},
    {"at": "https://api.example/302", "status": 302, "body": "nowhere"},
    {"at": "https://api.example/401", "status": 401, "json": {"error": "no token"}},
    {"at": "https://api.example/403", "status": 403, "json": {"error": "Bad key", "message": "no"}},
    {"at": "https://api.example/422", "status": 422, "json": {"message": "Bad bundle"}},
    {"at": "https://api.example/422t", "status": 422, "json": {"error": 7}},
    {"at": "https://api.example/500", "status": 500, "body": "oops\n"},
    {"at": "https://api.example/503", "status": 503, "body": "busy"},
    {"at": "https://api.example/cutoff", "body": "{\"data\":"},
    {"at": "https://api.example/latin", "bodyBase64": "eyJkYXRhIjoi/CJ9"},
    {"at": "https://api.example/missing", "json": {}},
    {"at": "https://api.example/wrong", "json": {"data": {"x": "secret"}}},
    {"at": "https://api.example/slow", "delay": 60000},
    {"at": "https://api.example/half", "cut": "during", "json": {"data": {"x": 7}}}
  ]})";

class RequesterTest : public testing::Test {
 protected:
  std::shared_ptr<Requester> requester(double timeout = 60, const char* base = kBase) {
    auto manager =
        APISource::manager({.requestTimeout = timeout, .basis = service_.configuration()});
    return std::make_shared<Requester>(manager, URL::parse(base).value());
  }

  static BaseRequest get(std::string path) { return {HTTPMethod::get, std::move(path)}; }

  template <class T = Answer>
  T run(const BaseRequest& request) {
    return platform::wait(requester()->requestAPI<T>(request));
  }

  static APIError failure(const Requester& requester, const BaseRequest& request) {
    try {
      platform::wait(requester.requestAPI<Answer>(request));
    } catch (const APIError& error) {
      return error;
    }
    ADD_FAILURE() << request.path() << " gave an answer";
    return APIError(APIError::Unknown{});
  }
  APIError failure(const BaseRequest& request, double timeout = 60) {
    return failure(*requester(timeout), request);
  }

  Dictionary onlyRequest() {
    auto all = service_.requests();
    EXPECT_EQ(all.size(), 1U);
    return all.at(0);
  }

  std::shared_ptr<tests::RecordingLog> log_ = tests::RecordingLog::install();
  tests::SandboxService service_{kScenario};
};

TEST_F(RequesterTest, SendsTheRequestAsItIsDescribed) {
  BaseRequest request(HTTPMethod::post, "/ok", Dictionary{{"b", 1.0}, {"a", "ü"}},
                      {{"X-Own", "7"}});
  EXPECT_EQ(run(request).value.x, 7);
  auto sent = onlyRequest();
  auto text = [&](const char* key) { return *sent.find(key)->as<std::string>(); };
  EXPECT_EQ(text("method") + " " + text("host") + text("path"), "POST api.example/ok");
  EXPECT_EQ(text("body"), R"({"b":1.0,"a":"ü"})");
  const auto& fields = *sent.find("headers")->as<Dictionary>();
  auto field = [&](const char* name) { return *fields.find(name)->as<std::string>(); };
  EXPECT_EQ(field("Content-Type"), "application/json");
  EXPECT_EQ(field("X-Own"), "7");
  EXPECT_EQ(field("User-Agent"), HTTPHeader::defaultUserAgent().value);
  EXPECT_EQ(field("Accept-Encoding"), "br;q=1.0, gzip;q=0.9, deflate;q=0.8");
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(RequesterTest, AManagersSessionHasTheTimesAndThePolicyThatWereAskedFor) {
  using enum platform::CachePolicy;
  for (auto policy : {useProtocolCachePolicy, reloadIgnoringLocalCacheData}) {
    auto manager = APISource::manager({.requestTimeout = 10,
                                       .resourceTimeout = 20,
                                       .cachePolicy = policy,
                                       .basis = service_.configuration()});
    const auto& session = manager->session()->configuration();
    EXPECT_EQ(std::tuple(session.requestTimeout, session.resourceTimeout, session.cachePolicy),
              std::tuple(10, 20, policy));
    platform::wait(Requester(manager, *URL::parse(kBase)).requestAPI<Nothing>(get("/ok")));
    auto fields = *service_.requests().back().find("headers")->as<Dictionary>();
    const auto* asked = fields.find("Cache-Control");
    EXPECT_EQ(asked ? *asked : platform::Value(),
              policy == useProtocolCachePolicy ? platform::Value() : platform::Value("no-cache"));
  }
}

TEST_F(RequesterTest, PutsThePathRightBehindTheBase) {
  for (auto [base, path, url] : {std::tuple("https://api.example", "/ok", "https://api.example/ok"),
                                 {"https://api.example/", "/ok", "https://api.example//ok"},
                                 {"https://api.example/v1?", "ok", "https://api.example/v1?ok"}}) {
    EXPECT_EQ(requester(60, base)->url(get(path))->absoluteString(), url);
  }
  EXPECT_EQ(requester()->url(get("/a b")), std::nullopt);
  auto doubled = requester(60, "https://api.example/");
  EXPECT_EQ(platform::wait(doubled->requestAPI<Answer>(get("/ok"))).value.x, 8);
}

TEST_F(RequesterTest, DecodesWhatSucceeded) {
  EXPECT_EQ(run(get("/299")).value.x, 9);
  EXPECT_EQ(run(get("/twice")).value.x, 3);
  EXPECT_EQ(run<Nothing>(get("/204")), Nothing());
  EXPECT_EQ(run<Nothing>(get("/cutoff")), Nothing());
}

TEST_F(RequesterTest, AnErrorStatusIsTheErrorThatTheRequestAsksFor) {
  struct {
    const char* path;
    bool hasHandlers;
    const char* text;
  } const kRows[] = {
      {"/403", true, "403 - Bad key"},
      {"/422", true, "422 - Bad bundle"},
      {"/422t", true, "422\n{\"error\":7}"},
      {"/ok", true, "There was a network connection error. Please try again later."},
      {"/503", true, "There was a network connection error. Please try again later."},
      {"/500", true, "500\noops\n"},
      {"/302", true, "302\nnowhere"},
      {"/403", false, "403\n{\"error\":\"Bad key\",\"message\":\"no\"}"},
      {"/503", false, "503\nbusy"},
  };
  for (const auto& row : kRows) {
    auto request = get(row.path);
    if (row.hasHandlers) {
      for (int status : {401, 403, 422}) request.addExceptionHandler<GeneralAPIError>(status);
      for (int status : {200, 503}) request.addNetworkErrorExceptionHandler(status);
    }
    EXPECT_EQ(failure(request).errorDescription(), row.text) << row.path;
  }
  EXPECT_TRUE(log_->lines().empty()) << "these are the caller's to log";
}

TEST_F(RequesterTest, Status401AsksForAnotherTokenWhateverTheHandlers) {
  auto request = get("/401");
  request.addExceptionHandler<GeneralAPIError>(401);
  EXPECT_THROW(run(request), TokenError);
}

TEST_F(RequesterTest, ABodyThatDoesNotDecodeIsTheDecodersError) {
  const std::pair<const char*, const char*> kRows[] = {
      {"/missing", R"(The value of "data" is missing where an object is expected.)"},
      {"/wrong", R"(The value of "data.x" is a text where a whole number is expected.)"},
      {"/204", "the text is not JSON: incomplete JSON"},
      {"/cutoff", "the text is not JSON: incomplete JSON"},
      {"/latin", "the text is not JSON: syntax error"},
  };
  for (const auto& [path, text] : kRows) {
    auto error = failure(get(path));
    EXPECT_TRUE(std::holds_alternative<APIError::DecodeFailed>(error.kind())) << path;
    EXPECT_TRUE(error.errorDescription().starts_with(text)) << error.errorDescription();
  }
  EXPECT_TRUE(dynamic_cast<const DecodingError*>(failure(get("/wrong")).underlyingError().get()));
}

TEST_F(RequesterTest, AFailedLoadIsLoggedAndKeepsThePlatformsError) {
  auto error = failure(get("/slow"), 0.05);
  EXPECT_EQ(error.errorDescription(), "URLSessionTask failed with error: The request timed out.");
  const auto* inner = dynamic_cast<const platform::PlatformError*>(error.underlyingError().get());
  ASSERT_TRUE(inner);
  EXPECT_EQ(inner->code(), platform::URLErrorCode::timedOut);
  EXPECT_EQ(inner->userInfo().at(std::string(platform::NSURLErrorFailingURLStringErrorKey)),
            "https://api.example/slow");
  EXPECT_EQ(log_->lines(), Lines{"error: " + error.errorDescription()});
}

/// 100 MB of JSON that begins and does not end, compressed so many times.
std::string zipped(int times) {
  auto made = tests::runProgram({"python3", "-c",
                                 "import base64, gzip, sys\n"
                                 "data = b'[' * 100_000_000\n"
                                 "for i in range(int(sys.argv[1])): data = gzip.compress(data)\n"
                                 "print(base64.b64encode(data).decode(), end='')",
                                 std::to_string(times)});
  EXPECT_EQ(made.exitCode, 0) << made.errors;
  return made.output;
}

TEST_F(RequesterTest, ABodyWithoutEndEndsInAnErrorWithinBoundedMemory) {
  // The bombs are 100 MB as a hundred kilobytes, and as a few hundred bytes.
  tests::SandboxService service(R"({"answers": [
    {"at": "https://api.example/ok"},
    {"at": "https://api.example/huge", "body": "[1,", "repeatBody": 100000000},
    {"at": "https://api.example/endless", "body": "[1,", "repeatBody": 1000000000000000,
     "chunked": true},
    {"at": "https://api.example/bomb", "headers": {"Content-Encoding": "gzip"},
     "bodyBase64": ")" + zipped(1) +
                                R"("},
    {"at": "https://api.example/bombs", "headers": {"Content-Encoding": "gzip, gzip"},
     "bodyBase64": ")" + zipped(2) +
                                R"("}]})");
  auto configuration = service.configuration();
  Requester exposed(APISource::manager({.basis = configuration}), URL::parse(kBase).value());
  platform::wait(exposed.requestAPI<Nothing>(get("/ok")));
  auto before = tests::peakKilobytes();
  constexpr auto kTooLong = "URLSessionTask failed with error: The answer is longer than allowed.";
  for (auto path : {"/huge", "/endless", "/bomb", "/bombs"}) {
    EXPECT_EQ(failure(exposed, get(path)).errorDescription(), kTooLong) << path;
  }
  EXPECT_LT(tests::peakKilobytes() - before, tests::kSmallGrowthKilobytes);

  configuration = service_.configuration();
  configuration.maximumBodySize = 5;
  Requester small(APISource::manager({.basis = configuration}), URL::parse(kBase).value());
  EXPECT_EQ(failure(small, get("/ok")).errorDescription(), kTooLong);
}

TEST_F(RequesterTest, ARequestThatCannotBeBuiltIsLoggedAndNotSent) {
  BaseRequest noText(HTTPMethod::post, "/ok", Dictionary{{"a", "\xff"}});
  const std::pair<BaseRequest, std::string> kRows[] = {
      {noText, "JSON could not be encoded because of error:\na text is not UTF-8"},
      {get("/a b"), "URL is not valid: https://api.example/a b"},
  };
  Lines expected;
  for (const auto& [request, text] : kRows) {
    EXPECT_EQ(failure(request).errorDescription(), text);
    expected.push_back("error: " + text);
    EXPECT_EQ(log_->lines(), expected);
  }
  EXPECT_TRUE(service_.received().empty());
}

TEST_F(RequesterTest, WithoutASessionThereIsNoOutput) {
  Requester bare(std::make_shared<APISessionManager>(std::shared_ptr<platform::URLSession>()),
                 URL::parse(kBase).value());
  EXPECT_THROW(platform::wait(bare.requestAPI<Nothing>(get("/ok"))), MissingOutputError);
  EXPECT_EQ(bare.subscriptions().count(), 0U);
}

platform::Task<void> note(platform::Task<Nothing> task, std::shared_ptr<std::string> outcome) {
  try {
    co_await task;
    *outcome = "answered";
  } catch (const APIError& error) {
    *outcome = error.errorDescription();
  }
}

TEST_F(RequesterTest, AStoppedRequestEndsAtOnceAndARunningOneOutlivesItsRequester) {
  std::stop_source stop;
  auto outcome = std::make_shared<std::string>();
  auto slow = requester();
  auto task = slow->requestAPI<Nothing>(get("/slow"), stop.get_token());
  auto handle = platform::startTask(note(std::move(task), outcome), stop);
  while (service_.received().empty()) std::this_thread::yield();
  EXPECT_EQ(slow->subscriptions().count(), 1U);
  slow.reset();
  EXPECT_FALSE(handle.waitFor(std::chrono::milliseconds(20)));
  handle.cancel();
  ASSERT_TRUE(handle.waitFor(std::chrono::seconds(20)));
  EXPECT_EQ(*outcome, "URLSessionTask failed with error: The load was cancelled.");
}

TEST_F(RequesterTest, APublisherSendsOncePerSubscriberAndNotAfterItsEnd) {
  auto sender = requester();
  auto publisher = sender->publisher<Answer>(get("/ok"));
  EXPECT_TRUE(service_.received().empty());
  auto subscriptions = std::make_shared<Subscriptions>();
  EXPECT_EQ(platform::wait(firstValue(publisher, subscriptions)).value.x, 7);
  EXPECT_EQ(platform::wait(firstValue(publisher, subscriptions)).value.x, 7);
  EXPECT_EQ(service_.received().size(), 2U);
  EXPECT_EQ(subscriptions->count(), 0U);

  std::atomic<int> calls = 0;
  {
    auto subscription =
        sender->publisher<Nothing>(get("/slow"))
            .subscribe({[&](Nothing) { ++calls; }, [&](const std::exception_ptr&) { ++calls; }});
    while (service_.received().size() < 3) std::this_thread::yield();
  }
  run(get("/ok"));  // the loading thread has dealt with the end by then
  EXPECT_EQ(calls, 0);
}

TEST_F(RequesterTest, ASubscriberThatThrowsIsToldOfItAsTheEndAndNobodyElseIs) {
  std::promise<std::string> ended;
  std::atomic<int> ends = 0;
  auto subscription =
      requester()
          ->publisher<Answer>(get("/ok"))
          .subscribe({[](const Answer&) { throw std::runtime_error("the subscriber's own"); },
                      [&](const std::exception_ptr& failure) {
                        if (++ends == 1)
                          ended.set_value(platform::errorFrom(failure)->localizedDescription());
                      }});
  auto text = ended.get_future();
  ASSERT_EQ(text.wait_for(std::chrono::seconds(30)), std::future_status::ready);
  EXPECT_EQ(text.get(), "the subscriber's own");
  run(get("/ok"));
  EXPECT_EQ(ends, 1);
  EXPECT_TRUE(log_->lines().empty()) << "no load has failed: " << log_->lines().front();
}

struct Renewal : AuthenticationService {
  platform::Task<std::string> renewToken() override { co_return "t0k"; }
};

TEST_F(RequesterTest, TheTokenStepPutsAValidTokenOnTheRequest) {
  AuthenticationKeychain::standard().set(std::string_view("old"),
                                         rawValue(SecureSessionData::accessToken));
  auto tokens = std::make_shared<AuthenticationTokenManager>(std::make_shared<Renewal>());
  Requester sender(APISource::manager({.basis = service_.configuration()}), *URL::parse(kBase),
                   tokens);
  auto request = std::make_shared<BaseRequest>(get("/ok"));
  platform::wait(sender.compose(APIComposition{request}, APIComposerValue::token));
  platform::wait(sender.requestAPI<Answer>(*request));
  EXPECT_EQ(*onlyRequest().find("headers")->as<Dictionary>()->find("Authorization"),
            platform::Value("Bearer t0k"));
  EXPECT_EQ(log_->count("t0k"), 0);
}

TEST_F(RequesterTest, TheTokenStepWithoutATokenManagerStopsTheProgram) {
  auto request = std::make_shared<BaseRequest>(get("/ok"));
  EXPECT_EQ(
      tests::fatalMessage([&] {
        platform::wait(requester()->compose(APIComposition{request}, APIComposerValue::token));
      }),
      "Requester as asked to compose a token, but does not contain a manager");
  EXPECT_NO_THROW(platform::wait(requester()->compose(APIComposition{request})));
}

TEST_F(RequesterTest, ADownloadIsKeptWholeAndForTheUserAlone) {
  auto sender = requester();
  auto request = get("/ok");
  request.setParameters(Dictionary{{"api_key", "s3cret"}});
  request.setEncodeType(EncodingType::urlEncoding);
  auto file = platform::wait(sender->download(request));
  EXPECT_EQ(file, sender->cachePath(request));
  EXPECT_EQ(file.string().find("s3cret"), std::string::npos);
  EXPECT_EQ(tests::contents(file), R"({"data":{"x":7}})");
  using std::filesystem::perms;
  EXPECT_EQ(std::filesystem::status(file).permissions(), perms::owner_read | perms::owner_write);

  request.setParameters(Dictionary{{"api_key", "other"}});
  EXPECT_NE(sender->cachePath(request), file);
  EXPECT_NE(sender->cachePath(get("/ok")), file);

  auto halved = get("/half");
  std::ofstream(sender->cachePath(halved)) << "earlier";
  EXPECT_THROW(platform::wait(sender->download(halved)), APIError);
  EXPECT_EQ(tests::contents(sender->cachePath(halved)), "earlier");
  EXPECT_THROW(platform::wait(sender->download(get("/a b"))), APIError);
}

}  // namespace
}  // namespace quenwick
