#pragma once

#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Security/KeychainItem.h>
#include <ZEBPlatform/Security/SecBase.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zeb {

/// A place for keychain items. `SecItemAdd` and its companions turn dictionaries into the calls
/// below; hosts choose the place with `SecKeychainSetStore`.
///
/// Every function takes effect completely or not at all, and what it acknowledged with
/// `errSecSuccess` survives the end of the process. Any thread; several processes may use one place
/// at the same time.
class KeychainStore : public NSObject {
 public:
  /// What a search reads of the items that match.
  enum class Values : std::uint8_t {
    leaveOut,  ///< the attributes
    include,   ///< the attributes and the values
    only,      ///< the values; a store that saves work by it may leave attributes nil
  };

  /// Our stores refuse longer values with `errSecParam`.
  static constexpr std::size_t maxValueLength = std::size_t{16} << 20;
  /// Of one text in UTF-8, or of data. Our stores refuse longer attributes with `errSecParam`, in
  /// items and in queries.
  static constexpr std::size_t maxAttributeLength = std::size_t{64} << 10;

  /// Adds all items or none of them. `errSecDuplicateItem` if one of their identities is taken. The
  /// store keeps the dates that the items have.
  virtual OSStatus add(std::span<const KeychainItem> items) = 0;

  /// Appends at most `maxCount` items that match, oldest first, to `found`. Finding none is
  /// `errSecItemNotFound`. Unless values are left out, a value that cannot be opened is an error,
  /// and then nothing is appended.
  virtual OSStatus find(const KeychainQuery& query, Values values, std::size_t maxCount,
                        std::vector<KeychainItem>& found) = 0;

  /// Gives all items that match the attributes of `changes` that are not nil, and its value if it
  /// has one. `errSecItemNotFound` if none matches, `errSecDuplicateItem` if two items would get
  /// the same identity.
  virtual OSStatus update(const KeychainQuery& query, const KeychainItem& changes) = 0;

  /// Removes all items that match. Finding none is `errSecItemNotFound`.
  virtual OSStatus remove(const KeychainQuery& query) = 0;
};

}  // namespace zeb
