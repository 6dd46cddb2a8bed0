#include "quenwick/platform/URLError_curl.h"

#include <openssl/x509_vfy.h>

#include <algorithm>
#include <array>

namespace quenwick::platform {
namespace {

struct Text {
  int code;
  const char* text;
};

constexpr std::array kTexts = {
    Text{URLErrorCode::cancelled, "The load was cancelled."},
    Text{URLErrorCode::badURL, "The request or its URL is malformed."},
    Text{URLErrorCode::timedOut, "The request timed out."},
    Text{URLErrorCode::unsupportedURL, "The URL cannot be loaded: only http and https can."},
    Text{URLErrorCode::cannotFindHost, "No server with this host name was found."},
    Text{URLErrorCode::cannotConnectToHost, "The server could not be reached."},
    Text{URLErrorCode::networkConnectionLost, "The connection to the server was lost."},
    Text{URLErrorCode::httpTooManyRedirects, "There were too many redirects."},
    Text{URLErrorCode::badServerResponse, "The server's answer made no sense."},
    Text{URLErrorCode::cannotDecodeContentData, "The answer's body could not be decompressed."},
    Text{URLErrorCode::cannotParseResponse, "The server's answer could not be read."},
    Text{URLErrorCode::dataLengthExceedsMaximum, "The answer is longer than allowed."},
    Text{URLErrorCode::secureConnectionFailed, "No secure connection could be made."},
    Text{URLErrorCode::serverCertificateHasBadDate, "The server's certificate has expired."},
    Text{URLErrorCode::serverCertificateUntrusted,
         "The server's certificate is not valid for this host name."},
    Text{URLErrorCode::serverCertificateHasUnknownRoot,
         "The server's certificate was signed by an unknown issuer."},
    Text{URLErrorCode::serverCertificateNotYetValid, "The server's certificate is not valid yet."},
};

int certificateCode(long verification) {
  switch (verification) {
    case X509_V_ERR_CERT_HAS_EXPIRED:
      return URLErrorCode::serverCertificateHasBadDate;
    case X509_V_ERR_CERT_NOT_YET_VALID:
      return URLErrorCode::serverCertificateNotYetValid;
    case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
      return URLErrorCode::serverCertificateHasUnknownRoot;
    case X509_V_OK:
    case X509_V_ERR_UNSPECIFIED:  // curl looks at the name before it takes OpenSSL's verdict
    case X509_V_ERR_HOSTNAME_MISMATCH:
      return URLErrorCode::serverCertificateUntrusted;
    default:
      return URLErrorCode::secureConnectionFailed;
  }
}

}  // namespace

int urlErrorCode(CURLcode code, long verification) {
  switch (code) {
    case CURLE_URL_MALFORMAT:
      return URLErrorCode::badURL;
    case CURLE_OPERATION_TIMEDOUT:
      return URLErrorCode::timedOut;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      return URLErrorCode::cannotFindHost;
    case CURLE_COULDNT_CONNECT:
      return URLErrorCode::cannotConnectToHost;
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
      return URLErrorCode::networkConnectionLost;
    case CURLE_UNSUPPORTED_PROTOCOL:  // the answer's, if any: only http and https come this far
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_WRITE_ERROR:
      return URLErrorCode::cannotParseResponse;
    case CURLE_BAD_CONTENT_ENCODING:
      return URLErrorCode::cannotDecodeContentData;
    case CURLE_TOO_MANY_REDIRECTS:
      return URLErrorCode::httpTooManyRedirects;
    case CURLE_PEER_FAILED_VERIFICATION:
      return certificateCode(verification);
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CIPHER:
      return URLErrorCode::secureConnectionFailed;
    default:
      return URLErrorCode::unknown;
  }
}

std::shared_ptr<const PlatformError> urlError(int code, const std::string& failingURL) {
  auto known = std::ranges::find(kTexts, code, &Text::code);
  UserInfo userInfo;
  if (!failingURL.empty()) {
    userInfo.emplace(NSURLErrorFailingURLStringErrorKey, failingURL);
  }
  return std::make_shared<PlatformError>(std::string(kURLErrorDomain), code,
                                         known == kTexts.end() ? "The load failed." : known->text,
                                         std::move(userInfo));
}

}  // namespace quenwick::platform
