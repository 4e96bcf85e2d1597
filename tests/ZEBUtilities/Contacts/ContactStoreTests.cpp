#include <ZEBPlatform/AddressBook.h>
#include <ZEBPlatform/Logging/OLGLogging.h>
#include <ZEBPlatform/Notifications.h>
#include <ZEBPlatform/Runtime.h>
#include <ZEBUtilities/Contacts.h>

#include <filesystem>
#include <fstream>

#include "Support/HeldQueue.h"

namespace zeb::test {

/// An address book in a folder of its own, and a store that reads it.
struct ContactStore : testing::Test {
  ContactStore() {
    configuration.contactsFolder = folder.string();
    configuration.authorizationFile = folder.string() + ".access";
    configuration.accessPrompt = [](CNEntityType, const Block<void(bool)>& answer) {
      answer(true);
    };
    CNSetHostConfiguration(configuration);
    add("ann", "FN:Ann\r\nEND:VCARD\r\n");
    add("bob", "FN:Bob\r\nEND:VCARD\r\n");
    store = makeRef<ContactBackingStore>();
  }
  ~ContactStore() override {
    store = nullptr;
    OLGSetHandler(nullptr);
    std::filesystem::remove_all(folder);
    std::filesystem::remove(folder.string() + ".access");
  }

  void add(const std::string& name, const std::string& lines) const {
    std::ofstream(folder / (name + ".vcf"))
        << "BEGIN:VCARD\r\nVERSION:4.0\r\nUID:" << name << "\r\n"
        << lines;
  }
  /// Makes the next read of the address book log a line on its thread, and passes it to the block.
  void duringNextRead(const std::function<void(const OLGRecord&)>& block) const {
    add("broken", "");
    OLGSetHandler(block);
  }
  CNAuthorizationStatus authorize() {
    std::optional<CNAuthorizationStatus> result;
    store->authorizeWithCompletion([&](CNAuthorizationStatus status) { result = status; });
    runMainQueueUntil([&] { return result.has_value(); });
    return *result;
  }
  NSArray fetched() {
    std::optional<NSArray> result;
    store->fetchContactsWithCompletion([&](const NSArray& contacts) { result = contacts; });
    EXPECT_FALSE(result);
    runMainQueueUntil([&] { return result.has_value(); });
    return *result;
  }
  static void postChange(const Value& object) {
    NSNotificationCenter::defaultCenter()->postNotificationName(CNContactStoreDidChangeNotification,
                                                                object);
  }

  const std::filesystem::path folder = [] {
    std::string name = testing::TempDir() + "contacts.XXXXXX";
    return std::filesystem::path(mkdtemp(name.data()));
  }();
  CNHostConfiguration configuration;
  Ref<ContactBackingStore> store;
};

TEST_F(ContactStore, PassesNilAtOnceWithoutAccess) {
  int passed = 0, read = 0;
  duringNextRead([&](const auto&) { ++read; });
  const auto expectRefusal = [&](CNAuthorizationStatus status) {
    EXPECT_EQ(ZEBContactStoreProvider::contactStoreAuthorizationStatus(), status);
    const auto provider = makeRef<ZEBContactStoreProvider>();
    const ProtocolRef any = provider->contactStore();
    any->fetchContactsWithCompletion([&](const NSArray& all) { passed += all.isNil(); });
    any->fetchContactWithUniqueIdentifier("ann", [&](const auto& one) { passed += !one; });
  };
  expectRefusal(CNAuthorizationStatusNotDetermined);
  configuration.accessPrompt = [](CNEntityType, const Block<void(bool)>& no) { no(false); };
  CNSetHostConfiguration(configuration);
  EXPECT_EQ(authorize(), CNAuthorizationStatusDenied);
  expectRefusal(CNAuthorizationStatusDenied);
  configuration.policy = CNHostPolicy::restricted;
  CNSetHostConfiguration(configuration);
  expectRefusal(CNAuthorizationStatusRestricted);
  EXPECT_EQ(passed, 6);
  EXPECT_EQ(read, 0);
}

TEST_F(ContactStore, ReadsOnceUntilAPlatformStoreChanges) {
  EXPECT_EQ(authorize(), CNAuthorizationStatusAuthorized);
  NSArray waiting;
  store->fetchContactsWithCompletion([&](const NSArray& contacts) { waiting = contacts; });
  const NSArray contacts = fetched();
  EXPECT_EQ(contacts.count(), 2u);
  EXPECT_TRUE(contacts.isIdenticalTo(waiting) && contacts.isIdenticalTo(fetched()));
  postChange(store);
  postChange(nullptr);
  EXPECT_TRUE(contacts.isIdenticalTo(store->cachedContacts()));
  postChange(makeRef<CNContactStore>());
  EXPECT_TRUE(store->cachedContacts().isNil());
  EXPECT_FALSE(contacts.isIdenticalTo(fetched()));
  add("cy", "FN:Cy\r\nEND:VCARD\r\n");
  waitUntil([&] { return store->cachedContacts().isNil(); }, "the change is posted");
  EXPECT_EQ(fetched().count(), 3u);
}

TEST_F(ContactStore, FindsOneContact) {
  authorize();
  std::string found;
  const ZEBContactStore::ContactCompletion completion = [&](const ProtocolRef<ZEBContact>& one) {
    found += one ? one->fullName().utf8() : "-";
  };
  for (const char* identifier : {"bob", "eve", static_cast<const char*>(nullptr)})
    store->fetchContactWithUniqueIdentifier(identifier, completion);
  EXPECT_EQ(fetched().count() + store->cachedContacts().count(), 4u);
  send(store, "fetchContactWithUniqueIdentifier:completion:"_sel, "ann", completion);
  runMainQueueUntil([&] { return found == "Bob--Ann"; });
}

TEST_F(ContactStore, KeepsNoContactsThatChangedWhileTheyWereRead) {
  authorize();
  duringNextRead([&](const auto&) { postChange(store->contactStore()); });
  EXPECT_EQ(fetched().count(), 2u);
  EXPECT_TRUE(store->cachedContacts().isNil());
}

TEST_F(ContactStore, EndsWaitingFetchesSilentlyWhenDestroyedAndWithNilWhenNothingCanBeRead) {
  authorize();
  std::atomic<bool> isReading{false}, mayGoOn{false};
  std::string line, ended;
  duringNextRead([&](const OLGRecord& record) {
    isReading = true;
    waitUntil([&] { return mayGoOn.load(); }, "the test lets the read go on");
    line = std::string(record.file) + "|" + std::string(record.function) + "|" +
           std::string(record.message.substr(0, 36));
  });
  store->fetchContactsWithCompletion([&](const NSArray& all) { ended += "a-"[all.isNil()]; });
  waitUntil([&] { return isReading.load(); }, "the address book is read");
  const auto other = makeRef<ContactBackingStore>();
  makeRef<ContactBackingStore>()->fetchContactsWithCompletion([&](const auto&) { ended += 'b'; });
  other->fetchContactsWithCompletion([&](const auto& all) { ended += "c-"[all.isNil()]; });
  configuration.policy = CNHostPolicy::restricted;
  CNSetHostConfiguration(configuration);
  mayGoOn = true;
  runMainQueueUntil([&] { return ended.size() > 1; });
  EXPECT_EQ(ended, "a-");
  EXPECT_EQ(line,
            "ZEBUtilities/ZEBUtilities/ContactBackingStore|-[ContactBackingStore "
            "fetchContactsWithCompletion:]|The address book could not be read: ");
}

}  // namespace zeb::test
