#include "quenwick/platform/SecItemStore.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

#include "quenwick/platform/Bundle.h"
#include "quenwick/platform/KeptForGood.h"
#include "quenwick/platform/KeysThread.h"
#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/SecItemChoice.h"
#include "quenwick/platform/Text.h"

namespace quenwick::platform {
namespace {

constexpr std::chrono::milliseconds kCallersPatience(500);  // beyond that of an operation
constexpr std::int64_t kRetryInterval = 1'000'000'000;      // nanoseconds

/// A call on its way to the keychain's thread. One that its caller has given up never begins.
class Call {
 public:
  bool begin() {
    std::lock_guard lock(mutex_);
    return !isGivenUp_;
  }
  void end(OSStatus status) {
    std::lock_guard lock(mutex_);
    status_ = status;
    changed_.notify_all();
  }
  OSStatus wait(std::chrono::milliseconds atMost) {
    std::unique_lock lock(mutex_);
    isGivenUp_ = !changed_.wait_for(lock, atMost, [this] { return status_.has_value(); });
    return status_.value_or(errSecNotAvailable);
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool isGivenUp_ = false;
  std::optional<OSStatus> status_;
};

bool isText(const std::string& text) {
  return isUTF8(text) && text.find('\0') == std::string::npos;
}

/// Whether the query names one item in a way that every backend understands.
bool isSound(const SecItemQuery& query) {
  return !query.kSecAttrSynchronizable && isText(query.kSecAttrService) &&
         isText(query.kSecAttrAccount) && isText(query.kSecAttrGeneric.value_or(""));
}

SecItemKey keyOf(const SecItemQuery& query) {
  return {query.kSecAttrService, query.kSecAttrAccount};
}

std::atomic<SecItemStore*>& replacement() {
  static std::atomic<SecItemStore*> store = nullptr;
  return store;
}

void tell(SecItemBackendKind kind) {
  writeLog({LogLevel::standard, kind == SecItemBackendKind::secretService
                                    ? "Secrets are kept in the desktop's keyring"
                                    : "Secrets are kept in a sealed file"});
}

}  // namespace

SecItemStore& SecItemStore::standard() {
  if (auto* store = replacement().load()) return *store;
  HeldLog held;
  static auto& instance = [&]() -> SecItemStore& {
    const auto& host = hostConfiguration();
    auto preferred = host.keychain;
    if (!preferred && host.home) preferred = SecItemBackendKind::sealedFile;
    return make({settingsDirectory(), Bundle::main().identifierOrExecutable(), preferred});
  }();
  return instance;
}

void SecItemStore::setStandard(SecItemStore& store) { replacement() = &store; }

SecItemStore& SecItemStore::make(Options options) {
  return keptForGood(std::unique_ptr<SecItemStore>(new SecItemStore(std::move(options))));
}

OSStatus SecItemStore::add(const SecItemQuery& attributes) {
  if (!isSound(attributes)) return errSecParam;
  return runOnKeysThread([this, attributes] {
    return attempt([&](SecItemBackend& backend) {
      auto added =
          backend.add(keyOf(attributes),
                      {attributes.kSecAttrGeneric.value_or(""),
                       attributes.kSecAttrAccessible.value_or(kSecAttrAccessibleWhenUnlocked),
                       attributes.kSecValueData.value_or("")});
      if (!added) return errSecDuplicateItem;
      changeKnown([&](SecItems& items) { items.insert_or_assign(keyOf(attributes), *added); });
      return errSecSuccess;
    });
  });
}

OSStatus SecItemStore::update(const SecItemQuery& query, const SecItemQuery& attributesToUpdate) {
  if (!isSound(query) || !attributesToUpdate.kSecValueData) return errSecParam;
  return runOnKeysThread([this, query, data = *attributesToUpdate.kSecValueData] {
    return attempt([&](SecItemBackend& backend) {
      if (isOther(query) || !backend.update(keyOf(query), data)) return errSecItemNotFound;
      bool isKnown = false;
      changeKnown([&](SecItems& items) {
        auto item = items.find(keyOf(query));
        isKnown = item != items.end();
        if (isKnown) item->second.data = data;
      });
      if (!isKnown) postLoad();
      return errSecSuccess;
    });
  });
}

OSStatus SecItemStore::remove(const SecItemQuery& query) {
  if (!isSound(query)) return errSecParam;
  return runOnKeysThread([this, query] {
    return attempt([&](SecItemBackend& backend) {
      bool isRemoved = !isOther(query) && backend.remove(keyOf(query));
      if (!isRemoved) return errSecItemNotFound;
      changeKnown([&](SecItems& items) { items.erase(keyOf(query)); });
      return errSecSuccess;
    });
  });
}

OSStatus SecItemStore::copyMatching(const SecItemQuery& query, std::optional<Bytes>& result) {
  result.reset();
  if (!isSound(query)) return errSecParam;
  auto known = answer(query, result);
  // Out of reach a moment ago: tried again behind the caller's back, who does not wait for it.
  bool isWaitInVain = isAway_ && !(keysThread().isCurrent() && isRetryDue());
  if (known || isWaitInVain) {
    lookForChanges();
    return known.value_or(errSecNotAvailable);
  }
  auto status = runOnKeysThread([this] { return load(); });
  return answer(query, result).value_or(status);
}

std::optional<SecItemBackendKind> SecItemStore::backend() {
  if (!kind_.load()) {
    runOnKeysThread([this] { return attempt([](SecItemBackend&) { return errSecSuccess; }); });
  }
  return kind_;
}

bool SecItemStore::isInMemory() const {
  std::lock_guard lock(mutex_);
  return known_.has_value();
}

/// What memory says; none while nothing was loaded yet.
std::optional<OSStatus> SecItemStore::answer(const SecItemQuery& query,
                                             std::optional<Bytes>& result) const {
  std::lock_guard lock(mutex_);
  if (!known_) return std::nullopt;
  auto found = known_->find(keyOf(query));
  if (found == known_->end()) return errSecItemNotFound;
  const auto& item = found->second;
  if (query.kSecAttrGeneric && *query.kSecAttrGeneric != item.generic) return errSecItemNotFound;
  if (query.kSecReturnPersistentRef) {
    result = item.reference;
  } else if (query.kSecReturnData) {
    result = item.data;
  }
  return errSecSuccess;
}

/// Looks whether somebody else has changed items; and while the backend is out of reach, every
/// second whether it is back.
void SecItemStore::lookForChanges() {
  if (!lookInterval_.isOver()) return;
  auto* backend = opened_.load();
  bool isDue = isAway_ ? isRetryDue() : backend && backend->mayHaveChanged();
  if (isDue) postLoad();
}

OSStatus SecItemStore::runOnKeysThread(std::function<OSStatus()> work) const {
  if (keysThread().isCurrent()) return work();
  auto call = std::make_shared<Call>();
  keysThread().post([call, work = std::move(work)] {
    if (call->begin()) call->end(work());
  });
  return call->wait(options_.patience + kCallersPatience);
}

bool SecItemStore::isRetryDue() const { return coarseNow() - lastTried_ >= kRetryInterval; }

void SecItemStore::postLoad() {
  if (isLoadComing_.exchange(true)) return;
  keysThread().post([this] {
    isLoadComing_ = false;
    load();
  });
}

OSStatus SecItemStore::load() {
  return attempt([this](SecItemBackend& backend) {
    auto items = backend.load();
    std::lock_guard lock(mutex_);
    known_ = std::move(items);
    return errSecSuccess;
  });
}

/// Does the work; a backend that is out of reach has its status returned, and one line logged.
OSStatus SecItemStore::attempt(const std::function<OSStatus(SecItemBackend&)>& work) {
  try {
    auto status = work(open());
    isAway_ = false;
    hasReportedFailure_ = false;
    return status;
  } catch (const Error& error) {
    lastTried_ = coarseNow();
    isAway_ = true;
    if (!std::exchange(hasReportedFailure_, true)) {
      logPlatformError("The keychain is out of reach: " + error.localizedDescription());
    }
    const auto* known = dynamic_cast<const SecItemError*>(&error);
    return known ? known->status() : errSecNotAvailable;
  }
}

SecItemBackend& SecItemStore::open() {
  if (opened_.load()) return *backend_;
  auto kind = chosenSecItemBackend(options_.folder, [this] { return chooseBackend(); });
  if (kind != SecItemBackendKind::secretService || !backend_) backend_ = makeBackend(kind);
  tell(kind);
  kind_ = kind;
  opened_ = backend_.get();
  return *backend_;
}

/// The keyring, where one answers and can be used at once.
SecItemBackendKind SecItemStore::chooseBackend() {
  if (options_.preferred) return *options_.preferred;
  try {
    auto keyring = makeBackend(SecItemBackendKind::secretService);
    keyring->load();
    backend_ = std::move(keyring);  // as it is used from now on, unless another process decides
    return SecItemBackendKind::secretService;
  } catch (const SecItemError&) {
    return SecItemBackendKind::sealedFile;  // which the log will say
  }
}

std::unique_ptr<SecItemBackend> SecItemStore::makeBackend(SecItemBackendKind kind) {
  if (kind == SecItemBackendKind::sealedFile) return makeSealedBackend(options_.folder);
  return makeSecretServiceBackend(options_.application, options_.patience, [this] { postLoad(); });
}

/// Whether the item of that name is not the one that the query describes.
bool SecItemStore::isOther(const SecItemQuery& query) const {
  std::lock_guard lock(mutex_);
  if (!known_ || !query.kSecAttrGeneric) return false;
  auto found = known_->find(keyOf(query));
  return found != known_->end() && found->second.generic != *query.kSecAttrGeneric;
}

void SecItemStore::changeKnown(const std::function<void(SecItems&)>& change) {
  std::lock_guard lock(mutex_);
  if (known_) change(*known_);
}

}  // namespace quenwick::platform
