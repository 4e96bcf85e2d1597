#pragma once

#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Security/KeychainStore.h>

#include <functional>
#include <optional>
#include <string>

#include "Support/Storm.h"

// What every KeychainStore must do. One source of a store's test program includes this header and
// runs the suite on the place of that store:
//
//     INSTANTIATE_TEST_SUITE_P(Embedded, KeychainStoreSuite, testing::Values(place));

namespace zeb::test {

/// How the suite comes to the stores of one place.
struct KeychainStorePlace {
  /// Empties the place, or makes a new one, before each test.
  std::function<void()> empty;
  /// Opens the place once more.
  std::function<Ref<KeychainStore>()> open;
};

class KeychainStoreSuite : public testing::TestWithParam<KeychainStorePlace> {
 protected:
  using Attribute = KeychainAttribute;
  static constexpr auto all = KeychainStore::Values::include;
  static constexpr auto password = KeychainItemClass::genericPassword;
  static constexpr auto key = KeychainItemClass::key;

  void SetUp() override {
    GetParam().empty();
    store = GetParam().open();
    ASSERT_TRUE(store);
  }

  struct Setting {
    Attribute attribute;
    Value value;
  };
  static KeychainAttributes attributes(std::initializer_list<Setting> settings) {
    KeychainAttributes result;
    for (const Setting& setting : settings) result[setting.attribute] = setting.value;
    return result;
  }
  static KeychainItem item(KeychainItemClass itemClass, std::initializer_list<Setting> settings,
                           std::optional<std::string_view> value = std::nullopt) {
    KeychainItem result{itemClass, attributes(settings), std::nullopt};
    result.attributes[Attribute::accessGroup] = "group"_ns;
    if (value) result.value.emplace(*value);
    return result;
  }
  static KeychainItem login(const Value& account, std::optional<std::string_view> value,
                            const Value& label = nullptr) {
    return item(
        password,
        {{Attribute::account, account}, {Attribute::service, "mail"_ns}, {Attribute::label, label}},
        value);
  }
  static KeychainQuery query(KeychainItemClass itemClass,
                             std::initializer_list<Setting> settings = {}) {
    return {itemClass, attributes(settings)};
  }
  static KeychainQuery account(const Value& name) {
    return query(password, {{Attribute::account, name}});
  }
  OSStatus add(KeychainItem item) { return store->add({&item, 1}); }

  /// "account=value" of the items that match, in their order; the status if it is no success.
  std::string found(const KeychainQuery& query, std::size_t maxCount = SIZE_MAX) {
    std::vector<KeychainItem> items;
    const OSStatus status = store->find(query, all, maxCount, items);
    if (status != errSecSuccess) return std::to_string(status);
    std::string text;
    for (const KeychainItem& item : items) {
      if (!text.empty()) text += ' ';
      text += item.attributes[Attribute::account].description().utf8() + '=';
      text += item.value ? std::string(view(*item.value)) : "none";
    }
    return text;
  }
  static std::string_view view(const SecretBytes& bytes) {
    return {reinterpret_cast<const char*>(bytes.bytes().data()), bytes.size()};
  }

  Ref<KeychainStore> store;
  const std::string missing = std::to_string(errSecItemNotFound);
};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(KeychainStoreSuite);

TEST_P(KeychainStoreSuite, KeepsEveryKindOfAttributeAndValue) {
  using namespace std::string_view_literals;
  const NSData bytes = NSData::dataWithBytes("\0\xff\x80 a"sv);
  const NSString text = "\0 é 😀 \xed\xa0\x80 \"\\"sv;
  const Value moment = NSDate::dateWithTimeIntervalSinceReferenceDate(-1234567.0625);
  std::string binary;
  for (int i = 0; i < 65536; ++i) binary += static_cast<char>(i ^ i >> 8);
  std::vector<KeychainItem> items;
  items.push_back(item(password,
                       {{Attribute::account, text},
                        {Attribute::service, ""_ns},
                        {Attribute::generic, bytes},
                        {Attribute::label, text},
                        {Attribute::accessible, "ak"_ns},
                        {Attribute::creationDate, moment},
                        {Attribute::modificationDate, NSDate::distantFuture()}},
                       binary));
  items.push_back(
      item(password, {{Attribute::account, bytes}, {Attribute::generic, NSData::data()}}, ""));
  items.push_back(item(password, {{Attribute::label, std::string(20000, 'l')}}));
  items.push_back(item(key,
                       {{Attribute::applicationTag, bytes},
                        {Attribute::applicationLabel, bytes},
                        {Attribute::keyType, "42"_ns},
                        {Attribute::keyClass, "1"_ns},
                        {Attribute::keySizeInBits, 2048}},
                       "key"));
  ASSERT_EQ(store->add(items), errSecSuccess);
  store = GetParam().open();
  std::vector<KeychainItem> read;
  EXPECT_EQ(store->find(query(password), all, SIZE_MAX, read), errSecSuccess);
  EXPECT_EQ(store->find(query(key), all, SIZE_MAX, read), errSecSuccess);
  ASSERT_EQ(read.size(), items.size());
  for (std::size_t i = 0; i < items.size(); ++i) {
    EXPECT_EQ(read[i].itemClass, items[i].itemClass);
    for (std::size_t a = 0; a < keychainAttributeCount; ++a) {
      const Value& value = read[i].attributes[static_cast<Attribute>(a)];
      EXPECT_EQ(value, items[i].attributes[static_cast<Attribute>(a)]) << i << ' ' << a;
    }
    ASSERT_EQ(read[i].value.has_value(), items[i].value.has_value()) << i;
    if (read[i].value) {
      EXPECT_TRUE(view(*read[i].value) == view(*items[i].value)) << i;
    }
  }
  // Results are appended, and values are left out on request.
  EXPECT_EQ(store->find(query(key), KeychainStore::Values::leaveOut, 1, read), errSecSuccess);
  ASSERT_EQ(read.size(), items.size() + 1);
  EXPECT_FALSE(read.back().value);
}

TEST_P(KeychainStoreSuite, TellsIdentitiesApart) {
  const auto rsa = [](std::string_view tag, const Value& keyClass) {
    return item(key, {{Attribute::applicationTag, NSData::dataWithBytes(tag)},
                      {Attribute::keyType, "42"_ns},
                      {Attribute::keyClass, keyClass}});
  };
  const auto pair = [](const Value& account, const Value& service, const Value& generic) {
    return item(password, {{Attribute::account, account},
                           {Attribute::service, service},
                           {Attribute::generic, generic}});
  };
  const NSData generic = NSData::dataWithBytes("g");
  const struct {
    KeychainItem item;
    OSStatus status;
  } cases[] = {
      {pair("a"_ns, "s"_ns, nullptr), errSecSuccess},
      {pair("a"_ns, "s"_ns, generic), errSecDuplicateItem},
      {pair(NSData::dataWithBytes("a"), "s"_ns, nullptr), errSecSuccess},
      {pair(NSData::dataWithBytes("a"), "s"_ns, generic), errSecDuplicateItem},
      {pair("as"_ns, ""_ns, nullptr), errSecSuccess},
      {pair("as"_ns, nullptr, nullptr), errSecSuccess},
      {pair("as"_ns, nullptr, generic), errSecDuplicateItem},
      {pair(nullptr, nullptr, nullptr), errSecSuccess},
      {pair(nullptr, nullptr, generic), errSecDuplicateItem},
      {pair("A"_ns, "s"_ns, nullptr), errSecSuccess},
      {rsa("t", "0"_ns), errSecSuccess},
      {rsa("t", "1"_ns), errSecSuccess},
      {rsa("t2", "1"_ns), errSecSuccess},
      {rsa("t", "1"_ns), errSecDuplicateItem},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(store->add({&each.item, 1}), each.status) << &each - cases;
  }
  KeychainItem elsewhere = pair("a"_ns, "s"_ns, nullptr);
  elsewhere.attributes[Attribute::accessGroup] = "other"_ns;
  EXPECT_EQ(store->add({&elsewhere, 1}), errSecSuccess);
}

TEST_P(KeychainStoreSuite, AddsAllItemsOrNone) {
  ASSERT_EQ(add(login("taken"_ns, "1")), errSecSuccess);
  for (const char* last : {"taken", "new"}) {  // the second one is its neighbour's duplicate
    std::vector<KeychainItem> items;
    for (const char* name : {"old", "new", last}) items.push_back(login(NSString(name), "2"));
    EXPECT_EQ(store->add(items), errSecDuplicateItem);
    EXPECT_EQ(found(query(password)), "taken=1");
  }
}

TEST_P(KeychainStoreSuite, FindsByAnyAttributesOldestFirst) {
  const NSData blob = NSData::dataWithBytes("b");
  for (const char* name : {"b", "a", "c"}) {
    KeychainItem item = login(NSString(name), name, name == std::string_view("a") ? "" : "same");
    item.attributes[Attribute::generic] = name == std::string_view("c") ? Value(blob) : Value();
    item.attributes[Attribute::creationDate] =
        NSDate::dateWithTimeIntervalSinceReferenceDate(name == std::string_view("c") ? 0.5 : 0.25);
    ASSERT_EQ(add(std::move(item)), errSecSuccess);
  }
  ASSERT_EQ(add(item(key, {{Attribute::keySizeInBits, 1024}, {Attribute::label, "same"}}, "k")),
            errSecSuccess);
  const Value moment = NSDate::dateWithTimeIntervalSinceReferenceDate(0.5);
  EXPECT_EQ(found(query(password)), "b=b a=a c=c");
  EXPECT_EQ(found(query(password), 2), "b=b a=a");
  EXPECT_EQ(found(query(password, {{Attribute::label, "same"}})), "b=b c=c");
  EXPECT_EQ(found(query(password, {{Attribute::label, ""}})), "a=a");
  EXPECT_EQ(found(query(password, {{Attribute::creationDate, moment}})), "c=c");
  EXPECT_EQ(found(query(password, {{Attribute::generic, blob}, {Attribute::service, "mail"_ns}})),
            "c=c");
  EXPECT_EQ(found(query(password, {{Attribute::account, NSData::dataWithBytes("b")}})), missing);
  EXPECT_EQ(found(query(password, {{Attribute::generic, "b"_ns}})), std::to_string(errSecParam));
  EXPECT_EQ(found(query(password, {{Attribute::label, "same"}, {Attribute::account, "a"}})),
            missing);
  EXPECT_EQ(found(query(key, {{Attribute::keySizeInBits, 1024}})), "(null)=k");
  EXPECT_EQ(found(query(key, {{Attribute::keySizeInBits, 2048}})), missing);
}

TEST_P(KeychainStoreSuite, UpdatesWhatMatches) {
  EXPECT_EQ(store->update(account("a"_ns), login("a"_ns, "1")), errSecItemNotFound);
  for (const char* name : {"a", "b", "c"})
    ASSERT_EQ(add(login(NSString(name), name, name == std::string_view("c") ? "" : "pair")),
              errSecSuccess);
  const KeychainQuery pair = query(password, {{Attribute::label, "pair"}});
  const auto changes = [](std::initializer_list<Setting> settings,
                          std::optional<std::string_view> value = std::nullopt) {
    KeychainItem result{password, attributes(settings), std::nullopt};
    if (value) result.value.emplace(*value);
    return result;
  };
  EXPECT_EQ(store->update(pair, changes({}, "2")), errSecSuccess);
  EXPECT_EQ(found(query(password)), "a=2 b=2 c=c");
  // A new identity keeps the item's place; a taken one, and one for two items, change nothing.
  EXPECT_EQ(store->update(account("a"_ns), changes({{Attribute::account, "d"_ns}})), errSecSuccess);
  EXPECT_EQ(store->update(account("b"_ns), changes({{Attribute::account, "c"_ns}}, "3")),
            errSecDuplicateItem);
  EXPECT_EQ(store->update(pair, changes({{Attribute::account, "e"_ns}}, "3")), errSecDuplicateItem);
  EXPECT_EQ(found(query(password)), "d=2 b=2 c=c");
  // An item's own identity is not taken.
  EXPECT_EQ(store->update(account("b"_ns),
                          changes({{Attribute::account, "b"_ns}, {Attribute::label, ""_ns}}, "")),
            errSecSuccess);
  EXPECT_EQ(found(query(password, {{Attribute::label, ""_ns}})), "b= c=c");
  EXPECT_EQ(add(login("a"_ns, std::nullopt)), errSecSuccess);
  EXPECT_EQ(store->update(account("a"_ns), changes({{Attribute::label, "still none"_ns}})),
            errSecSuccess);
  // All items get new identities.
  const Setting chat{Attribute::service, "chat"_ns};
  EXPECT_EQ(store->update(query(password), changes({chat})), errSecSuccess);
  EXPECT_EQ(found(query(password, {chat})), "d=2 b= c=c a=none");
}

TEST_P(KeychainStoreSuite, RemovesWhatMatches) {
  for (const char* name : {"a", "b", "c"})
    ASSERT_EQ(add(login(NSString(name), "", name == std::string_view("b") ? "" : "pair")),
              errSecSuccess);
  const KeychainQuery pair = query(password, {{Attribute::label, "pair"}});
  EXPECT_EQ(store->remove(query(key)), errSecItemNotFound);
  EXPECT_EQ(store->remove(pair), errSecSuccess);
  EXPECT_EQ(store->remove(pair), errSecItemNotFound);
  EXPECT_EQ(found(query(password)), "b=");
  EXPECT_EQ(add(login("a"_ns, "again")), errSecSuccess);
  EXPECT_EQ(GetParam().open()->remove(query(password)), errSecSuccess);
  EXPECT_EQ(found(query(password)), missing);
}

TEST_P(KeychainStoreSuite, ThreadsAndStoresOfOnePlaceAgree) {
  std::atomic<int> added = 0;
  const Ref<KeychainStore> other = GetParam().open();
  storm(4, [&](int thread, std::mt19937&) {
    KeychainStore& mine = thread % 2 ? *store : *other;
    for (int i = 0; i < 10; ++i) {
      const NSString name = std::to_string(i);
      const KeychainItem item = login(name, "old");
      const OSStatus status = mine.add({&item, 1});
      added += status == errSecSuccess;
      EXPECT_TRUE(status == errSecSuccess || status == errSecDuplicateItem) << status;
      KeychainItem changes;
      changes.value.emplace("new");
      EXPECT_EQ(mine.update(account(name), changes), errSecSuccess);
      EXPECT_EQ(found(account(name)), name.utf8() + "=new");
    }
  });
  EXPECT_EQ(added, 10);
  EXPECT_EQ(std::ranges::count(found(query(password)), '='), 10);
}

}  // namespace zeb::test
