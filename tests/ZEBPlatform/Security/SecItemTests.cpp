#include <ZEBPlatform/Bundle/NSBundle.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSNull.h>
#include <ZEBPlatform/Security/SecItem.h>
#include <ZEBPlatform/Security/SecKeychain.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "Support/MemoryKeychainStore.h"

namespace zeb {
namespace {

using test::MemoryKeychainStore;
using Call = MemoryKeychainStore::Call;

struct SecItem : testing::Test {
  SecItem() {
    SecKeychainSetStore(store);
    SecKeychainSetDefaultAccessGroup("own");
  }
  ~SecItem() override {
    SecKeychainSetStore(nullptr);
    SecKeychainSetDefaultAccessGroup(nullptr);
  }

  /// A dictionary of the class of passwords with these entries, and others.
  static NSMutableDictionary passwords(NSDictionary entries = {{kSecAttrService, "mail"}}) {
    NSMutableDictionary result{{kSecClass, kSecClassGenericPassword}};
    result.addEntriesFromDictionary(entries);
    return result;
  }
  static OSStatus add(const char* account, Value secret) {
    NSMutableDictionary item = passwords();
    item.setObject(account, kSecAttrAccount);
    if (secret) item.setObject(secret, kSecValueData);
    return SecItemAdd(item);
  }

  const Ref<MemoryKeychainStore> store = makeRef<MemoryKeychainStore>();
};

TEST_F(SecItem, ReturnsWhatIsAskedFor) {
  const NSDate before = NSDate::date();
  const NSData secret = NSData::dataByJoining(
      std::array{NSData::dataWithBytes("pass"), NSData::dataWithBytes("word")});
  NSMutableDictionary item = passwords({{kSecAttrService, "mail"},
                                        {kSecAttrAccount, "ann"},
                                        {kSecAttrCreationDate, NSDate::distantPast()},
                                        {kSecValueData, secret},
                                        {kSecReturnAttributes, true},
                                        {kSecReturnData, true}});
  Value added;
  ASSERT_EQ(SecItemAdd(item, &added), errSecSuccess);
  const NSDictionary attributes(added);
  EXPECT_EQ(attributes[kSecClass], kSecClassGenericPassword);
  EXPECT_EQ(attributes[kSecAttrAccessGroup], "own");
  EXPECT_EQ(attributes[kSecValueData], secret);
  EXPECT_GE(NSDate(attributes[kSecAttrCreationDate]), before);
  EXPECT_EQ(attributes[kSecAttrModificationDate], attributes[kSecAttrCreationDate]);
  EXPECT_EQ(attributes.count(), 7u);
  EXPECT_EQ(SecItemAdd(item), errSecDuplicateItem);

  Value found = "before";
  EXPECT_EQ(SecItemCopyMatching(passwords(), &found), errSecSuccess);
  EXPECT_TRUE(found.isNil());
  NSMutableDictionary query = passwords({{kSecReturnAttributes, true}});
  ASSERT_EQ(SecItemCopyMatching(query, &found), errSecSuccess);
  EXPECT_EQ(store->calls(Call::findValues), 0);
  EXPECT_EQ(NSDictionary(found).count(), 6u);
  query.setObject(true, kSecReturnData);
  ASSERT_EQ(SecItemCopyMatching(query, &found), errSecSuccess);
  EXPECT_EQ(found, attributes);
  query.setObject("another", kSecAttrAccessGroup);
  EXPECT_EQ(SecItemCopyMatching(query, &found), errSecItemNotFound);
  store->failNext(Call::findValues, errSecDecode);
  EXPECT_EQ(SecItemCopyMatching(query, &found), errSecDecode);
  EXPECT_EQ(found, attributes);
}

TEST_F(SecItem, LimitsAndItemsWithoutValue) {
  ASSERT_EQ(add("ann", NSData::dataWithBytes("a")), errSecSuccess);
  ASSERT_EQ(add("bob", nullptr), errSecSuccess);
  ASSERT_EQ(add("cid", NSData::dataWithBytes("c")), errSecSuccess);
  ASSERT_EQ(add("dan", NSData::data()), errSecSuccess);
  const NSData a = NSData::dataWithBytes("a");
  const NSData c = NSData::dataWithBytes("c");
  const struct {
    Value account;
    Value limit;
    Value expected;  ///< nil if nothing is found
  } cases[] = {{nullptr, kSecMatchLimitOne, a},
               {nullptr, 1, NSArray{a}},
               {nullptr, 3, NSArray{a, c}},
               {nullptr, kSecMatchLimitAll, NSArray{a, c, NSData::data()}},
               {"dan", nullptr, NSData::data()},
               {"bob", nullptr, nullptr},
               {"bob", kSecMatchLimitAll, nullptr}};
  for (const auto& [account, limit, expected] : cases) {
    SCOPED_TRACE(account.description() + NSString(", ") + limit.description());
    NSMutableDictionary query = passwords({{kSecReturnData, 1}});
    if (account) query.setObject(account, kSecAttrAccount);
    if (limit) query.setObject(limit, kSecMatchLimit);
    Value found;
    const OSStatus status = SecItemCopyMatching(query, &found);
    EXPECT_EQ(status, expected ? errSecSuccess : errSecItemNotFound);
    EXPECT_EQ(found, expected);
  }
}

TEST_F(SecItem, ChangesAndDeletesAllMatches) {
  ASSERT_EQ(add("ann", NSData::dataWithBytes("a")), errSecSuccess);
  ASSERT_EQ(add("bob", nullptr), errSecSuccess);
  const NSData fresh = NSData::dataWithBytes("fresh");
  ASSERT_EQ(SecItemUpdate(passwords({{kSecReturnAttributes, true}}),
                          {{kSecValueData, fresh}, {kSecAttrLabel, "both"}}),
            errSecSuccess);
  NSMutableDictionary query = passwords(
      {{kSecAttrLabel, "both"}, {kSecReturnData, true}, {kSecMatchLimit, kSecMatchLimitAll}});
  Value found;
  ASSERT_EQ(SecItemCopyMatching(query, &found), errSecSuccess);
  EXPECT_EQ(found, (NSArray{fresh, fresh}));
  EXPECT_EQ(SecItemUpdate(passwords(), {{kSecAttrAccount, "same"}}), errSecDuplicateItem);
  EXPECT_EQ(SecItemDelete(query), errSecSuccess);
  EXPECT_EQ(SecItemDelete(query), errSecItemNotFound);
  EXPECT_EQ(SecItemUpdate(query, {{kSecAttrLabel, "x"}}), errSecItemNotFound);
  EXPECT_EQ(store->itemCount(), 0u);
}

TEST_F(SecItem, RefusesWhatItDoesNotUnderstand) {
  const NSDictionary faulty[] = {NSDictionary(),
                                 {{kSecAttrService, "mail"}},
                                 {{kSecClass, "identity"}},
                                 passwords({{"servise", "mail"}}),
                                 passwords({{kSecAttrService, NSNull::null()}}),
                                 passwords({{kSecAttrAccount, 5}}),
                                 passwords({{kSecAttrGeneric, "text"}}),
                                 passwords({{kSecAttrAccessible, "whenever"}}),
                                 passwords({{kSecAttrKeySizeInBits, true}}),
                                 passwords({{kSecReturnData, "yes"}}),
                                 passwords({{kSecReturnRef, true}}),
                                 passwords({{kSecMatchLimit, 0}}),
                                 passwords({{kSecMatchLimit, "few"}})};
  Value result;
  for (const NSDictionary& dictionary : faulty) {
    SCOPED_TRACE(dictionary.description());
    EXPECT_EQ(SecItemAdd(dictionary), errSecParam);
    EXPECT_EQ(SecItemCopyMatching(dictionary, &result), errSecParam);
    EXPECT_EQ(SecItemUpdate(dictionary, {{kSecAttrLabel, "x"}}), errSecParam);
    EXPECT_EQ(SecItemDelete(dictionary), errSecParam);
  }
  const NSData secret = NSData::dataWithBytes("x");
  EXPECT_EQ(SecItemDelete(passwords({{kSecValueData, secret}})), errSecParam);
  EXPECT_EQ(SecItemDelete(passwords({{kSecMatchLimit, kSecMatchLimitOne}})), errSecParam);
  EXPECT_EQ(SecItemAdd(passwords({{kSecValueData, "x"}})), errSecParam);
  EXPECT_EQ(SecItemAdd(passwords({{kSecReturnData, true}}), &result), errSecParam);
  const NSDictionary faultyChanges[] = {
      NSDictionary(), NSDictionary::dictionary(), passwords(), {{kSecReturnData, true}}};
  for (const NSDictionary& changes : faultyChanges) {
    EXPECT_EQ(SecItemUpdate(passwords(), changes), errSecParam);
  }
  EXPECT_EQ(store->itemCount(), 0u);
}

TEST(SecKeychain, DefaultsAreTheApplicationsGroupAndAStoreThatIsTriedAgain) {
  const auto useDefaults = [] {
    const NSDictionary info{{"AppIdentifierPrefix", "TEAM."}, {"CFBundleIdentifier", "org.app"}};
    NSBundle::setMainBundle(NSBundle::bundleWithPath("/app", info));
    const NSDictionary any{{kSecClass, kSecClassKey}};
    setenv("XDG_DATA_HOME", "/dev/null/nowhere", 1);
    const OSStatus before = SecItemDelete(any);
    std::string folder = testing::TempDir() + "zeb-keychain-XXXXXX";
    setenv("XDG_DATA_HOME", mkdtemp(folder.data()), 1);
    const OSStatus after = SecItemDelete(any);
    std::filesystem::remove_all(folder);
    std::cerr << SecKeychainDefaultAccessGroup() << " " << (before == errSecNotAvailable)
              << (after == errSecItemNotFound);
    std::_Exit(0);
  };
  EXPECT_EXIT(useDefaults(), testing::ExitedWithCode(0), "^TEAM.org.app 11$");
}

}  // namespace
}  // namespace zeb
