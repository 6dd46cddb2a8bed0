#include "quenwick/API/Stack/HTTPHeader.h"

#include <utility>

#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/System.h"
#include "quenwick/platform/Text.h"
#include "quenwick/state/Analytics.h"

namespace quenwick {
namespace {

constexpr std::size_t kMaximumLanguages = 6;

std::string joined(std::string_view first, std::string_view second) {
  return std::string(first).append(second);
}

}  // namespace

HTTPHeader HTTPHeader::accept(std::string value) { return {"Accept", std::move(value)}; }

HTTPHeader HTTPHeader::acceptCharset(std::string value) {
  return {"Accept-Charset", std::move(value)};
}

HTTPHeader HTTPHeader::acceptLanguage(std::string value) {
  return {"Accept-Language", std::move(value)};
}

HTTPHeader HTTPHeader::acceptEncoding(std::string value) {
  return {"Accept-Encoding", std::move(value)};
}

HTTPHeader HTTPHeader::authorization(std::string value) {
  return {"Authorization", std::move(value)};
}

HTTPHeader HTTPHeader::basicAuthorization(std::string_view username, std::string_view password) {
  auto credentials = joined(username, ":").append(password);
  return authorization("Basic " + platform::base64Encoded(credentials));
}

HTTPHeader HTTPHeader::bearerAuthorization(std::string_view token) {
  return authorization(joined("Bearer ", token));
}

HTTPHeader HTTPHeader::contentDisposition(std::string value) {
  return {"Content-Disposition", std::move(value)};
}

HTTPHeader HTTPHeader::contentType(std::string value) { return {"Content-Type", std::move(value)}; }

HTTPHeader HTTPHeader::userAgent(std::string value) { return {"User-Agent", std::move(value)}; }

const HTTPHeader& HTTPHeader::defaultAcceptEncoding() {
  static const auto& header =
      *new HTTPHeader(acceptEncoding(qualityEncoded({"br", "gzip", "deflate"})));
  return header;
}

const HTTPHeader& HTTPHeader::defaultAcceptLanguage() {
  static const auto& header =
      *new HTTPHeader(acceptLanguage(acceptLanguageValue(platform::System::preferredLanguages())));
  return header;
}

const HTTPHeader& HTTPHeader::defaultUserAgent() {
  platform::HeldLog held;
  static const auto& header =
      *new HTTPHeader(userAgent(userAgentValue(Analytics::shared().datapoints())));
  return header;
}

std::string HTTPHeader::userAgentValue(const std::map<std::string, std::string>& datapoints) {
  auto datapoint = [&](const char* key, const char* fallback) {
    auto found = datapoints.find(key);
    return found == datapoints.end() ? std::string(fallback) : found->second;
  };
  return "QuenwickSDK/" + datapoint("sdk_version_number", "0.0.0") + " " +
         datapoint("device_os", "iOS") + "/" + datapoint("device_type", "unknown") + "/" +
         datapoint("device_os_version", "0.0.0");
}

std::string HTTPHeader::acceptLanguageValue(std::vector<std::string> preferredLanguages) {
  if (preferredLanguages.size() > kMaximumLanguages) preferredLanguages.resize(kMaximumLanguages);
  return qualityEncoded(preferredLanguages);
}

std::string HTTPHeader::description() const { return name + ": " + value; }

std::string qualityEncoded(const std::vector<std::string>& elements) {
  std::string text;
  double tenths = 10;  // counted whole, so that every weight has one digit after the point
  for (const auto& element : elements) {
    if (!text.empty()) text += ", ";
    text += element + ";q=" + platform::shortestDecimal(tenths / 10);
    --tenths;
  }
  return text;
}

}  // namespace quenwick
