#pragma once

#include <ZEBPlatform/Security/KeychainItem.h>
#include <ZEBPlatform/Security/SecretService/GLibPointersPrivate.h>

#include <cstdint>
#include <optional>
#include <string>

namespace zeb {

// The service's attributes are pairs of UTF-8 texts. This is how ours are written:
//   "xdg:schema"           marks our items, so that no other program's are ever touched
//   "class", "identity"    the item's class; a digest of the attributes that are its identity
//   "order"                sorts the items by age
//   "value"                "some" or "none", because the service has no item without a value
//   "accessGroup" …        the item's attributes, each a text that begins with its kind

/// An item as the service has it.
struct ServiceItem {
  std::string path;
  GLibPointer<GVariant> attributes;  ///< null if they cannot be written
  // The rest says the same, except that the value is in `item` only.
  std::string order;
  bool hasValue = false;
  KeychainItem item;
  bool isDamaged = false;  ///< The attributes are none that we write; `item` has only a part.
};

/// The attributes that every item that matches has; null if a value is not of its attribute's kind.
GLibPointer<GVariant> attributesOfQuery(const KeychainQuery& query);

/// A digest of the item's identity, the same for no other identity.
std::string identityOf(const KeychainItem& item);

/// The attributes that only the item of this identity has.
GLibPointer<GVariant> attributesOfIdentity(const std::string& identity);

/// All attributes to be stored; null as above.
GLibPointer<GVariant> attributesOfItem(const KeychainItem& item, bool hasValue,
                                       const std::string& order);

/// The item with these attributes at the path, without its value.
ServiceItem itemWithAttributes(std::string path, GLibPointer<GVariant> attributes);

/// The item's name for people who look into their keyring.
std::string visibleLabel(const KeychainItem& item);

}  // namespace zeb
