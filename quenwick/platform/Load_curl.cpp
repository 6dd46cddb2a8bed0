#include "quenwick/platform/Load_curl.h"

#include <algorithm>
#include <string>
#include <utility>

#include "quenwick/platform/OpenSockets_curl.h"
#include "quenwick/platform/Text.h"
#include "quenwick/platform/TrustStore_openssl.h"
#include "quenwick/platform/URLError_curl.h"

namespace quenwick::platform {
namespace {

// What a load takes of a header block at the most.
constexpr std::size_t kMaximumHeaderFields = 1000;
constexpr std::string_view kLineEnds("\r\n\0", 3);

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  auto begin = text.find_first_not_of(kBlanks);
  if (begin == text.npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

/// curl takes the colons of an address of IPv6 for its own, unless the address stands in brackets.
std::string connectEntry(const ConnectTo& to) {
  bool isBare = to.toAddress.find(':') != to.toAddress.npos && to.toAddress.front() != '[';
  auto address = isBare ? "[" + to.toAddress + "]" : to.toAddress;
  return to.host + ":" + std::to_string(to.port) + ":" + address + ":" + std::to_string(to.toPort);
}

}  // namespace

Load::Load(std::shared_ptr<const URLRequest> request,
           std::shared_ptr<const URLSessionConfiguration> configuration,
           std::shared_ptr<TrustStore> trust, AskRedirect askRedirect)
    : request_(std::move(request)),
      configuration_(std::move(configuration)),
      trust_(std::move(trust)),
      askRedirect_(std::move(askRedirect)) {}

Load::Easy Load::makeEasy() {
  auto handle = std::make_unique<Handle>();
  handle->easy = makeEasyHandle();
  curl_easy_setopt(handle->easy.get(), CURLOPT_HEADERFUNCTION, &Load::onHeader);
  curl_easy_setopt(handle->easy.get(), CURLOPT_WRITEFUNCTION, &Load::onBody);
  curl_easy_setopt(handle->easy.get(), CURLOPT_OPENSOCKETFUNCTION, &Load::onOpen);
  curl_easy_setopt(handle->easy.get(), CURLOPT_PREREQFUNCTION, &Load::onSend);
  return handle;
}

/// Sets what holds for all hops of the load.
void Load::setUp(Easy handle) {
  handle_ = std::move(handle);
  auto* easy = this->easy();
  curl_easy_setopt(easy, CURLOPT_PRIVATE, this);
  curl_easy_setopt(easy, CURLOPT_OPENSOCKETDATA, this);
  curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
  curl_easy_setopt(easy, CURLOPT_PREREQDATA, this);
  curl_easy_setopt(easy, CURLOPT_SSL_CTX_DATA, this);
  if (handle_->configuration != configuration_) setConfiguration();
}

void Load::setConfiguration() {
  TextList connectTo;
  for (const auto& to : configuration_->connectTo) {
    connectTo.reset(curl_slist_append(connectTo.release(), connectEntry(to).c_str()));
  }
  curl_easy_setopt(easy(), CURLOPT_CONNECT_TO, connectTo.get());
  handle_->connectTo = std::move(connectTo);
  setTrust();
  handle_->configuration = configuration_;
  handle_->headers.reset();
}

void Load::setTrust() {
  auto* easy = this->easy();
  const auto& text = configuration_->additionalTrustAnchors;  // which the handle keeps
  bool isSystemAlone = text.empty();
  // The text as curl's own issuers keeps connections of different trust apart in its pool.
  curl_blob blob{const_cast<char*>(text.data()), text.size(), CURL_BLOB_NOCOPY};
  curl_easy_setopt(easy, CURLOPT_CAINFO_BLOB, isSystemAlone ? nullptr : &blob);
  curl_easy_setopt(easy, CURLOPT_CAINFO,
                   isSystemAlone ? TrustStore::systemFile().c_str() : nullptr);
  curl_easy_setopt(easy, CURLOPT_SSL_CTX_FUNCTION, isSystemAlone ? nullptr : &Load::onTrust);
}

/// Gives the handle back, without a pointer to what this load owns.
Load::Easy Load::takeDown() {
  auto* easy = this->easy();
  curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
  curl_easy_setopt(easy, CURLOPT_POSTFIELDS, nullptr);
  return std::move(handle_);
}

/// Takes the hop that comes next.
void Load::setNext(URLRequest request) {
  const auto& last = *request_;
  bool wasAway = isAway_;
  bool isOther = !configuration_->additionalHeaders.empty() && request.url && last.url &&
                 request.url->origin() != last.url->origin();
  isAway_ = wasAway || isOther;
  isSet_ = isSet_ && isAway_ == wasAway && request.httpMethod == last.httpMethod &&
           request.headerFields == last.headerFields && !request.httpBody && !last.httpBody &&
           request.cachePolicy == last.cachePolicy;
  request_ = std::make_shared<const URLRequest>(std::move(request));
}

/// Tells curl what to load. What a redirect leaves as it was is not told again.
void Load::setRequest() {
  prepareHandle();
  body_.clear();
  isHeadComplete_ = false;
  isSent_ = false;
  isSentAgain_ = false;
  isBodyTooLong_ = false;
  response_ = std::make_shared<HTTPURLResponse>();
  response_->url = request_->url;
  response_->headerFields.reserve(8);
  lastProgress_ = Clock::now();
  curl_easy_setopt(this->easy(), CURLOPT_URL, request_->url->absoluteString().c_str());
  if (std::exchange(isSet_, true)) return;
  setMethod();
  setHeaders();
}

/// A handle that was used is used again where curl may be trusted with it, or where its connection
/// is known to be one of HTTP/2, which is seen to before anything is sent.
void Load::prepareHandle() {
  isOnlyForHTTP2_ = false;
  if (!std::exchange(handle_->isUsed, true) || mayBeUsedAgain()) return;
  isOnlyForHTTP2_ = handle_->multiplexed == origin_;
  if (!isOnlyForHTTP2_) handle_->easy = renewed(std::move(handle_->easy));
}

/// One that no transfer used, and that fits any connection.
void Load::takeAnotherHandle() {
  isHandleUnfit_ = false;
  isOnlyForHTTP2_ = false;
  handle_->multiplexed.clear();
  handle_->easy = renewed(std::move(handle_->easy));
}

void Load::setMethod() {
  auto* easy = this->easy();
  const auto method = request_->httpMethod.value_or("GET");
  curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
  curl_easy_setopt(easy, CURLOPT_NOBODY, method == "HEAD" ? 1L : 0L);
  if (request_->httpBody) {
    curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE,
                     static_cast<curl_off_t>(request_->httpBody->size()));
    curl_easy_setopt(easy, CURLOPT_POSTFIELDS, request_->httpBody->data());
  }
  bool isPlain = method == "HEAD" || method == (request_->httpBody ? "POST" : "GET");
  curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, isPlain ? nullptr : method.c_str());
}

bool Load::asksCaches() const {
  return request_->cachePolicy != CachePolicy::useProtocolCachePolicy ||
         configuration_->cachePolicy != CachePolicy::useProtocolCachePolicy;
}

/// The fields of the request, of its session, and of what they ask of caches. The session's
/// credentials are for the server that was asked first.
HeaderFields Load::allFields() const {
  auto fields = request_->headerFields;
  for (const auto& field : configuration_->additionalHeaders) {
    bool isForOther = isAway_ && isCredentialField(field.first);
    if (!isForOther && !headerField(fields, field.first)) fields.push_back(field);
  }
  if (asksCaches() && !headerField(fields, "Cache-Control")) {
    fields.emplace_back("Cache-Control", "no-cache");
  }
  return fields;
}

void Load::setHeaders() {
  bool hasBody = request_->httpBody.has_value();
  if (handle_->headers && handle_->hasBody == hasBody && handle_->isBare == isAway_ &&
      handle_->asksCaches == asksCaches() && handle_->requested == request_->headerFields) {
    return;
  }
  auto fields = allFields();
  TextList headers;
  std::string encodings;  // empty: all that curl decodes
  for (const auto& [name, value] : fields) {
    if (name.find_first_of(kLineEnds) != name.npos ||
        value.find_first_of(kLineEnds) != value.npos) {
      continue;  // it would begin a field that nobody meant
    }
    if (equalsIgnoringCase(name, "Accept-Encoding")) {
      encodings = value;
      continue;
    }
    auto line = name;
    line.append(value.empty() ? ";" : ": ").append(value);
    headers.reset(curl_slist_append(headers.release(), line.c_str()));
  }
  if (hasBody && !headerField(fields, "Expect")) {
    headers.reset(curl_slist_append(headers.release(), "Expect:"));
  }
  curl_easy_setopt(easy(), CURLOPT_ACCEPT_ENCODING, encodings.c_str());
  curl_easy_setopt(easy(), CURLOPT_HTTPHEADER, headers.get());
  handle_->headers = std::move(headers);
  handle_->requested = request_->headerFields;
  handle_->isBare = isAway_;
  handle_->asksCaches = asksCaches();
  handle_->hasBody = hasBody;
}

bool Load::receiveHeader(std::string_view line) {
  lastProgress_ = Clock::now();
  if (line.starts_with("HTTP/")) {
    response_->headerFields.clear();
    isHeadComplete_ = false;
    return true;
  }
  if (line == "\r\n" || line == "\n") isHeadComplete_ = true;
  auto colon = line.find(':');
  if (colon == line.npos) return true;
  response_->headerFields.emplace_back(trimmed(line.substr(0, colon)),
                                       trimmed(line.substr(colon + 1)));
  return response_->headerFields.size() <= kMaximumHeaderFields;
}

bool Load::receiveBody(std::string_view bytes) {
  lastProgress_ = Clock::now();
  isBodyTooLong_ = body_.size() + bytes.size() > configuration_->maximumBodySize;
  if (!isBodyTooLong_) body_.append(bytes);
  return !isBodyTooLong_;
}

bool Load::doesSomething() const {
  const auto method = request_->httpMethod.value_or("GET");
  return method == "POST" || method == "PATCH";
}

/// Whether the request may be sent now. Curl sends it again where a kept connection ends without an
/// answer, though the service may have taken it: one that does something is sent once.
bool Load::isToBeSent() {
  isConnectionLost_ = std::exchange(isSent_, true) && doesSomething();
  return !isConnectionLost_;
}

/// Whether it met the end of a kept connection of HTTP/2, where curl does not send it again.
bool Load::isToBeSentAgain(CURLcode code) {
  if (urlErrorCode(code, 0) != URLErrorCode::networkConnectionLost || doesSomething()) return false;
  long opened = 0;
  long received = 0;
  curl_easy_getinfo(this->easy(), CURLINFO_NUM_CONNECTS, &opened);
  curl_easy_getinfo(this->easy(), CURLINFO_HEADER_SIZE, &received);
  return opened == 0 && received == 0 && !std::exchange(isSentAgain_, true);
}

/// The request that a redirect asks for, once its head was received.
std::optional<URLRequest> Load::redirect() {
  if (!isHeadComplete_) return std::nullopt;
  long status = 0;
  curl_easy_getinfo(this->easy(), CURLINFO_RESPONSE_CODE, &status);
  response_->statusCode = static_cast<int>(status);
  return redirectedRequest(*request_, *response_);
}

std::shared_ptr<const PlatformError> Load::errorFrom(CURLcode code) const {
  const auto& url = request_->url->absoluteString();
  if (isCancelled_) return urlError(URLErrorCode::cancelled, "");
  if (isConnectionLost_) return urlError(URLErrorCode::networkConnectionLost, url);
  if (isBodyTooLong_) return urlError(URLErrorCode::dataLengthExceedsMaximum, url);
  long verification = 0;
  curl_easy_getinfo(this->easy(), CURLINFO_SSL_VERIFYRESULT, &verification);
  return urlError(urlErrorCode(code, verification), url);
}

Load::Clock::time_point Load::deadline() const {
  auto after = [](Clock::time_point from, double seconds) {
    constexpr double kLongest = 1e9;
    return from + std::chrono::duration_cast<Clock::duration>(
                      std::chrono::duration<double>(std::min(seconds, kLongest)));
  };
  auto idle = request_->timeoutInterval.value_or(configuration_->requestTimeout);
  return std::min(after(lastProgress_, idle), after(started_, configuration_->resourceTimeout));
}

std::size_t Load::onHeader(char* bytes, std::size_t one, std::size_t count, void* load) {
  auto size = one * count;
  return static_cast<Load*>(load)->receiveHeader({bytes, size}) ? size : 0;
}

std::size_t Load::onBody(char* bytes, std::size_t one, std::size_t count, void* load) {
  auto size = one * count;
  return static_cast<Load*>(load)->receiveBody({bytes, size}) ? size : 0;
}

curl_socket_t Load::onOpen(void* load, curlsocktype, curl_sockaddr* address) {
  auto* self = static_cast<Load*>(load);
  self->isHandleUnfit_ = self->isOnlyForHTTP2_;
  return self->isHandleUnfit_ ? CURL_SOCKET_BAD : OpenSockets::shared().open(*address);
}

int Load::onSend(void* load, char*, char*, int, int) {
  auto* self = static_cast<Load*>(load);
  self->isHandleUnfit_ = self->isOnlyForHTTP2_ && !isOnHTTP2(self->easy());
  bool isFit = !self->isHandleUnfit_;
  return isFit && self->isToBeSent() ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
}

CURLcode Load::onTrust(CURL*, void* context, void* load) {
  static_cast<Load*>(load)->trust_->install(static_cast<SSL_CTX*>(context));
  return CURLE_OK;
}

}  // namespace quenwick::platform
