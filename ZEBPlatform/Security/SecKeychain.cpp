#include <ZEBPlatform/Bundle/NSBundle.h>
#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Security/EmbeddedKeychainStore.h>
#include <ZEBPlatform/Security/SecKeychain.h>
#include <ZEBPlatform/Security/SecKeychainPrivate.h>

namespace zeb {

namespace {

using detail::KeychainSettings;
using detail::KeychainSettingsPin;

/// Read by every call and replaced rarely. The lock is for those that replace.
struct CurrentSettings {
  detail::SnapshotPointer<KeychainSettings> snapshot;
  detail::Lock lock;
};

CurrentSettings& currentSettings() {
  static detail::NeverDestroyed<CurrentSettings> settings;
  return *settings;
}

/// Calls `change` with a copy of the settings and makes the copy current. What it replaced is
/// released after unlocking, because a store's destructor may do anything.
template <class Change>
void changeSettings(const Change& change) {
  CurrentSettings& current = currentSettings();
  KeychainSettingsPin replaced;
  const detail::LockGuard guard(current.lock);
  const KeychainSettings* const old = current.snapshot.get();
  KeychainSettings settings = old ? *old : KeychainSettings();
  change(settings);
  replaced = current.snapshot.replace(std::move(settings));
}

NSString ownAccessGroup() {
  const Ref<NSBundle>& bundle = NSBundle::mainBundle();
  const NSString prefix(bundle->objectForInfoDictionaryKey("AppIdentifierPrefix"));
  const NSString identifier = bundle->bundleIdentifier();
  if (prefix.isNil()) return NSString("") + identifier;
  return prefix + NSString::stringWithFormat("%@", identifier);
}

}  // namespace

void SecKeychainSetStore(const Ref<KeychainStore>& store) {
  changeSettings([&](KeychainSettings& settings) { settings.store = store; });
}

void SecKeychainSetDefaultAccessGroup(const NSString& group) {
  changeSettings([&](KeychainSettings& settings) { settings.accessGroup = group.detachedCopy(); });
}

NSString SecKeychainDefaultAccessGroup() {
  const KeychainSettingsPin pin = currentSettings().snapshot.pin();
  return detail::accessGroupOf(pin ? *pin : KeychainSettings());
}

const NSString& detail::accessGroupOf(const KeychainSettings& settings) {
  if (!settings.accessGroup.isNil()) return settings.accessGroup;
  // The main bundle stays the same once it was asked for.
  static const NeverDestroyed<NSString> own(ownAccessGroup());
  return *own;
}

OSStatus detail::pinKeychain(KeychainSettingsPin& pin) {
  for (;;) {
    pin = currentSettings().snapshot.pin();
    if (pin && pin->store) return errSecSuccess;
    // Opened without the lock, because it reads files. If several threads open the store, the first
    // one's is used.
    OSStatus status = errSecSuccess;
    const Ref<KeychainStore> opened =
        EmbeddedKeychainStore::open(nullptr, KeychainKeyInFile{}, &status);
    if (!opened) return status;
    changeSettings([&](KeychainSettings& settings) {
      if (!settings.store) settings.store = opened;
    });
  }
}

}  // namespace zeb
