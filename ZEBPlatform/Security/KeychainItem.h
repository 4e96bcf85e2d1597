#pragma once

#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Security/SecretBytes.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace zeb {

enum class KeychainItemClass : std::uint8_t { genericPassword, key };

/// The attributes that stores keep with an item's value, and the kinds of their values. Attributes
/// are not secret.
enum class KeychainAttribute : std::uint8_t {
  accessGroup,       ///< text, never nil
  account,           ///< text or data; a text and data of the same bytes are different
  service,           ///< text
  generic,           ///< data
  label,             ///< text
  accessible,        ///< text
  applicationTag,    ///< data
  applicationLabel,  ///< data
  keyType,           ///< text
  keyClass,          ///< text
  keySizeInBits,     ///< number
  creationDate,      ///< date
  modificationDate,  ///< date
};
inline constexpr std::size_t keychainAttributeCount = 13;

/// A set of attributes. Nil means that an attribute is absent.
class KeychainAttributes {
 public:
  Value& operator[](KeychainAttribute attribute) noexcept {
    return values_[static_cast<std::size_t>(attribute)];
  }
  const Value& operator[](KeychainAttribute attribute) const noexcept {
    return values_[static_cast<std::size_t>(attribute)];
  }

 private:
  std::array<Value, keychainAttributeCount> values_;
};

/// One item. A store has no two items of the same identity, which consists of the class and
///   - for passwords: access group, service and account,
///   - for keys: access group, key class, key type and application tag.
struct KeychainItem {
  KeychainItemClass itemClass = KeychainItemClass::genericPassword;
  KeychainAttributes attributes;
  /// None for an item that was stored without a value, or if a search did not ask for it.
  std::optional<SecretBytes> value;
};

/// Selects the items of one class whose attributes equal all those that are given.
struct KeychainQuery {
  KeychainItemClass itemClass = KeychainItemClass::genericPassword;
  KeychainAttributes attributes;
};

}  // namespace zeb
