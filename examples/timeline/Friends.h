#pragma once

#include <Contacts/ZEBContact.h>
#include <ZEBPlatform/Memory/ProtocolRef.h>

#include <string>
#include <vector>

#include "Model.h"

namespace zeb::timeline {

/// An author who is in the address book.
struct Friend {
  Ref<Author> author;
  ProtocolRef<ZEBContact> contact;
  std::size_t posts;
};

/// The contacts in a folder of .vcf files. Naming the folder counts as the user's consent, which is
/// not remembered. Runs the main thread's run loop until the folder is read. Throws std::exception
/// if it can't be read. Main thread only.
NSArray contactsInFolder(const std::string& folder);

/// The authors whose name is that of a contact, or whose handle is the part before the "@" of one
/// of a contact's e-mail addresses, without regard to case. In the order of their first posts.
std::vector<Friend> friendsIn(const Timeline& timeline, const NSArray& contacts);

}  // namespace zeb::timeline
