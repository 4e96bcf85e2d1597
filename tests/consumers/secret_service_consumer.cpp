// A program of another project that uses the component SecretService, where there is no service.
#include <ZEBPlatform/Security.h>
#include <ZEBPlatform/Security/SecretService/SecretServiceKeychainStore.h>

#include <cstdio>
#include <cstdlib>

int main() {
  using namespace zeb;
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere", 1);
  SecKeychainSetStore(makeRef<SecretServiceKeychainStore>());
  Value found;
  const OSStatus status = SecItemCopyMatching({{kSecClass, kSecClassGenericPassword}}, &found);
  if (status == errSecNotAvailable) return 0;
  std::printf("The keychain answered %d.\n", status);
  return 1;
}
