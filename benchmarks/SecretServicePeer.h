#pragma once

#include <string>

namespace zeb::bench {

// libsecret's functions for single passwords, against a gnome-keyring-daemon in a D-Bus session of
// its own. The user's keyring is not touched.

/// Starts the session, which lasts until the program ends. False, with a reason on standard error,
/// if libsecret, D-Bus or the keyring is not installed.
bool startSecretService();

/// Both throw std::exception if libsecret reports an error. Only after `startSecretService`.
void storeWithLibsecret(const std::string& username, const std::string& password);
std::string passwordFromLibsecret(const std::string& username);

}  // namespace zeb::bench
