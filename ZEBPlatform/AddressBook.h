#pragma once

// The module AddressBook: the user's contacts in a folder of vCards.

#include <ZEBPlatform/AddressBook/CNAuthorization.h>
#include <ZEBPlatform/AddressBook/CNContact.h>
#include <ZEBPlatform/AddressBook/CNContactFormatter.h>
#include <ZEBPlatform/AddressBook/CNContactKeys.h>
#include <ZEBPlatform/AddressBook/CNContactStore.h>
#include <ZEBPlatform/AddressBook/CNError.h>
#include <ZEBPlatform/AddressBook/CNHostConfiguration.h>
