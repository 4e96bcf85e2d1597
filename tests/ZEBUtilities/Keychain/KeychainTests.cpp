#include <ZEBUtilities/ZEBUtilities.h>

#include <map>

#include "Support/LoopSupport.h"
#include "Support/MemoryKeychainStore.h"
#include "Support/Storm.h"

namespace zeb::test {

using Utils = KeychainItemUtils;
using Call = MemoryKeychainStore::Call;

const std::string path = "ZEBUtilities/ZEBUtilities/";
const std::string utils = path + "KeychainItemUtils +[KeychainItemUtils ";
const std::string keychain = path + "ZEBKeychain -[ZEBKeychain ";
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

/// A keychain in memory whose default group is "own". `outcome` collects log lines and results of
/// calls, each after " / ".
class KeychainTests : public testing::Test {
 protected:
  KeychainTests() {
    SecKeychainSetStore(store);
    SecKeychainSetDefaultAccessGroup("own");
    OLGSetHandler([this](const OLGRecord& record) {
      EXPECT_EQ(record.channel, "Application_Keychain");
      EXPECT_EQ(record.level, record.line == 89 ? OLGLevelWarning : OLGLevelError);
      const std::string source = std::string(record.file) + " " + std::string(record.function);
      note("%d %s: %s", record.line, sources.at(source), record.message);
    });
  }
  ~KeychainTests() override {
    OLGSetHandler(nullptr);
    SecKeychainSetStore(nullptr);
  }

  template <class... Arguments>
  void note(std::string_view format, const Arguments&... arguments) {
    outcome += " / " + formattedText(format, {FormatArgument(arguments)...});
  }
  void note(const Value& result, const NSError& error) {
    note("%@ %zd %@", result, error.code(), Value(error.userInfo()[NSLocalizedDescriptionKey]));
  }
  void get(const NSString& username = "ada", const NSString& service = "mail") {
    NSError error("stale", 1);
    const NSString password = Utils::getPasswordForUsername(username, service, "own", &error);
    note(password, error);
  }
  void put(const NSString& password, bool updateExisting = true, const NSString& username = "ada",
           const NSString& service = "mail") {
    NSError error;
    note(Utils::storeUsername(username, password, service, nullptr, updateExisting, &error), error);
  }
  void remove(const NSString& username = "ada", const NSString& service = "mail") {
    NSError error;
    note(Utils::deleteItemForUsername(username, service, nullptr, &error), error);
  }
  static std::string item(const NSString& username, const NSString& group) {
    Value found;
    SecItemCopyMatching({{kSecClass, kSecClassGenericPassword},
                         {kSecAttrAccount, username},
                         {kSecAttrAccessGroup, group},
                         {kSecReturnAttributes, true},
                         {kSecReturnData, true}},
                        &found);
    const NSDictionary all(found);
    const bool isMigrated = all[kSecAttrAccessible] == kSecAttrAccessibleAfterFirstUnlock;
    const NSString value = zeb_UTF8String(NSData(all[kSecValueData]));
    return formattedText("%@ %d %@", {all[kSecAttrLabel], isMigrated, value});
  }
  static void addForeignItem(NSMutableDictionary more) {
    more.addEntriesFromDictionary({{kSecClass, kSecClassGenericPassword},
                                   {kSecAttrAccount, "ada"},
                                   {kSecAttrService, "mail"}});
    ASSERT_EQ(SecItemAdd(more), errSecSuccess);
  }
  void expect(const std::string& expected) { EXPECT_EQ(std::exchange(outcome, {}), expected); }

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
  EXPECT_EQ(store->calls(Call::update), 0) << "the same password, and not to be updated";
  EXPECT_EQ(item("ada", "own"), "mail 1 first");
  put("");
  put("zweites Päßwort 🔑 ﷽");
  get();
  remove();
  expect(
      " / (null) 0 (null) / 1 0 (null) / 1 0 (null) / 1 0 (null) / 1 0 (null) / 1 0 (null) / "
      "zweites Päßwort 🔑 ﷽ 0 (null) / 1 0 (null)");
  remove();
  EXPECT_TRUE(Utils::deleteItemForUsername("ada", "mail", nullptr)) << "without a place for errors";
  const std::string failed = " / 297 remove: 'mail' Error -25300 failed to delete password entry";
  expect(failed + " / 0 -25300 (null)" + failed);
}

TEST_F(KeychainTests, ReportsEveryFailure) {
  const NSString nil;
  std::function<void()> get = [&] { this->get(); }, put = [&] { this->put("new"); };
  const std::tuple<Call, OSStatus, std::function<void()>, std::string> cases[] = {
      {Call::findAttributes, -36, get,
       "104 get: 'mail' Error -36 when querying for keychain password / "
       "(null) -36 Error in SecItemCopyMatching w/ status code -36"},
      {Call::findValues, -26275, get,
       "123 get: 'mail'Error -26275 when retrieving keychain password / "
       "(null) -26275 Error with SecItemCopyMatching when retrieving password: -26275"},
      {Call::findValues, -25300, get,
       "123 get: 'mail'Error -25300 when retrieving keychain password / 126 get: 'mail' ... error "
       "is indicative that we found a password entry that is invalid / (null) -1999 This is a "
       "special case when fetching password where we had attributes but no password (bad "
       "persist?\?)"},
      {Call::findAttributes, -36, put,
       "104 get: 'mail' Error -36 when querying for keychain password / "
       "0 -36 Error in SecItemCopyMatching w/ status code -36"},
      {Call::update, -34, put,
       "234 put: 'mail' Error -34 failed to update existing password entry / 0 -34 (null)"},
      {Call::findAttributes, -25300, put,
       "259 put: 'mail' Error -25299 failed to create new password entry / 0 -25299 (null)"},
      {Call::add, 0, [&] { this->get(nil); },
       "(null) -2000 getPasswordForUsername bad username/serviceName: username (null), "
       "serviceName: mail"},
      {Call::add, 0, [&] { this->get("ada", nil); },
       "(null) -2000 getPasswordForUsername bad username/serviceName: username ada, "
       "serviceName: (null)"},
      {Call::add, 0, [&] { this->put(nil); }, "0 -2000 (null)"},
      {Call::add, 0, [&] { this->put(NSString(u"\xD800")); }, "0 -2000 (null)"},
      {Call::add, 0, [&] { this->put("new", true, nil); }, "0 -2000 (null)"},
      {Call::add, 0, [&] { this->put("new", true, "ada", nil); }, "0 -2000 (null)"},
      {Call::add, 0, [&] { remove(nil); }, "0 -2000 (null)"},
      {Call::add, 0, [&] { remove("ada", nil); }, "0 -2000 (null)"},
      {Call::add, 0, get, "old 0 (null)"}};
  this->put("old");
  outcome.clear();
  for (const auto& [call, status, operation, expected] : cases) {
    if (status != errSecSuccess) store->failNext(call, status);
    operation();
    expect(" / " + expected);
  }
  EXPECT_FALSE(Utils::deleteItemForUsername(nil, "mail", nil)) << "even without place for errors";
}

TEST_F(KeychainTests, ReplacesAnItemWithoutAPassword) {
  addForeignItem({{kSecAttrAccessible, kSecAttrAccessibleAfterFirstUnlock}});
  store->failNext(Call::remove, errSecWrPerm, 2);
  put("new");
  EXPECT_NE(outcome.find(" / 0 -1999 This is a special case"), std::string::npos);
  EXPECT_FALSE(Utils::storeUsername("ada", "new", "mail", nullptr, false));
  put("new", false);
  EXPECT_TRUE(outcome.ends_with("invalid / 1 0 (null)") && item("ada", "own") == "mail 1 new");
}

TEST_F(KeychainTests, MigratesTheAccessibilityLater) {
  addForeignItem({{kSecAttrAccessible, kSecAttrAccessibleWhenUnlocked},
                  {kSecValueData, NSData::dataWithBytes("old")}});
  NSMutableString username("ada");
  get(username);
  username.setString("changed before the main queue runs");
  EXPECT_EQ(item("ada", "own"), "(null) 0 old");
  store->failNext(Call::update, errSecWrPerm);
  runOnce();
  get();
  runOnce();
  EXPECT_EQ(item("ada", "own"), "(null) 1 old");
  put("new");  // updates items with our label only
  const std::string migrating =
      " / 89 get: 'mail' Migrating keychain password access level. / old 0 (null)";
  expect(migrating + " / 95 get: 'mail' Error -61 when migrating keychain password access level." +
         migrating +
         " / 234 put: 'mail' Error -25300 failed to update existing password entry"
         " / 0 -25300 (null)");
}

TEST_F(KeychainTests, WorksInBothGroups) {
  keys->setPassword("p", "ada", two);
  keys->fetchPasswordForUsername("ada", found);
  keys->deletePasswordForUsername("ada", one);
  keys->fetchPasswordForUsername("ada", found);
  keys->fetchPasswordForUsername("ada", "mail", "shared", found);
  keys->deletePasswordForUsername("ada", "mail", "shared", nullptr);
  keys->setPassword("token", "bob", "chat", nullptr, one);
  EXPECT_EQ(store->itemCount(), 1u);
  keys->setProviderServiceName("chat");
  keys->setProviderDefaultAccessGroup("team");
  keys->setProviderSharedAccessGroup(nullptr);  // the group of the original
  keys->migratePasswordForUserName("bob", two);
  keys->migratePasswordForUserName("eve", two);
  EXPECT_TRUE(store->itemCount() == 2 && item("bob", "team") == "chat 1 token");
  expect(
      " / 0 0 (null) / p 0 (null) / done 0 (null) / (null) 0 (null) / p 0 (null) / done 0 (null)"
      " / 0 0 (null) / 0 0 (null)");
}

TEST_F(KeychainTests, LogsFailuresOfOperationsThatTheDynamicRuntimeSends) {
  send(keys, "setPassword:forUsername:serviceName:accessGroup:completionBlock:"_sel, "p", nullptr,
       "mail", "own", one);
  store->failNext(Call::add, errSecDiskFull, 2);
  send(keys, "setPassword:forUsername:completionBlock:"_sel, "p", "ada", two);
  send(keys, "deletePasswordForUsername:completionBlock:"_sel, "ada", one);
  store->failNext(Call::findAttributes, errSecIO, 2);
  send(keys, "fetchPasswordForUsername:completionBlock:"_sel, "ada", found);
  send(keys, "migratePasswordForUserName:completionBlock:"_sel, "ada", two);
  const std::string notAdded = " / 259 put: 'mail' Error -34 failed to create new password entry";
  const std::string notRead = " / 104 get: 'mail' Error -36 when querying for keychain password";
  expect(
      " / 86 set: Failed to set password for username: (null); servicenName: mail, accessGroup: "
      "own, errorCode: -2000 / done -2000 (null)" +
      notAdded +
      " / 102 setBoth: Failed to set password for username: ada; servicenName: mail, accessGroup: "
      "own, errorCode: -34" +
      notAdded +
      " / 106 setBoth: Failed to set password for username: ada; servicenName: mail, accessGroup: "
      "shared, errorCode: -34 / -34 -34 (null)"
      " / 297 remove: 'mail' Error -25300 failed to delete password entry"
      " / 119 delete: Failed to delete password for username: ada; serviceName: mail, "
      "accessGroup:(null), errorCode: -25300 / done -25300 (null)" +
      notRead +
      " / 140 fetch: Failed to fetch password for username: ada; serviceName: mail, "
      "accessGroup:(null), errorCode: -36 / (null) -36 Error in SecItemCopyMatching w/ status code "
      "-36" +
      notRead + " / -36 0 (null)");
}

// No other test looks at the main bundle, which has no identifier here.
TEST(ZEBKeychain, TheSharedOneIsMadeOnce) {
  ASSERT_TRUE(NSBundle::setMainBundle(
      NSBundle::bundleWithPath("/app", {{"AppIdentifierPrefix", "TEAM."}})));
  EXPECT_FALSE(ZEBKeychain::sharedKeychain());
  ZEBKeychain::createSharedKeychainWithDefaultOrvaneConfiguration();
  ZEBKeychain::createSharedKeychainWithConfiguration(makeRef<Configuration>());
  const Ref<ZEBKeychain> shared = ZEBKeychain::sharedKeychain();
  EXPECT_EQ(shared->providerServiceName(), NSString("org.zebutilities.keychain"));
  EXPECT_EQ(shared->providerDefaultAccessGroup(), NSString("TEAM.(null)"));
  EXPECT_TRUE(shared->providerSharedAccessGroup().isNil());
  EXPECT_TRUE(ZEBKeychain::isDomainEqual(KeychainItemUtilsErrorDomain));
  EXPECT_FALSE(ZEBKeychain::isDomainEqual("other") || ZEBKeychain::isDomainEqual(nullptr));
}

// Two fetches wait for each other in their completions; then threads store and fetch, and each
// store must be alone.
TEST_F(KeychainTests, FetchesMeetAndStoresAreAlone) {
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
    for (int round = 0; round < 100; ++round) {
      const NSString password = NSString::stringWithFormat("%u", random());
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
}

}  // namespace zeb::test
