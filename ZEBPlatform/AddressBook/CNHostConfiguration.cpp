#include <ZEBPlatform/AddressBook/AuthorizationPrivate.h>
#include <ZEBPlatform/AddressBook/HostConfigurationPrivate.h>
#include <ZEBPlatform/AddressBook/StoreWatchPrivate.h>
#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Linux/detail/ProcessFacts.h>

#include <cstdlib>
#include <filesystem>
#include <utility>

namespace zeb {

namespace {

namespace fs = std::filesystem;

struct State {
  detail::Lock lock;
  CNHostConfiguration configuration ZEB_GUARDED_BY(lock);
};

State& state() {
  static detail::NeverDestroyed<State> instance;
  return *instance;
}

fs::path folderOfVariable(const char* variable) {
  const char* value = std::getenv(variable);
  const fs::path path = value ? value : "";
  return path.is_absolute() ? path : fs::path();
}

/// The folder that the variable names, else the one below the user's home.
fs::path userFolder(const char* variable, const char* placeInHome) {
  if (fs::path folder = folderOfVariable(variable); !folder.empty()) return folder;
  const fs::path home = folderOfVariable("HOME");
  return home.empty() ? home : home / placeInHome;
}

/// Without a slash at its end, so that the path has a last component.
std::string absolutePath(const NSString& text) {
  std::error_code failure;
  std::string path = fs::absolute(text.utf8(), failure).string();
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path;
}

}  // namespace

void CNSetHostConfiguration(const CNHostConfiguration& configuration) {
  CNHostConfiguration replaced = configuration;  // destroyed after the lock is free
  replaced.contactsFolder = configuration.contactsFolder.copy();
  replaced.authorizationFile = configuration.authorizationFile.copy();
  {
    State& known = state();
    const detail::LockGuard guard(known.lock);
    std::swap(known.configuration, replaced);
  }
  detail::readAuthorizationAgain();
  detail::watchOtherFolder();
}

CNHostConfiguration CNCurrentHostConfiguration() {
  State& known = state();
  const detail::LockGuard guard(known.lock);
  return known.configuration;
}

std::string detail::contactsFolder(const CNHostConfiguration& configuration) {
  if (configuration.contactsFolder) return absolutePath(configuration.contactsFolder);
  const fs::path data = userFolder("XDG_DATA_HOME", ".local/share");
  return data.empty() ? "" : (data / "contacts").string();
}

std::string detail::authorizationFile(const CNHostConfiguration& configuration) {
  if (configuration.authorizationFile) return absolutePath(configuration.authorizationFile);
  const fs::path settings = userFolder("XDG_CONFIG_HOME", ".config");
  const fs::path program = fs::path(executablePath()).filename();
  if (settings.empty() || program.empty()) return "";
  return (settings / "zebutilities/contacts-access" / program).string();
}

}  // namespace zeb
