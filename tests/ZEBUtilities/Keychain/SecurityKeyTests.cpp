#include <Keychain/ZEBSecurityKey.h>
#include <ZEBPlatform/Security/SecItem.h>
#include <ZEBPlatform/Security/SecKeychain.h>
#include <gtest/gtest.h>

#include "Support/MemoryKeychainStore.h"

namespace zeb {
namespace {

using namespace std::string_literals;
using Key = ZEBSecurityKey;
using Call = test::MemoryKeychainStore::Call;

TEST(BackupCodes, AreThoseOfAnotherImplementation) {
  const NSData two = NSData::dataByJoining(
      std::array{NSData::dataWithBytes("a longer seed "), NSData::dataWithBytes("of two ranges")});
  const struct {
    NSData seed;
    int count;
    const char* code;
  } cases[] = {{NSData::dataWithBytes("seed42"), -1, "qpuyk3bwgi=="},
               {NSData::dataWithBytes("seed42"), 0, "qpuyk3bwgi=="},
               {NSData::dataWithBytes("seed42"), 1, "np7uzpfus2wu"},
               {NSData::dataWithBytes("seed42"), 2, "jkwwxneya2ms"},
               {NSData::dataWithBytes("seed42"), 1000, "ykqj7num7c5w"},
               {two, 0, "nesg255qn7uz"},
               {two, 1, "mqv4ittg3h8k"},
               {NSData::dataWithBytes(std::string(600, 'x')), 1, "ke2mgrvms979"},
               {NSData::dataWithBytes("12345"), 0, nullptr},
               {NSData::dataWithBytes("12345"), 2, "4ehjzfq62vs8"},
               {NSData::data(), 1, "6q2nisw29sqb"},
               {nullptr, 0, nullptr},
               {nullptr, 1, nullptr}};
  for (const auto& [seed, count, code] : cases) {
    EXPECT_EQ(Key::hashStringWithSeed(seed, count, 12), NSString(code)) << seed << count;
    EXPECT_EQ(Key::hashStringWithSeed(seed, count, 3), NSString(code));
  }
  EXPECT_EQ(Key::generateSeed().length(), 6u);
  EXPECT_NE(Key::generateSeed(), Key::generateSeed());
}

struct StoredValues : testing::Test {
  StoredValues() { SecKeychainSetStore(store); }
  ~StoredValues() override { SecKeychainSetStore(nullptr); }

  const Ref<test::MemoryKeychainStore> store = makeRef<test::MemoryKeychainStore>();
};

/// The functions of one stored value.
template <class Result, class Argument>
struct Functions {
  bool (*add)(Argument, std::int64_t, const NSString&);
  Result (*get)(std::int64_t, const NSString&);
  bool (*set)(Argument, std::int64_t, const NSString&);
  bool (*remove)(std::int64_t, const NSString&);
};

template <class Result, class Argument>
void checkFunctions(test::MemoryKeychainStore& store, Functions<Result, Argument> functions,
                    Result first, Result second, const char* service, NSData firstBytes) {
  SCOPED_TRACE(service);
  const auto& [add, get, set, remove] = functions;
  EXPECT_EQ(get(1, "app"), Result{});
  EXPECT_FALSE(remove(1, "app"));
  EXPECT_TRUE(set(second, 1, "app"));
  EXPECT_EQ(get(1, "app"), second);
  EXPECT_TRUE(add(first, 1, "app"));
  EXPECT_EQ(get(1, "app"), first);
  EXPECT_EQ(get(2, "app"), Result{});
  EXPECT_EQ(get(1, "other"), Result{});

  Value found;
  EXPECT_EQ(SecItemCopyMatching({{kSecClass, kSecClassGenericPassword},
                                 {kSecAttrService, NSString("app.") + service},
                                 {kSecAttrGeneric, NSData::dataWithBytes(std::string(service))},
                                 {kSecAttrAccount, NSData::dataWithBytes("\1\0\0\0\0\0\0\0"s)},
                                 {kSecReturnData, true}},
                                &found),
            errSecSuccess);
  EXPECT_EQ(found, firstBytes);

  store.failNext(Call::add, errSecDiskFull);
  store.failNext(Call::update, errSecDiskFull);
  EXPECT_FALSE(set(second, 1, "app"));
  EXPECT_EQ(get(1, "app"), first);
  EXPECT_TRUE(set(second, 1, "app"));
  EXPECT_EQ(get(1, "app"), second);
  EXPECT_TRUE(remove(1, "app"));
  EXPECT_EQ(get(1, "app"), Result{});
}

TEST_F(StoredValues, AreAddedReadSetAndDeleted) {
  const NSData seed = NSData::dataWithBytes("seed42");
  checkFunctions<std::int32_t, std::int32_t>(
      *store,
      {Key::addsKeyCount, Key::getsKeyCountForUser, Key::setsKeyCount, Key::delsKeyCountForUser},
      -2, 7, "sKeyCount", NSData::dataWithBytes("\xFE\xFF\xFF\xFF"));
  checkFunctions<NSData, const NSData&>(
      *store, {Key::addsKeySeed, Key::getsKeySeed, Key::setsKeySeed, Key::delsKeySeedForUser}, seed,
      NSData::data(), "sKeySeed", seed);
  checkFunctions<bool, bool>(
      *store,
      {Key::addloginVerificationEnabled, Key::getsloginVerificationEnabled,
       Key::setsloginVerificationEnabled, Key::delloginVericiationEnabledForUser},
      true, false, "loginVerificationEnabled", NSData::dataWithBytes("\1"));
  checkFunctions<std::int32_t, std::int32_t>(
      *store,
      {Key::addsLoginVerificationMode, Key::getsLoginVerificationMode,
       Key::setsLoginVerificationMode, Key::delsLoginVerificationModeForUser},
      3, 4, "sLoginVerificationMode", NSData::dataWithBytes("\3\0\0\0"s));
  checkFunctions<NSString, const NSString&>(
      *store,
      {Key::addsTOTPKey, Key::getsTOTPKeyForUser, Key::setsTOTPKey, Key::delsTOTPKeyForUser},
      "Schlüssel 🔑", "JBSWY3DP", "sTOTPKey", NSData::dataWithBytes("Schlüssel 🔑"));
}

TEST_F(StoredValues, FaultyArgumentsAndItems) {
  ASSERT_TRUE(Key::addsKeySeed(NSData::dataWithBytes("seed42"), 1, nullptr));
  EXPECT_FALSE(Key::addsKeySeed(nullptr, 1, nullptr));
  EXPECT_FALSE(Key::setsKeySeed(nullptr, 1, nullptr));
  EXPECT_EQ(Key::getsKeySeed(1, "(null)"), NSData::dataWithBytes("seed42"));
  EXPECT_FALSE(Key::addsTOTPKey(NSString(u"\xD800"), 1, "app"));
  EXPECT_FALSE(Key::setsTOTPKey(nullptr, 1, "app"));

  ASSERT_TRUE(Key::addsKeyCount(7, 1, "app"));
  ASSERT_TRUE(Key::addsTOTPKey("key", 1, "app"));
  const NSData faulty = NSData::dataWithBytes("\xFF\xFE\xFD");
  ASSERT_EQ(SecItemUpdate({{kSecClass, kSecClassGenericPassword}}, {{kSecValueData, faulty}}),
            errSecSuccess);
  EXPECT_EQ(Key::getsKeyCountForUser(1, "app"), 0);
  EXPECT_TRUE(Key::getsTOTPKeyForUser(1, "app").isNil());
}

}  // namespace
}  // namespace zeb
