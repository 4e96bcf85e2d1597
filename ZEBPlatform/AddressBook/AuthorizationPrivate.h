#pragma once

#include <ZEBPlatform/AddressBook/CNAuthorization.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Memory/Block.h>

namespace zeb::detail {

// The process's knowledge of the user's answer. Any thread.

CNAuthorizationStatus authorizationStatus();
void requestAuthorization(Block<void(bool isGranted, const NSError& error)> completion);
bool forgetAuthorization(NSError* error);
/// The answer may be in another file now.
void readAuthorizationAgain();

/// Why contacts cannot be read in this status, which is not CNAuthorizationStatusAuthorized.
NSError authorizationError(CNAuthorizationStatus status);

}  // namespace zeb::detail
