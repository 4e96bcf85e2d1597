#pragma once

// The module Contacts: the people in the user's address book, and their vCards.

#include <Contacts/Contact.h>
#include <Contacts/ContactBackingStore.h>
#include <Contacts/ContactvCardSerialization.h>
#include <Contacts/NormalizedPhoneNumber.h>
#include <Contacts/ZEBContact.h>
#include <Contacts/ZEBContactStore.h>
#include <Contacts/ZEBContactStoreProvider.h>
#include <Contacts/ZEBContactStoreProviderType.h>
