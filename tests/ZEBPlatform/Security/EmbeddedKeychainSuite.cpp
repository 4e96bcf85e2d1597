#include <ZEBPlatform/Security/EmbeddedKeychainStore.h>

#include <filesystem>

#include "Support/KeychainStoreSuite.h"

namespace zeb::test {
namespace {

/// A folder that is removed when the program ends.
struct Folder {
  Folder() { mkdtemp(path.data()); }
  ~Folder() { std::filesystem::remove_all(path); }
  std::string path = std::filesystem::temp_directory_path() / "zeb-test-XXXXXX";
} folder;

INSTANTIATE_TEST_SUITE_P(Embedded, KeychainStoreSuite,
                         testing::Values(KeychainStorePlace{
                             [] { std::filesystem::remove_all(folder.path + "/store"); },
                             []() -> Ref<KeychainStore> {
                               return EmbeddedKeychainStore::open(NSString(folder.path + "/store"),
                                                                  KeychainKeyInFile());
                             }}));

}  // namespace
}  // namespace zeb::test
