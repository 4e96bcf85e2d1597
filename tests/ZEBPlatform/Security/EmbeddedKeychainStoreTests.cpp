#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Security/EmbeddedKeychainStore.h>

#include <filesystem>

#include "Support/Support.h"

namespace zeb::test {

namespace fs = std::filesystem;

using enum KeychainAttribute;
using Values = KeychainStore::Values;

KeychainAttributes named(const Value& name, const char* serviceName = "mail") {
  KeychainAttributes attributes;
  attributes[accessGroup] = "group";
  attributes[service] = serviceName;
  attributes[account] = name;
  return attributes;
}

KeychainItem password(const Value& name, std::string_view secret) {
  return {KeychainItemClass::genericPassword, named(name), SecretBytes(secret)};
}

/// An empty folder, which is removed at the end of the test.
struct EmbeddedKeychain : testing::Test {
  EmbeddedKeychain() {
    std::string name = (fs::temp_directory_path() / "zeb-test-XXXXXX").string();
    folder = mkdtemp(name.data());
  }
  ~EmbeddedKeychain() override { fs::remove_all(folder); }

  Ref<EmbeddedKeychainStore> open(KeychainMasterKey key = KeychainKeyInFile()) {
    return EmbeddedKeychainStore::open((folder / "store").string(), std::move(key), &status);
  }
  static OSStatus addOne(const Ref<EmbeddedKeychainStore>& store, const KeychainItem& item) {
    return store->add(std::span(&item, 1));
  }
  /// The values of the items that match, with spaces between them, or the status.
  static std::string secrets(const Ref<EmbeddedKeychainStore>& store,
                             const KeychainAttributes& attributes, std::size_t maxCount = 10) {
    std::vector<KeychainItem> found;
    const OSStatus result = store->find({KeychainItemClass::genericPassword, attributes},
                                        Values::include, maxCount, found);
    if (result) return std::to_string(result);
    std::string all;
    for (const KeychainItem& item : found) {
      const auto bytes = item.value ? item.value->bytes() : std::span<const std::byte>();
      all.append(all.empty() ? "" : " ")
          .append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    return all;
  }

  fs::path folder;
  OSStatus status = -1;
};

TEST_F(EmbeddedKeychain, KeepsItemsAfterItIsClosed) {
  for (const char* secret : {"first", "second"}) {
    const auto store = open();
    ASSERT_TRUE(store) << status;
    if (std::string_view(secret) == "first") {
      EXPECT_EQ(addOne(store, password("anna", "first")), errSecSuccess);
      EXPECT_EQ(addOne(store, password("anna", "again")), errSecDuplicateItem);
    }
    EXPECT_EQ(secrets(store, named("anna")), "first");
    EXPECT_EQ(secrets(store, named("bert")), std::to_string(errSecItemNotFound));
  }
}

}  // namespace zeb::test
