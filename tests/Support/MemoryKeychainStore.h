#pragma once

#include <ZEBPlatform/Security/KeychainStore.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace zeb::test {

/// A keychain in memory, which counts its calls and can be told to fail.
class MemoryKeychainStore final : public KeychainStore {
 public:
  /// `find` with and without values are counted apart.
  enum class Call { add, findAttributes, findValues, update, remove };

  /// The next `count` calls of the kind return `status` and do nothing else.
  void failNext(Call call, OSStatus status, int count = 1) {
    const std::lock_guard guard(mutex_);
    failures_[static_cast<std::size_t>(call)] = {status, count};
  }
  int calls(Call call) {
    const std::lock_guard guard(mutex_);
    return calls_[static_cast<std::size_t>(call)];
  }
  std::size_t itemCount() {
    const std::lock_guard guard(mutex_);
    return items_.size();
  }

  OSStatus add(std::span<const KeychainItem> items) override {
    const std::lock_guard guard(mutex_);
    if (const auto failure = begin(Call::add)) return *failure;
    std::vector<KeychainItem> after = copies(items_);
    for (const KeychainItem& item : items) after.push_back(copyOf(item));
    return replaceItems(std::move(after));
  }

  OSStatus find(const KeychainQuery& query, Values values, std::size_t maxCount,
                std::vector<KeychainItem>& found) override {
    const std::lock_guard guard(mutex_);
    const bool includes = values != Values::leaveOut;
    if (const auto failure = begin(includes ? Call::findValues : Call::findAttributes)) {
      return *failure;
    }
    std::size_t count = 0;
    for (const KeychainItem& item : items_) {
      if (count == maxCount) break;
      if (!matches(item, query)) continue;
      found.push_back(copyOf(item));
      if (!includes) found.back().value.reset();
      ++count;
    }
    return count == 0 ? errSecItemNotFound : errSecSuccess;
  }

  OSStatus update(const KeychainQuery& query, const KeychainItem& changes) override {
    const std::lock_guard guard(mutex_);
    if (const auto failure = begin(Call::update)) return *failure;
    std::vector<KeychainItem> after = copies(items_);
    bool isFound = false;
    for (KeychainItem& item : after) {
      if (!matches(item, query)) continue;
      isFound = true;
      for (std::size_t i = 0; i < keychainAttributeCount; ++i) {
        const auto attribute = static_cast<KeychainAttribute>(i);
        const Value& value = changes.attributes[attribute];
        if (!value.isNil()) item.attributes[attribute] = value.detachedCopy();
      }
      if (changes.value) item.value = changes.value->copy();
    }
    return isFound ? replaceItems(std::move(after)) : errSecItemNotFound;
  }

  OSStatus remove(const KeychainQuery& query) override {
    const std::lock_guard guard(mutex_);
    if (const auto failure = begin(Call::remove)) return *failure;
    const auto isWanted = [&](const KeychainItem& item) { return matches(item, query); };
    return std::erase_if(items_, isWanted) == 0 ? errSecItemNotFound : errSecSuccess;
  }

 private:
  struct Failure {
    OSStatus status = errSecSuccess;
    int count = 0;
  };

  std::optional<OSStatus> begin(Call call) {
    ++calls_[static_cast<std::size_t>(call)];
    Failure& failure = failures_[static_cast<std::size_t>(call)];
    if (failure.count == 0) return std::nullopt;
    --failure.count;
    return failure.status;
  }

  static KeychainItem copyOf(const KeychainItem& item) {
    KeychainItem copy{item.itemClass, item.attributes, std::nullopt};
    for (std::size_t i = 0; i < keychainAttributeCount; ++i) {
      Value& value = copy.attributes[static_cast<KeychainAttribute>(i)];
      value = value.detachedCopy();
    }
    if (item.value) copy.value = item.value->copy();
    return copy;
  }

  static std::vector<KeychainItem> copies(const std::vector<KeychainItem>& items) {
    std::vector<KeychainItem> result;
    for (const KeychainItem& item : items) result.push_back(copyOf(item));
    return result;
  }

  static bool matches(const KeychainItem& item, const KeychainQuery& query) {
    for (std::size_t i = 0; i < keychainAttributeCount; ++i) {
      const auto attribute = static_cast<KeychainAttribute>(i);
      const Value& wanted = query.attributes[attribute];
      if (!wanted.isNil() && !(wanted == item.attributes[attribute])) return false;
    }
    return item.itemClass == query.itemClass;
  }

  static bool isSameIdentity(const KeychainItem& first, const KeychainItem& second) {
    using enum KeychainAttribute;
    const auto areEqual = [&](std::initializer_list<KeychainAttribute> attributes) {
      return std::ranges::all_of(attributes, [&](KeychainAttribute attribute) {
        return first.attributes[attribute] == second.attributes[attribute];
      });
    };
    if (first.itemClass != second.itemClass) return false;
    return first.itemClass == KeychainItemClass::genericPassword
               ? areEqual({accessGroup, service, account})
               : areEqual({accessGroup, keyClass, keyType, applicationTag});
  }

  /// Changes nothing if two items have one identity.
  OSStatus replaceItems(std::vector<KeychainItem> after) {
    for (std::size_t i = 0; i < after.size(); ++i) {
      for (std::size_t j = 0; j < i; ++j) {
        if (isSameIdentity(after[i], after[j])) return errSecDuplicateItem;
      }
    }
    items_ = std::move(after);
    return errSecSuccess;
  }

  std::mutex mutex_;
  std::vector<KeychainItem> items_;
  std::array<Failure, 5> failures_;
  std::array<int, 5> calls_{};
};

}  // namespace zeb::test
