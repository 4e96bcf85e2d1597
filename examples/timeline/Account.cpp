#include "Account.h"

#include <Keychain/ZEBKeychain.h>
#include <ZEBPlatform/Security/EmbeddedKeychainStore.h>
#include <ZEBPlatform/Security/SecKeychain.h>
#include <ZEBPlatform/Security/SecRandom.h>

#include <stdexcept>
#include <utility>

namespace zeb::timeline {

namespace {

constexpr const char* username = "reader";
constexpr std::size_t tokenBytes = 24;

NSString newToken() {
  SecretBytes bytes(tokenBytes);
  if (SecRandomCopyBytes(kSecRandomDefault, bytes.mutableBytes()) != 0) {
    throw std::runtime_error("The system has no random bytes.");
  }
  return SecretBytes::dataByAdopting(std::move(bytes)).base64EncodedString();
}

}  // namespace

Account::Account(const std::string* folder) {
  if (!folder) temporary_.emplace();
  const std::string path = folder ? *folder : temporary_->path();
  OSStatus status = errSecSuccess;
  const auto store = EmbeddedKeychainStore::open(NSString(path), KeychainKeyInFile{}, &status);
  if (!store) throw std::runtime_error(SecCopyErrorMessageString(status).utf8());
  SecKeychainSetStore(store);
  ZEBKeychain::createSharedKeychainWithDefaultOrvaneConfiguration();
}

Account::~Account() { SecKeychainSetStore(nullptr); }

void Account::signIn(Steps& steps) {
  const Ref<ZEBKeychain> keychain = ZEBKeychain::sharedKeychain();
  NSString token;
  NSError failure;
  steps.start();
  keychain->fetchPasswordForUsername(username, [&](const NSString& found, const NSError& error) {
    token = found;
    failure = error;
  });
  const bool isNew = token.isNil() && !failure;
  if (isNew) {
    token = newToken();
    // The configuration has no groups, so the default group's error says it all.
    keychain->setPassword(token, username,
                          [&](const NSError& error, const NSError&) { failure = error; });
  }
  if (failure) throw failure;
  steps.finish("sign in", token.length());
  steps.remark(isNew ? "with a new token, kept in the keychain" : "with the token in the keychain");
}

}  // namespace zeb::timeline
