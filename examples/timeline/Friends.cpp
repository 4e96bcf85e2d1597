#include "Friends.h"

#include <Contacts/ZEBContactStoreProvider.h>
#include <ZEBPlatform/AddressBook/CNHostConfiguration.h>
#include <ZEBPlatform/RunLoop/NSRunLoop.h>
#include <ZEBPlatform/Text/NSString+CaseMapping.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "Files.h"

namespace zeb::timeline {

namespace {

/// The contacts by what their owners may be called in a feed.
NSDictionary contactsByName(const NSArray& contacts) {
  NSMutableDictionary byName;
  for (const Value& element : contacts) {
    const auto contact = ProtocolRef<ZEBContact>::from(element.object());
    const auto add = [&](const NSString& name) {
      if (!name.empty()) byName.setObject(element, lowercaseString(name));
    };
    add(contact->fullName());
    for (const Value& address : contact->emailAddresses()) {
      add(NSString(NSString(address).componentsSeparatedByString("@").firstObject()));
    }
  }
  return byName;
}

}  // namespace

NSArray contactsInFolder(const std::string& folder) {
  if (!std::filesystem::is_directory(folder)) {
    throw std::runtime_error("'" + folder + "' is no folder of contacts");
  }
  const TemporaryFile temporary(NSData::data());
  CNSetHostConfiguration(
      {.contactsFolder = std::filesystem::absolute(folder).string(),
       .authorizationFile = temporary.path() + ".access",
       .accessPrompt = [](CNEntityType,
                          const Block<void(bool isGranted)>& answer) { answer(true); },
       .policy = CNHostPolicy::askUser});
  const auto provider = makeRef<ZEBContactStoreProvider>();
  NSArray result;
  const Ref<NSRunLoop> loop = NSRunLoop::mainRunLoop();
  provider->contactStore()->authorizeWithCompletion([&](CNAuthorizationStatus) {
    provider->contactStore()->fetchContactsWithCompletion([&](const NSArray& contacts) {
      result = contacts;
      loop->stop();
    });
  });
  loop->run();
  if (result.isNil()) throw std::runtime_error("The contacts in '" + folder + "' can't be read");
  return result;
}

std::vector<Friend> friendsIn(const Timeline& timeline, const NSArray& contacts) {
  const NSDictionary byName = contactsByName(contacts);
  std::vector<Friend> friends;
  for (const Post& post : timeline.posts) {
    const auto known = std::ranges::find(friends, post.author, &Friend::author);
    if (known != friends.end()) {
      ++known->posts;
      continue;
    }
    Value contact = byName[lowercaseString(post.author->name)];
    if (contact.isNil()) contact = byName[lowercaseString(post.author->handle)];
    if (contact.isNil()) continue;
    friends.push_back({post.author, ProtocolRef<ZEBContact>::from(contact.object()), 1});
  }
  return friends;
}

}  // namespace zeb::timeline
