#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/FunctionView.h>

#include <cstddef>
#include <string_view>
#include <vector>

namespace zeb::detail {

/// What the address book uses of a vCard. Texts that the card does not have are nil; none is empty
/// or has white space around it.
struct VCard {
  NSString uid;
  NSString formattedName;
  NSString namePrefix;
  NSString givenName;
  NSString middleName;
  NSString familyName;
  NSString nameSuffix;
  NSString nickname;
  NSString organizationName;
  std::vector<Value> emailAddresses;  ///< strings
  std::vector<Value> phoneNumbers;    ///< strings
  bool isGroup = false;

  bool hasName() const noexcept {
    return formattedName || namePrefix || givenName || middleName || familyName || nameSuffix ||
           nickname || organizationName;
  }
};

/// A card that cannot be used. `place` is the offset of its beginning in the text.
struct BrokenVCard {
  std::size_t place;
  const char* reason;
};

/// Reads vCards of version 3.0 (RFC 2426) and 4.0 (RFC 6350), one after the other, in linear time.
/// Calls `use` with each usable card, which it may take the content of, and `reject` with each
/// broken one; what makes a card broken is in CNContactStore.h. A card without a version counts as
/// one of 4.0. Lines outside cards, unknown properties and lines without a colon are skipped.
/// Besides the cards, it uses memory for the longest folded line. Any thread.
void readVCards(std::string_view text, FunctionView<void(VCard& card)> use,
                FunctionView<void(const BrokenVCard& card)> reject);

}  // namespace zeb::detail
