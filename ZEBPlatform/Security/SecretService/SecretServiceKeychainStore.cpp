#include <ZEBPlatform/Linux/detail/FileLock.h>
#include <ZEBPlatform/Linux/detail/PrivateFiles.h>
#include <ZEBPlatform/Security/SecretService/SecretServiceKeychainStore.h>
#include <ZEBPlatform/Security/SecretService/ServiceCollectionPrivate.h>

#include <algorithm>
#include <chrono>
#include <unordered_set>
#include <utility>

namespace zeb {

namespace {

/// Takes the lock between all processes that share the collection. The next owner waits behind a
/// gate: a writer alone, readers together. Otherwise readers whose times overlap would keep a
/// writer out for ever.
OSStatus takeLock(FileLock::Mode mode, const ServiceDeadline& deadline, FileLock& lock) {
  std::string folder = std::string(g_get_user_runtime_dir()) + "/zebutilities";
  std::string gateFolder = folder + "/gate";
  if (makePrivateFolder(folder, folder) != 0) return errSecNotAvailable;
  if (makePrivateFolder(gateFolder, gateFolder) != 0) return errSecNotAvailable;
  const auto secondsLeft = [&] { return deadline.millisecondsLeft() / 1000.0; };
  FileLock gate;
  if (gate.acquire(gateFolder, secondsLeft(), mode) != 0) return errSecNotAvailable;
  return lock.acquire(folder, secondsLeft(), mode) == 0 ? errSecSuccess : errSecNotAvailable;
}

/// The text that sorts the items which are added now. Has always the same length.
std::string orderOf(std::size_t index) {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const std::string nanoseconds =
      std::to_string(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count() +
                     static_cast<std::int64_t>(index));
  constexpr std::size_t length = 19;  // enough until the year 2286
  return std::string(length - std::min(length, nanoseconds.size()), '0') + nanoseconds;
}

/// A copy of the item that is to be stored at the path.
ServiceItem storedItem(const KeychainItem& item, bool hasValue, std::string path,
                       std::string order) {
  ServiceItem stored;
  stored.path = std::move(path);
  stored.attributes = attributesOfItem(item, hasValue, order);
  stored.order = std::move(order);
  stored.hasValue = hasValue;
  stored.item.itemClass = item.itemClass;
  stored.item.attributes = item.attributes;
  if (item.value) stored.item.value = item.value->copy();
  return stored;
}

/// `errSecDuplicateItem` if one of the identities occurs twice, or if it is that of a stored item
/// other than those to be updated.
OSStatus requireFree(ServiceCollection& collection, std::span<const ServiceItem> items) {
  std::unordered_set<std::string> identities;
  std::unordered_set<std::string> updatedPaths;
  for (const ServiceItem& item : items) {
    if (!identities.insert(identityOf(item.item)).second) return errSecDuplicateItem;
    updatedPaths.insert(item.path);
  }
  for (const std::string& identity : identities) {
    std::vector<std::string> paths;
    const OSStatus status = collection.search(attributesOfIdentity(identity).get(), paths);
    if (status != errSecSuccess) return status;
    for (const std::string& path : paths) {
      if (!updatedPaths.contains(path)) return errSecDuplicateItem;
    }
  }
  return errSecSuccess;
}

/// The items that match, damaged ones included, oldest first and without their values.
/// `errSecItemNotFound` if there is none.
OSStatus findItems(ServiceCollection& collection, const KeychainQuery& query,
                   std::vector<ServiceItem>& items) {
  const GLibPointer<GVariant> attributes = attributesOfQuery(query);
  if (!attributes) return errSecParam;
  std::vector<std::string> paths;
  OSStatus status = collection.search(attributes.get(), paths);
  if (status == errSecSuccess) status = collection.read(paths, items);
  if (status != errSecSuccess) return status;
  if (!items.empty()) return errSecSuccess;
  // If the collection was locked after it was opened, that the search finds none means nothing.
  status = collection.requireUnlocked();
  return status == errSecSuccess ? errSecItemNotFound : status;
}

/// The same, but `errSecDecode` if one of them is damaged.
OSStatus findReadableItems(ServiceCollection& collection, const KeychainQuery& query,
                           std::vector<ServiceItem>& items) {
  const OSStatus status = findItems(collection, query, items);
  const bool isDamaged = std::ranges::any_of(items, &ServiceItem::isDamaged);
  return status == errSecSuccess && isDamaged ? errSecDecode : status;
}

/// Runs the steps 0 … count - 1. If one fails, takes back, in reverse order, the steps that ran;
/// what fails then is lost.
OSStatus performAll(ServiceCollection& collection, double timeout, std::size_t count,
                    FunctionView<OSStatus(std::size_t index)> step,
                    FunctionView<OSStatus(std::size_t index)> takeBack) {
  for (std::size_t i = 0; i < count; ++i) {
    const OSStatus status = step(i);
    if (status == errSecSuccess) continue;
    collection.setDeadline(ServiceDeadline(timeout));
    do static_cast<void>(takeBack(i));
    while (i-- > 0);
    return status;
  }
  return errSecSuccess;
}

}  // namespace

SecretServiceKeychainStore::SecretServiceKeychainStore(SecretServiceOptions options)
    : options_(std::move(options)) {}

SecretServiceKeychainStore::~SecretServiceKeychainStore() = default;

OSStatus SecretServiceKeychainStore::openCollection(ServiceCollection& collection) {
  const std::string name = options_.collection.isNil() ? "default" : options_.collection.utf8();
  std::shared_ptr<ServiceConnection> connection;
  {
    const detail::LockGuard guard(lock_);
    connection = connection_;
  }
  if (connection && connection->isUsable()) {
    const OSStatus status = collection.open(connection, name);
    if (connection->isUsable()) return status;
  }
  const OSStatus status = ServiceConnection::open(collection.deadline(), connection);
  if (status != errSecSuccess) return status;
  // The replaced connection is released after unlocking.
  std::shared_ptr<ServiceConnection> other = connection;
  {
    const detail::LockGuard guard(lock_);
    connection_.swap(other);
  }
  return collection.open(std::move(connection), name);
}

OSStatus SecretServiceKeychainStore::perform(Access access,
                                             FunctionView<OSStatus(ServiceCollection&)> work) {
  // Some services have a collection without a label that is not kept.
  const NSString& name = options_.collection;
  if (!name.isNil() && (name.empty() || !name.isWellFormed())) return errSecParam;
  if (!ServiceConnection::isPossible()) return errSecNotAvailable;
  ServiceCollection collection(
      ServiceDeadline(options_.timeout),
      {options_.prompting == SecretServiceOptions::Prompting::allowed, options_.promptTimeout});
  // Before the lock, because others should not have to wait for the user.
  OSStatus status = openCollection(collection);
  if (status != errSecSuccess) return status;
  const auto mode = access == Access::read ? FileLock::Mode::shared : FileLock::Mode::exclusive;
  FileLock lock;
  status = takeLock(mode, collection.deadline(), lock);
  return status == errSecSuccess ? work(collection) : status;
}

OSStatus SecretServiceKeychainStore::availability() {
  return perform(Access::read, [](ServiceCollection&) -> OSStatus { return errSecSuccess; });
}

OSStatus SecretServiceKeychainStore::add(std::span<const KeychainItem> items) {
  return perform(Access::write, [&](ServiceCollection& collection) -> OSStatus {
    std::vector<ServiceItem> added;
    for (const KeychainItem& item : items) {
      if (item.attributes[KeychainAttribute::accessGroup].isNil()) return errSecParam;
      if (item.value && item.value->size() > maxValueLength) return errSecParam;
      added.push_back(storedItem(item, item.value.has_value(), "", orderOf(added.size())));
    }
    const OSStatus status = requireFree(collection, added);
    if (status != errSecSuccess) return status;
    return performAll(
        collection, options_.timeout, added.size(),
        [&](std::size_t i) { return collection.create(added[i]); },
        [&](std::size_t i) {
          return added[i].path.empty() ? errSecSuccess : collection.remove(added[i].path);
        });
  });
}

OSStatus SecretServiceKeychainStore::find(const KeychainQuery& query, Values values,
                                          std::size_t maxCount, std::vector<KeychainItem>& found) {
  return perform(Access::read, [&](ServiceCollection& collection) -> OSStatus {
    std::vector<ServiceItem> items;
    OSStatus status = findReadableItems(collection, query, items);
    const auto wanted = std::span(items).first(std::min(maxCount, items.size()));
    if (status == errSecSuccess && values != Values::leaveOut)
      status = collection.readValues(wanted);
    if (status != errSecSuccess) return status;
    found.reserve(found.size() + wanted.size());
    for (ServiceItem& item : wanted) found.push_back(std::move(item.item));
    return errSecSuccess;
  });
}

OSStatus SecretServiceKeychainStore::update(const KeychainQuery& query,
                                            const KeychainItem& changes) {
  if (changes.itemClass != query.itemClass) return errSecParam;
  if (changes.value && changes.value->size() > maxValueLength) return errSecParam;
  return perform(Access::write, [&](ServiceCollection& collection) -> OSStatus {
    std::vector<ServiceItem> items;
    OSStatus status = findReadableItems(collection, query, items);
    // The old values are needed to take the change back.
    if (status == errSecSuccess && changes.value) status = collection.readValues(items);
    if (status != errSecSuccess) return status;
    std::vector<ServiceItem> updated;
    for (const ServiceItem& item : items) {
      KeychainItem next{item.item.itemClass, item.item.attributes, std::nullopt};
      if (changes.value) next.value = changes.value->copy();
      for (std::size_t i = 0; i < keychainAttributeCount; ++i) {
        const auto attribute = static_cast<KeychainAttribute>(i);
        const Value& value = changes.attributes[attribute];
        if (!value.isNil()) next.attributes[attribute] = value;
      }
      updated.push_back(storedItem(next, item.hasValue || changes.value, item.path, item.order));
    }
    status = requireFree(collection, updated);
    if (status != errSecSuccess) return status;
    const auto write = [&](const ServiceItem& item) {
      const OSStatus outcome = changes.value ? collection.setValue(item) : errSecSuccess;
      return outcome == errSecSuccess ? collection.setAttributes(item) : outcome;
    };
    return performAll(
        collection, options_.timeout, items.size(),
        [&](std::size_t i) { return write(updated[i]); },
        [&](std::size_t i) { return write(items[i]); });
  });
}

OSStatus SecretServiceKeychainStore::remove(const KeychainQuery& query) {
  return perform(Access::write, [&](ServiceCollection& collection) -> OSStatus {
    std::vector<ServiceItem> items;
    OSStatus status = findItems(collection, query, items);
    if (status != errSecSuccess) return status;
    // The values are needed to take the removal of several items back; damaged ones are lost.
    if (items.size() > 1) status = collection.readValues(items);
    if (status != errSecSuccess && status != errSecDecode) return status;
    std::size_t removed = 0;
    return performAll(
        collection, options_.timeout, items.size(),
        [&](std::size_t i) {
          const OSStatus outcome = collection.remove(items[i].path);
          removed += outcome == errSecSuccess;
          return outcome;
        },
        [&](std::size_t i) {
          // A value that could not be read must not become an empty one.
          const bool isKnown = !items[i].hasValue || items[i].item.value;
          return i < removed && isKnown ? collection.create(items[i]) : errSecSuccess;
        });
  });
}

}  // namespace zeb
