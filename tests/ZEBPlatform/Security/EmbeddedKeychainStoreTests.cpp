#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <sys/stat.h>

#include <fstream>

#include "KeychainFolder.h"

namespace zeb::test {

using EmbeddedKeychain = KeychainFolder;

KeychainKeySource source(char byte, OSStatus result = errSecSuccess) {
  return {[byte, result](std::span<std::byte> key) {
    std::ranges::fill(key, std::byte(byte));
    return result;
  }};
}
KeychainPassphrase passphrase(std::string_view text) { return {SecretBytes(text)}; }

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}
void setContent(const fs::path& file, std::string_view content) {
  std::ofstream(file, std::ios::binary | std::ios::trunc) << content;
}

TEST_F(EmbeddedKeychain, OpensOnlyWithTheKeyThatItWasMadeWith) {
  enum { inFile, phrase, fromSource, otherPhrase, otherSource, makers = otherPhrase, keys = 5 };
  const auto keyOf = [](int kind) -> KeychainMasterKey {
    if (kind == phrase || kind == otherPhrase) return passphrase(kind == phrase ? "open" : "0pen");
    if (kind == fromSource || kind == otherSource) return source(kind == fromSource ? 'a' : 'b');
    return KeychainKeyInFile();
  };
  for (int maker = 0; maker < makers; ++maker) {
    ASSERT_EQ(addOne(open(keyOf(maker)), password("anna", "rosebud")), errSecSuccess) << status;
    for (int key = 0; key < keys; ++key) {
      const auto store = open(keyOf(key));
      EXPECT_EQ(status, key == maker ? errSecSuccess : errSecAuthFailed) << maker << " " << key;
      EXPECT_EQ(store ? secrets(store, named("anna")) : "rosebud", "rosebud");
    }
    EXPECT_EQ(fs::status(place).permissions(), fs::perms(0700));
    for (const fs::directory_entry& file : fs::directory_iterator(place)) {
      EXPECT_EQ(contentOf(file).find("rosebud"), std::string::npos) << file;
      EXPECT_EQ(file.status().permissions(), fs::perms(0600)) << file;
    }
    fs::remove_all(place);
  }
  EXPECT_FALSE(open(passphrase("")));
  EXPECT_EQ(status, errSecParam);
  EXPECT_FALSE(open(KeychainKeySource()));
  EXPECT_EQ(status, errSecParam);
  EXPECT_FALSE(open(source('a', errSecInteractionNotAllowed)));
  EXPECT_EQ(status, errSecInteractionNotAllowed);
  const KeychainKeySource throwing{[](std::span<std::byte>) -> OSStatus { throw 5; }};
  EXPECT_THROW(open(throwing), int);
  EXPECT_TRUE(fs::is_empty(place)) << "failed openings left something behind";
}

TEST_F(EmbeddedKeychain, LiesInTheUsersDataFolderUnlessToldOtherwise) {
  const char* const before = getenv("XDG_DATA_HOME");
  const std::string old = before ? before : "";
  setenv("XDG_DATA_HOME", folder.c_str(), 1);
  EXPECT_TRUE(EmbeddedKeychainStore::open(nullptr, KeychainKeyInFile(), &status)) << status;
  EXPECT_TRUE(fs::exists(folder / "zebutilities/keychain/keychain.db"));
  before ? setenv("XDG_DATA_HOME", old.c_str(), 1) : unsetenv("XDG_DATA_HOME");
  for (const NSString& path : {NSString(""), NSString(std::u16string_view(u"/tmp/\0x", 7))}) {
    EXPECT_FALSE(EmbeddedKeychainStore::open(path, KeychainKeyInFile(), &status));
    EXPECT_EQ(status, errSecParam);
  }
}

TEST_F(EmbeddedKeychain, KeepsEveryKindOfAttributeAndFindsByAnyCombination) {
  const auto store = open();
  KeychainItem key{KeychainItemClass::key, {}, {}};
  const std::pair<KeychainAttribute, Value> values[] = {
      {accessGroup, ""},
      {account, NSData::dataWithBytes("anna")},
      {service, NSString(u"Zo\u00eb \xd83d\xde00 \xd83d")},
      {generic, NSData::data()},
      {label, NSString(std::u16string_view(u"a\0b", 3))},
      {accessible, "always"},
      {applicationTag, NSData::dataWithBytes(std::string_view("\0\xff", 2))},
      {applicationLabel, NSData::dataWithBytes("label")},
      {keyType, "42"},
      {keyClass, "0"},
      {keySizeInBits, 2048},
      {creationDate, NSDate::dateWithTimeIntervalSinceReferenceDate(1.5)},
      {modificationDate, NSDate::distantFuture()}};
  for (const auto& [attribute, value] : values) key.attributes[attribute] = value;
  ASSERT_EQ(addOne(store, key), errSecSuccess);
  key.attributes[applicationTag] = nullptr;
  ASSERT_EQ(addOne(store, key), errSecSuccess) << "nil is a different identity";
  EXPECT_EQ(addOne(store, key), errSecDuplicateItem) << "nil equals nil in identities";
  for (const auto& [attribute, value] : values) {
    std::vector<KeychainItem> found;
    KeychainQuery query{KeychainItemClass::key, {}};
    query.attributes[attribute] = value;
    ASSERT_EQ(store->find(query, Values::include, 1, found), errSecSuccess) << int(attribute);
    EXPECT_FALSE(found[0].value);
    for (const auto& [any, expected] : values) EXPECT_EQ(found[0].attributes[any], expected);
    query.attributes[label] = "another";
    EXPECT_EQ(store->find(query, Values::leaveOut, 1, found), errSecItemNotFound);
    for (const Value& wrong : {Value(nullptr), Value(true), Value("x"), values[1].second}) {
      query.attributes[attribute] = wrong;
      const bool isRight = wrong.isNil() || wrong.kind() == value.kind() ||
                           (attribute == account && wrong.isString()) ||
                           (wrong.isNumber() && attribute == keySizeInBits);
      EXPECT_EQ(store->find(query, Values::leaveOut, 1, found) == errSecParam, !isRight);
    }
  }
  EXPECT_EQ(secrets(store, named("anna")), notFound) << "classes do not mix";
}

TEST_F(EmbeddedKeychain, LimitsTheLengthOfValuesAndAttributes) {
  const auto store = open();
  KeychainItem item = password("d", "");
  item.value = SecretBytes(EmbeddedKeychainStore::maxValueLength + 1);
  EXPECT_EQ(addOne(store, item), errSecParam);
  item.value->shorten(EmbeddedKeychainStore::maxValueLength);
  EXPECT_EQ(addOne(store, item), errSecSuccess);
  EXPECT_EQ(secrets(store, named("d")).size(), EmbeddedKeychainStore::maxValueLength);
  item.attributes[label] = std::string(EmbeddedKeychainStore::maxAttributeLength + 1, 'l');
  EXPECT_EQ(addOne(store, item), errSecParam);
  item.attributes = {};
  EXPECT_EQ(addOne(store, item), errSecParam) << "the access group is missing";
}

TEST_F(EmbeddedKeychain, RefusesDamagedAndForeignFilesAndLeavesThemAlone) {
  ASSERT_EQ(addOne(open(), password("anna", "secret")), errSecSuccess);
  const fs::path database = place / "keychain.db";
  const std::string good = contentOf(database);
  const auto with = [&](std::size_t at, const char* bytes) {
    return std::string(good).replace(at, std::string_view(bytes).size(), bytes);
  };
  const std::string contents[] = {
      "",
      "Dear diary",
      good.substr(0, 50),
      good.substr(0, good.size() / 2),
      with(68, "XYZ!"),       // another program's identifier
      with(63, "\x02"),       // a newer format
      with(18, "\x01\x01"),   // another journal
      with(100, "\xff\xff"),  // the first page's tree
      with(good.find("CREATE TABLE passwords(id"), "CREATE TABLE password5")};
  for (const std::string& content : contents) {
    setContent(database, content);
    EXPECT_FALSE(open());
    EXPECT_EQ(status, errSecInvalidKeychain) << content.substr(0, 20);
    EXPECT_EQ(contentOf(database), content);
  }
  setContent(database, good);
  setContent(place / "keychain.db-wal", "");
  fs::permissions(place / "keychain.db-wal", fs::perms(0666));
  EXPECT_FALSE(open());
  EXPECT_EQ(status, errSecNotAvailable) << "others may change the log";
  fs::remove(place / "keychain.db-wal");
  EXPECT_EQ(secrets(open(), named("anna")), "secret");
  // The last page is that of the items' index or of the items.
  for (std::size_t page = 1; page < good.size() / 4096; ++page) {
    setContent(database, with(page * 4096, "\x77\x77\x77\x77\x77\x77\x77\x77"));
    const auto store = open();
    const std::string result = store ? secrets(store, named("anna")) : std::to_string(status);
    EXPECT_TRUE(result == "secret" || result == std::to_string(errSecInvalidKeychain)) << result;
  }
  fs::remove(database);
  setContent(place / "keychain.db-wal", "left over");
  EXPECT_FALSE(open());
  EXPECT_EQ(status, errSecInvalidKeychain);
  EXPECT_EQ(contentOf(place / "keychain.db-wal"), "left over");
  fs::create_directory(database);
  EXPECT_FALSE(open());
  EXPECT_EQ(status, errSecInvalidKeychain);
}

TEST_F(EmbeddedKeychain, NoticesValuesThatWereMoved) {
  const auto store = open();
  const KeychainItem items[] = {password("a", "1"), password("b", "2")};
  ASSERT_EQ(store->add(items), errSecSuccess);
  for (const char* sql :
       {"UPDATE passwords SET value = (SELECT value FROM passwords WHERE id = 2)",
        "UPDATE passwords SET value = zeroblob(20)", "UPDATE passwords SET value = 'text'",
        "UPDATE passwords SET accessible = x'00'"}) {
    execute(sql);
    for (const Values values : {Values::include, Values::only}) {
      EXPECT_EQ(secrets(store, named("a"), 1, values), std::to_string(errSecDecode)) << sql;
    }
  }
}

TEST_F(EmbeddedKeychain, NeverReplacesAKeyThatIsMissingOrUnsafe) {
  ASSERT_EQ(addOne(open(), password("anna", "secret")), errSecSuccess);
  const fs::path key = place / "keychain.key";
  const auto expect = [&](OSStatus expected, const char* what) {
    EXPECT_FALSE(open()) << what;
    EXPECT_EQ(status, expected) << what;
  };
  fs::permissions(key, fs::perms(0640));
  expect(errSecNotAvailable, "the group may read it");
  fs::permissions(key, fs::perms(0600));
  fs::rename(key, folder / "moved");
  expect(errSecAuthFailed, "it is missing");
  EXPECT_FALSE(fs::exists(key));
  fs::create_symlink(folder / "moved", key);
  expect(errSecNotAvailable, "it is a link");
  fs::remove(key);
  fs::copy_file(folder / "moved", key);
  EXPECT_EQ(secrets(open(), named("anna")), "secret");
  setContent(key, contentOf(key) + "x");
  expect(errSecAuthFailed, "it is too long");
  fs::remove(key);
  fs::create_directory(key);
  expect(errSecAuthFailed, "it is a folder");
  execute("UPDATE store SET keyCheck = NULL");
  expect(errSecInvalidKeychain, "the database does not say which key it needs");
  fs::permissions(place, fs::perms(0770));
  expect(errSecNotAvailable, "the group may write the folder");
  fs::remove_all(place);
  setContent(place, "a file");
  expect(errSecNotAvailable, "the folder is a file");
}

}  // namespace zeb::test
