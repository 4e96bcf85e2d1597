#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>

namespace zeb::detail {

/// Keys as bits of a set.
enum ContactKey : std::uint32_t {
  identifierKey = 1 << 0,
  namePrefixKey = 1 << 1,
  givenNameKey = 1 << 2,
  middleNameKey = 1 << 3,
  familyNameKey = 1 << 4,
  nameSuffixKey = 1 << 5,
  nicknameKey = 1 << 6,
  organizationNameKey = 1 << 7,
  formattedNameKey = 1 << 8,
  emailAddressesKey = 1 << 9,
  phoneNumbersKey = 1 << 10,
};
inline constexpr std::uint32_t allContactKeys = (1 << 11) - 1;

/// 0 for a text that is no key.
std::uint32_t contactKeyNamed(const NSString& name) noexcept;
/// The set of the keys and descriptors in the list; throws NSException (NSInvalidArgumentException)
/// for other elements.
std::uint32_t contactKeysOfList(const NSArray& keys);

}  // namespace zeb::detail
