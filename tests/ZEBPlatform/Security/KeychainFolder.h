#pragma once

#include <ZEBPlatform/Security/EmbeddedKeychainStore.h>
#include <sqlite3.h>

#include <filesystem>

#include "Support/Support.h"

namespace zeb::test {

namespace fs = std::filesystem;
using enum KeychainAttribute;
using Values = KeychainStore::Values;

inline const std::string notFound = std::to_string(errSecItemNotFound);

inline KeychainAttributes named(const Value& name, const char* serviceName = "mail") {
  KeychainAttributes attributes;
  attributes[accessGroup] = "group";
  attributes[service] = serviceName;
  attributes[account] = name;
  return attributes;
}
inline KeychainItem password(const Value& name, std::string_view secret) {
  return {KeychainItemClass::genericPassword, named(name), SecretBytes(secret)};
}

/// A folder for one store, which is removed at the end of the test.
struct KeychainFolder : testing::Test {
  KeychainFolder() {
    std::string name = (fs::temp_directory_path() / "zeb-test-XXXXXX").string();
    folder = mkdtemp(name.data());
    place = folder / "store";
  }
  ~KeychainFolder() override { fs::remove_all(folder); }

  Ref<EmbeddedKeychainStore> open(KeychainMasterKey key = KeychainKeyInFile()) {
    return EmbeddedKeychainStore::open(place.string(), std::move(key), &status);
  }
  OSStatus addOne(const Ref<EmbeddedKeychainStore>& store, const KeychainItem& item) const {
    return store ? store->add(std::span(&item, 1)) : status;
  }
  /// The values of the items that match, with spaces between them, or the status.
  static std::string secrets(const Ref<EmbeddedKeychainStore>& store,
                             const KeychainAttributes& attributes, std::size_t maxCount = 1000,
                             Values values = Values::only) {
    std::vector<KeychainItem> found;
    const OSStatus result =
        store->find({KeychainItemClass::genericPassword, attributes}, values, maxCount, found);
    if (result) return std::to_string(result);
    std::string all;
    for (const KeychainItem& item : found) {
      const auto bytes = item.value ? item.value->bytes() : std::span<const std::byte>();
      all.append(all.empty() ? "" : " ");
      all.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    return all;
  }
  /// Changes the database as another program could. The connection stays open until the test ends.
  void execute(const char* sql) {
    if (!other) {
      sqlite3* handle = nullptr;
      ASSERT_EQ(sqlite3_open((place / "keychain.db").c_str(), &handle), SQLITE_OK);
      other.reset(handle);
    }
    ASSERT_EQ(sqlite3_exec(other.get(), sql, nullptr, nullptr, nullptr), SQLITE_OK) << sql;
  }

  fs::path folder;
  fs::path place;
  OSStatus status = -1;
  std::unique_ptr<sqlite3, decltype(&sqlite3_close)> other{nullptr, &sqlite3_close};
};

}  // namespace zeb::test
