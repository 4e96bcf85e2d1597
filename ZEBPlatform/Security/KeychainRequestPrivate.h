#pragma once

#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Security/KeychainItem.h>
#include <ZEBPlatform/Security/SecBase.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace zeb::detail {

/// What a dictionary is given for, which decides the keys that it may have.
enum class KeychainDictionary : std::uint8_t {
  newItem,     ///< attributes, a value, what to return
  search,      ///< attributes, what to return, a limit
  bulkSearch,  ///< the same; takes all matches, so that a smaller limit contradicts it
  changes,     ///< attributes and a value, but no class
  newKey,      ///< attributes and whether the key becomes an item
};

/// A dictionary of `SecItemAdd` and its companions, checked and taken apart.
struct KeychainRequest {
  /// `errSecParam` for a nil dictionary, a key that is unknown or out of place here, a value of the
  /// wrong kind and a missing class. Attributes are shared with the dictionary; the value is
  /// copied.
  OSStatus read(const NSDictionary& dictionary, KeychainDictionary purpose);

  /// An item with the attributes and the value, which it takes over.
  KeychainItem takeItem() {
    return {query.itemClass, std::move(query.attributes), std::move(value)};
  }
  bool returnsSomething() const noexcept {
    return returnsData || returnsAttributes || returnsReference;
  }

  KeychainQuery query;  ///< the class and the attributes
  std::optional<SecretBytes> value;
  bool isPermanent = false;
  bool returnsData = false;
  bool returnsAttributes = false;
  bool returnsReference = false;
  bool returnsList = false;
  std::size_t maxCount = 1;
};

/// What the request asks to return of the items, whose values it takes. With `errSecSuccess`
/// `result` is set, otherwise it stays as it is.
OSStatus makeResult(const KeychainRequest& request, std::vector<KeychainItem> items, Value& result);

}  // namespace zeb::detail
