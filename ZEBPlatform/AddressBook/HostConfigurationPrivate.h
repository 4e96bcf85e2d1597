#pragma once

#include <ZEBPlatform/AddressBook/CNHostConfiguration.h>

#include <string>

namespace zeb::detail {

// Absolute paths that follow the configuration. Empty if neither the host nor the environment says
// where the user's folders are. Any thread.

std::string contactsFolder(const CNHostConfiguration& configuration);
std::string authorizationFile(const CNHostConfiguration& configuration);

}  // namespace zeb::detail
