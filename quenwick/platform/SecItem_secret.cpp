#include <libsecret/secret.h>

#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

#include "quenwick/platform/SecretBus_secret.h"

namespace quenwick::platform {
namespace {

const SecretSchema* schema() {
  static const SecretSchema kSchema = {"com.quenwick.sdk.keychain",
                                       SECRET_SCHEMA_NONE,
                                       {{"application", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                        {"service", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                        {"account", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                        {"generic", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                        {"accessible", SECRET_SCHEMA_ATTRIBUTE_STRING},
                                        {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING}},
                                       0,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr};
  return &kSchema;
}

struct ReleaseTable {
  void operator()(GHashTable* table) const { g_hash_table_unref(table); }
};
using Attributes = std::unique_ptr<GHashTable, ReleaseTable>;

void put(const Attributes& attributes, const char* name, const std::string& value) {
  g_hash_table_replace(attributes.get(), g_strdup(name), g_strdup(value.c_str()));
}

std::string text(const Attributes& attributes, const char* name) {
  const auto* found = static_cast<const char*>(g_hash_table_lookup(attributes.get(), name));
  return found ? found : "";
}

struct ReleaseValue {
  void operator()(SecretValue* value) const { secret_value_unref(value); }
};
using Secret = std::unique_ptr<SecretValue, ReleaseValue>;

Secret secretOf(const Bytes& data) {
  return Secret(
      secret_value_new(data.data(), static_cast<gssize>(data.size()), "application/octet-stream"));
}

using FoundItems = std::vector<GObjectPointer<SecretItem>>;

std::string pathOf(SecretItem* item) { return g_dbus_proxy_get_object_path(G_DBUS_PROXY(item)); }

/// The items of one application in the desktop's keyring. Every operation ends in about the time
/// that it is given, by an error where the bus or the keyring does not answer.
class SecretServiceBackend : public SecItemBackend {
 public:
  SecretServiceBackend(std::string application, std::chrono::milliseconds patience,
                       std::function<void()> onChange)
      : application_(std::move(application)), patience_(patience), onChange_(std::move(onChange)) {}

  SecItems load() override {
    OwnMainContext context;
    TimeLimit limit(patience_);
    constexpr auto kFlags =  // NOLINTNEXTLINE(clang-analyzer-optin.core.EnumCastOutOfRange)
        static_cast<SecretSearchFlags>(SECRET_SEARCH_ALL | SECRET_SEARCH_LOAD_SECRETS);
    auto found = search(attributes(), kFlags, limit.cancellable());
    // Only now: a keyring that is locked meanwhile finds nothing, and says so without an error.
    unlockedCollection(limit.cancellable());
    SecItems items;
    for (const auto& item : found) {
      auto [key, value] = read(item.get());
      items.emplace(std::move(key), std::move(value));
    }
    return items;
  }

  std::optional<SecItem> add(const SecItemKey& key, SecItem item) override {
    OwnMainContext context;
    TimeLimit limit(patience_);
    auto collection = unlockedCollection(limit.cancellable());
    if (!find(key, limit.cancellable()).empty()) return std::nullopt;
    item.reference = pathOf(create(collection, key, item, limit.cancellable()).get());
    return item;
  }

  // By an item that takes the old one's place: setting an item's secret is told to nobody.
  bool update(const SecItemKey& key, const Bytes& data) override {
    OwnMainContext context;
    TimeLimit limit(patience_);
    auto collection = unlockedCollection(limit.cancellable());
    auto found = find(key, limit.cancellable());
    if (found.empty()) return false;
    Attributes before(secret_item_get_attributes(found.front().get()));
    SecItem item{text(before, "generic"), text(before, "accessible"), data};
    auto path = pathOf(create(collection, key, item, limit.cancellable()).get());
    std::erase_if(found, [&](const auto& other) { return pathOf(other.get()) == path; });
    remove(found, limit.cancellable());  // from other collections
    return true;
  }

  bool remove(const SecItemKey& key) override {
    OwnMainContext context;
    TimeLimit limit(patience_);
    unlockedCollection(limit.cancellable());
    auto found = find(key, limit.cancellable());
    remove(found, limit.cancellable());
    return !found.empty();
  }

  // Items' changes are told by signals, as long as there is a connection for them.
  bool mayHaveChanged() const override {
    std::lock_guard lock(mutex_);
    return !connection_ || g_dbus_connection_is_closed(connection_.get());
  }

 private:
  Attributes attributes() const {
    Attributes all(g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free));
    put(all, "application", application_);
    return all;
  }
  Attributes attributes(const SecItemKey& key) const {
    auto all = attributes();
    put(all, "service", key.service);
    put(all, "account", key.account);
    return all;
  }

  FoundItems search(const Attributes& of, SecretSearchFlags flags, GCancellable* cancellable) {
    Operation look;
    auto* service = this->service(cancellable);
    secret_service_search(service, schema(), of.get(), flags, cancellable, &Operation::end, &look);
    GError* error = nullptr;
    auto* list = secret_service_search_finish(service, look.wait(), &error);
    FoundItems items;
    for (auto* each = list; each; each = each->next) {
      items.emplace_back(static_cast<SecretItem*>(each->data));
    }
    g_list_free(list);
    throwIfSet(error);
    return items;
  }

  FoundItems find(const SecItemKey& key, GCancellable* cancellable) {
    auto found = search(attributes(key), SECRET_SEARCH_ALL, cancellable);
    for (const auto& item : found) refuseLocked(secret_item_get_locked(item.get()));
    return found;
  }

  GObjectPointer<SecretItem> create(const GObjectPointer<SecretCollection>& collection,
                                    const SecItemKey& key, const SecItem& item,
                                    GCancellable* cancellable) const {
    auto all = attributes(key);
    put(all, "generic", item.generic);
    put(all, "accessible", item.accessible);
    auto label = key.account + " (" + application_ + ")";
    auto secret = secretOf(item.data);
    Operation creation;
    secret_item_create(collection.get(), schema(), all.get(), label.c_str(), secret.get(),
                       SECRET_ITEM_CREATE_REPLACE, cancellable, &Operation::end, &creation);
    GError* error = nullptr;
    GObjectPointer<SecretItem> made(secret_item_create_finish(creation.wait(), &error));
    throwIfSet(error);
    if (!made) throw SecItemError(errSecNotAvailable, "the keyring made no item");
    return made;
  }

  static void remove(const FoundItems& items, GCancellable* cancellable) {
    for (const auto& item : items) {
      Operation removal;
      secret_item_delete(item.get(), cancellable, &Operation::end, &removal);
      GError* error = nullptr;
      secret_item_delete_finish(item.get(), removal.wait(), &error);
      throwIfSet(error);
    }
  }

  static void refuseLocked(gboolean isLocked) {
    if (isLocked) throw SecItemError(errSecInteractionNotAllowed, "the keyring is locked");
  }

  static std::pair<SecItemKey, SecItem> read(SecretItem* item) {
    refuseLocked(secret_item_get_locked(item));
    Secret secret(secret_item_get_secret(item));
    if (!secret) throw SecItemError(errSecNotAvailable, "the keyring does not give a secret");
    Attributes found(secret_item_get_attributes(item));
    gsize size = 0;
    const auto* data = secret_value_get(secret.get(), &size);
    return {{text(found, "service"), text(found, "account")},
            {text(found, "generic"), text(found, "accessible"), Bytes(data, size), pathOf(item)}};
  }

  /// The collection that new items go to. Throws while it is locked, or where there is none.
  GObjectPointer<SecretCollection> unlockedCollection(GCancellable* cancellable) {
    Operation look;
    secret_collection_for_alias(service(cancellable), SECRET_COLLECTION_DEFAULT,
                                SECRET_COLLECTION_NONE, cancellable, &Operation::end, &look);
    GError* error = nullptr;
    GObjectPointer<SecretCollection> collection(
        secret_collection_for_alias_finish(look.wait(), &error));
    throwIfSet(error);
    if (!collection) throw SecItemError(errSecNotAvailable, "the keyring has no place for secrets");
    refuseLocked(secret_collection_get_locked(collection.get()));
    return collection;
  }

  /// The keyring's service, on a connection that is open.
  SecretService* service(GCancellable* cancellable) {
    connect(cancellable);
    if (isOwnerNew_->exchange(false)) service_.reset();
    if (service_) return service_.get();
    Operation opening;
    secret_service_open(SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION, cancellable,
                        &Operation::end, &opening);
    GError* error = nullptr;
    GObjectPointer<SecretService> made(secret_service_open_finish(opening.wait(), &error));
    throwIfSet(error);
    if (!made) throw SecItemError(errSecNotAvailable, "the keyring does not answer");
    service_ = std::move(made);
    return service_.get();
  }

  void connect(GCancellable* cancellable) {
    if (connection_ && !g_dbus_connection_is_closed(connection_.get())) return;
    service_.reset();
    signals_.reset();
    {
      std::lock_guard lock(mutex_);
      connection_ = nullptr;
    }
    auto made = connectToSessionBus(cancellable);
    signals_ = std::make_unique<KeyringSignals>(
        made.get(),
        [isOwnerNew = isOwnerNew_, onChange = onChange_](bool isOwnerChange) {
          if (isOwnerChange) *isOwnerNew = true;
          onChange();
        },
        cancellable);
    {
      std::lock_guard lock(mutex_);
      connection_ = std::move(made);
    }
    if (std::exchange(wasConnected_, true))
      onChange_();  // nobody told what changed while there was no connection
  }

  const std::string application_;
  const std::chrono::milliseconds patience_;
  const std::function<void()> onChange_;
  const std::shared_ptr<std::atomic<bool>> isOwnerNew_ = std::make_shared<std::atomic<bool>>(false);
  mutable std::mutex mutex_;
  GObjectPointer<GDBusConnection> connection_;
  bool wasConnected_ = false;
  std::unique_ptr<KeyringSignals> signals_;
  GObjectPointer<SecretService> service_;
};

}  // namespace

std::unique_ptr<SecItemBackend> makeSecretServiceBackend(std::string application,
                                                         std::chrono::milliseconds patience,
                                                         std::function<void()> onChange) {
  return std::make_unique<SecretServiceBackend>(std::move(application), patience,
                                                std::move(onChange));
}

}  // namespace quenwick::platform
