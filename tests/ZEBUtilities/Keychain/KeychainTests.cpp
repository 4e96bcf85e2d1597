#include <ZEBUtilities/ZEBUtilities.h>

#include <filesystem>
#include <map>

#include "Support/LoopSupport.h"
#include "Support/MemoryKeychainStore.h"
#include "Support/Storm.h"

namespace zeb::test {

using Utils = KeychainItemUtils;
using enum MemoryKeychainStore::Call;

const std::string utils = "ZEBUtilities/ZEBUtilities/KeychainItemUtils +[KeychainItemUtils ";
const std::string keychain = "ZEBUtilities/ZEBUtilities/ZEBKeychain -[ZEBKeychain ";
const std::string place = "Username:serviceName:accessGroup:completionBlock:]_block_invoke";
/// Short names for the files and functions of log lines.
const std::map<std::string, std::string> sources = {
    {utils + "getPasswordForUsername:andServiceName:accessGroup:error:]", "get"},
    {utils + "storeUsername:andPassword:forServiceName:accessGroup:updateExisting:error:]", "put"},
    {utils + "deleteItemForUsername:andServiceName:accessGroup:error:]", "remove"},
    {keychain + "setPassword:for" + place, "set"},
    {keychain + "setPassword:forUsername:completionBlock:]_block_invoke", "setBoth"},
    {keychain + "deletePasswordFor" + place, "delete"},
    {keychain + "fetchPasswordFor" + place, "fetch"}};

struct Configuration : NSObject, ZEBKeychainConfiguration {
  NSString serviceName() const override { return "mail"; }
  NSString defaultAccessGroup() const override { return "own"; }
  NSString sharedAccessGroup() const override { return "shared"; }
};

/// A keychain in memory whose default group is "own". `outcome` has a line for each line of the log
/// and for each result of a call.
struct KeychainTests : testing::Test {
  KeychainTests() {
    SecKeychainSetStore(store);
    SecKeychainSetDefaultAccessGroup("own");
    OLGSetHandler([this](const OLGRecord& line) {
      EXPECT_EQ(line.channel, "Application_Keychain");
      EXPECT_EQ(line.level, line.line == 89 ? OLGLevelWarning : OLGLevelError);
      const std::string source = std::string(line.file) + " " + std::string(line.function);
      outcome += formattedText("\n%d %s: %s", {line.line, sources.at(source), line.message});
    });
  }
  ~KeychainTests() override {
    OLGSetHandler(nullptr);
    SecKeychainSetStore(nullptr);
    SecKeychainSetDefaultAccessGroup(nullptr);
  }

  void note(const Value& result, const NSError& error) {
    const Value description = error.userInfo()[NSLocalizedDescriptionKey];
    outcome += formattedText("\n%@ %zd", {result, error.code()});
    if (!description.isNil()) outcome += " " + NSString(description).utf8();
  }
  void get(const NSString& username = "ada", const NSString& service = "mail") {
    NSError error("stale", 1);
    note(Utils::getPasswordForUsername(username, service, "own", &error), error);
  }
  void put(const NSString& password, bool updates = true, const NSString& username = "ada",
           const NSString& service = "mail") {
    NSError error;
    note(Utils::storeUsername(username, password, service, nullptr, updates, &error), error);
  }
  void remove(const NSString& username = "ada", const NSString& service = "mail") {
    NSError error;
    note(Utils::deleteItemForUsername(username, service, nullptr, &error), error);
  }
  KeychainTests& failing(MemoryKeychainStore::Call call, OSStatus status) {
    store->failNext(call, status);
    return *this;
  }
  void addItem(const char* accessible, std::optional<SecretBytes> value) {
    KeychainItem item{KeychainItemClass::genericPassword, {}, std::move(value)};
    item.attributes[KeychainAttribute::accessGroup] = "own";
    item.attributes[KeychainAttribute::service] = "mail";
    item.attributes[KeychainAttribute::account] = "ada";
    item.attributes[KeychainAttribute::accessible] = accessible;
    ASSERT_EQ(store->add(std::span(&item, 1)), errSecSuccess);
  }
  /// Notes the group, label and value of each item, and whether it has the wanted accessibility.
  void noteItems() {
    std::vector<KeychainItem> items;
    store->find({}, KeychainStore::Values::include, 9, items);
    for (const auto& [itemClass, attributes, value] : items) {
      outcome += formattedText(
          "\n%@ %@ %@ %d",
          {attributes[KeychainAttribute::accessGroup], attributes[KeychainAttribute::label],
           zeb_UTF8String(NSData::dataWithBytes(value->bytes())),
           attributes[KeychainAttribute::accessible] == kSecAttrAccessibleAfterFirstUnlock});
    }
  }
  void expect(const char* expected) { EXPECT_EQ(std::exchange(outcome, {}), expected); }

  std::string outcome;
  const Block<void(const NSError&)> one = [this](const NSError& error) { note("done", error); };
  const Block<void(const NSError&, const NSError&)> two =
      [this](const NSError& first, const NSError& second) { note(first.code(), second); };
  const Block<void(const NSString&, const NSError&)> found =
      [this](const NSString& password, const NSError& error) { note(password, error); };
  const Ref<MemoryKeychainStore> store = makeRef<MemoryKeychainStore>();
  const Ref<ZEBKeychain> keys = makeRef<ZEBKeychain>(makeRef<Configuration>());
};

TEST_F(KeychainTests, StoresUpdatesAndDeletesItems) {
  get();
  put("first");
  put("first");
  put("second", false);
  EXPECT_EQ(store->calls(update), 0) << "the same password, and not to be updated";
  noteItems();
  put("");
  put("zweites Päßwort 🔑 ﷽");
  get();
  remove();
  remove();
  EXPECT_TRUE(Utils::deleteItemForUsername("ada", "mail", nullptr)) << "without a place for errors";
  expect(R"(
(null) 0
1 0
1 0
1 0
own mail first 1
1 0
1 0
zweites Päßwort 🔑 ﷽ 0
1 0
297 remove: 'mail' Error -25300 failed to delete password entry
0 -25300
297 remove: 'mail' Error -25300 failed to delete password entry)");
}

TEST_F(KeychainTests, ReportsEveryFailure) {
  put("old");
  failing(findAttributes, -36).get();
  failing(findValues, -26275).get();
  failing(findValues, -25300).get();
  failing(findAttributes, -36).put("new");
  failing(MemoryKeychainStore::Call::update, -34).put("new");
  failing(findAttributes, -25300).put("new");
  get();
  put(NSString(u"\xD800"));
  put(nullptr);
  for (const NSString& name : {NSString("ada"), NSString()}) {
    const NSString service = name.isNil() ? "mail" : nullptr;
    get(name, service);
    put("new", true, name, service);
    remove(name, service);
    EXPECT_FALSE(Utils::deleteItemForUsername(name, service, nullptr));
  }
  expect(R"(
1 0
104 get: 'mail' Error -36 when querying for keychain password
(null) -36 Error in SecItemCopyMatching w/ status code -36
123 get: 'mail'Error -26275 when retrieving keychain password
(null) -26275 Error with SecItemCopyMatching when retrieving password: -26275
123 get: 'mail'Error -25300 when retrieving keychain password
126 get: 'mail' ... error is indicative that we found a password entry that is invalid
(null) -1999 This is a special case when fetching password where we had attributes but no )"
         R"(password (bad persist??)
104 get: 'mail' Error -36 when querying for keychain password
0 -36 Error in SecItemCopyMatching w/ status code -36
234 put: 'mail' Error -34 failed to update existing password entry
0 -34
259 put: 'mail' Error -25299 failed to create new password entry
0 -25299
old 0
0 -2000
0 -2000
(null) -2000 getPasswordForUsername bad username/serviceName: username ada, serviceName: (null)
0 -2000
0 -2000
(null) -2000 getPasswordForUsername bad username/serviceName: username (null), serviceName: mail
0 -2000
0 -2000)");
}

TEST_F(KeychainTests, ReplacesAnItemWithoutAPassword) {
  addItem(kSecAttrAccessibleAfterFirstUnlock, std::nullopt);
  store->failNext(MemoryKeychainStore::Call::remove, errSecWrPerm, 2);
  put("new");
  EXPECT_NE(outcome.find("\n0 -1999 This is a special case"), std::string::npos);
  EXPECT_FALSE(Utils::storeUsername("ada", "new", "mail", nullptr, false));
  put("new", false);
  noteItems();
  EXPECT_TRUE(outcome.ends_with("invalid\n1 0\nown mail new 1")) << outcome;
}

TEST_F(KeychainTests, MigratesTheAccessibilityLater) {
  addItem(kSecAttrAccessibleWhenUnlocked, SecretBytes("old"));
  NSMutableString username("ada");
  get(username);
  username.setString("changed before the main queue runs");
  noteItems();
  store->failNext(update, errSecWrPerm);
  runOnce();
  get();
  runOnce();
  noteItems();
  put("new");  // only items with our label can be updated
  expect(R"(
89 get: 'mail' Migrating keychain password access level.
old 0
own (null) old 0
95 get: 'mail' Error -61 when migrating keychain password access level.
89 get: 'mail' Migrating keychain password access level.
old 0
own (null) old 1
234 put: 'mail' Error -25300 failed to update existing password entry
0 -25300)");
}

// docs/keychain.md has a program about the groups, whose output is compared.
TEST_F(KeychainTests, SendsOperationsAndLogsTheirFailures) {
  send(keys, "setPassword:forUsername:serviceName:accessGroup:completionBlock:"_sel, "p", nullptr,
       "mail", "own", one);
  store->failNext(add, errSecDiskFull, 2);
  send(keys, "setPassword:forUsername:completionBlock:"_sel, "p", "ada", two);
  send(keys, "deletePasswordForUsername:completionBlock:"_sel, "ada", one);
  store->failNext(findAttributes, errSecIO, 2);
  send(keys, "fetchPasswordForUsername:completionBlock:"_sel, "ada", found);
  send(keys, "migratePasswordForUserName:completionBlock:"_sel, "ada", two);
  keys->setProviderDefaultAccessGroup("team");
  keys->setProviderSharedAccessGroup(nullptr);  // means the group of the original
  keys->migratePasswordForUserName("ada", two);
  keys->setPassword("p", "ada", nullptr);
  noteItems();
  expect(R"(
86 set: Failed to set password for username: (null); servicenName: mail, accessGroup: own, )"
         R"(errorCode: -2000
done -2000
259 put: 'mail' Error -34 failed to create new password entry
102 setBoth: Failed to set password for username: ada; servicenName: mail, accessGroup: own, )"
         R"(errorCode: -34
259 put: 'mail' Error -34 failed to create new password entry
106 setBoth: Failed to set password for username: ada; servicenName: mail, accessGroup: shared, )"
         R"(errorCode: -34
-34 -34
297 remove: 'mail' Error -25300 failed to delete password entry
119 delete: Failed to delete password for username: ada; serviceName: mail, accessGroup:(null), )"
         R"(errorCode: -25300
done -25300
104 get: 'mail' Error -36 when querying for keychain password
140 fetch: Failed to fetch password for username: ada; serviceName: mail, accessGroup:(null), )"
         R"(errorCode: -36
(null) -36 Error in SecItemCopyMatching w/ status code -36
104 get: 'mail' Error -36 when querying for keychain password
-36 0
0 0
team mail p 1
own mail p 1)");
}

// No other test looks at the main bundle, which has no identifier here.
TEST(ZEBKeychain, TheSharedOneIsMadeOnce) {
  const NSDictionary info{{"AppIdentifierPrefix", "TEAM."},
                          {"KXSharedKeychainOAuthIdentifier", "TEAM.oauth"}};
  ASSERT_TRUE(NSBundle::setMainBundle(NSBundle::bundleWithPath("/app", info)));
  EXPECT_FALSE(ZEBKeychain::sharedKeychain());
  ZEBKeychain::createSharedKeychainWithDefaultOrvaneConfiguration();
  ZEBKeychain::createSharedKeychainWithConfiguration(makeRef<Configuration>());
  const Ref<ZEBKeychain> shared = ZEBKeychain::sharedKeychain();
  EXPECT_EQ(shared->providerServiceName(), NSString("org.zebutilities.keychain"));
  EXPECT_EQ(shared->providerDefaultAccessGroup(), NSString("TEAM.(null)"));
  EXPECT_EQ(SecKeychainDefaultAccessGroup(), NSString("TEAM.(null)"));
  EXPECT_EQ(shared->providerSharedAccessGroup(), NSString("TEAM.oauth"));
  EXPECT_FALSE(ZEBKeychain::isDomainEqual("other") || ZEBKeychain::isDomainEqual(nullptr));
}

// Over the embedded store: two fetches wait for each other in their completions; then threads store
// and fetch, and each store must be alone. A store that is opened later has the passwords.
TEST_F(KeychainTests, FetchesMeetAndStoresAreAlone) {
  std::string folder = std::filesystem::temp_directory_path() / "zeb-keychain-XXXXXX";
  ASSERT_TRUE(mkdtemp(folder.data()));
  const auto open = [&] { return EmbeddedKeychainStore::open(folder, KeychainKeyInFile{}); };
  SecKeychainSetStore(open());
  std::atomic<int> fetching = 0;
  storm(2, [&](int, std::mt19937&) {
    keys->fetchPasswordForUsername("ada", [&](const NSString&, const NSError&) {
      ++fetching;
      waitUntil([&] { return fetching == 2; }, "the other fetch is in its completion");
    });
  });
  std::atomic<bool> isStoring = false;
  storm(4, [&](int number, std::mt19937& random) {
    const NSString username = NSString::stringWithFormat("user%d", number);
    for (int round = 0; round < 20; ++round) {
      const NSString password = NSString::stringWithFormat("🔑 %u", random());
      keys->setPassword(password, username, [&](const NSError& error, const NSError&) {
        EXPECT_TRUE(!error && !isStoring.exchange(true));
        keys->setProviderSharedAccessGroup(round % 2 ? nullptr : "shared");
        isStoring = false;
      });
      keys->fetchPasswordForUsername(username, [&](const NSString& fetched, const NSError&) {
        EXPECT_TRUE(fetched == password && !isStoring);
      });
    }
  });
  SecKeychainSetStore(nullptr);
  SecKeychainSetStore(open());
  keys->fetchPasswordForUsername("user3", found);
  EXPECT_TRUE(outcome.starts_with("\n🔑 ") && outcome.ends_with(" 0")) << outcome;
  std::filesystem::remove_all(folder);
}

}  // namespace zeb::test
