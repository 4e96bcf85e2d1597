#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Linux/detail/FileLock.h>
#include <ZEBPlatform/Security/SecretService/SecretServiceKeychainStore.h>
#include <libsecret/secret.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <filesystem>

#include "FakeService.h"
#include "Support/KeychainStoreSuite.h"

namespace zeb::test {
namespace {

using Attribute = KeychainAttribute;
using Prompting = SecretServiceOptions::Prompting;

/// Runs a shell command.
bool run(const std::string& command) { return std::system(command.c_str()) == 0; }

bool sendToKeyring(const std::string& signal) {
  return run("kill -" + signal +
             " $(dbus-send --session --print-reply=literal --dest=org.freedesktop.DBus / "
             "org.freedesktop.DBus.GetConnectionUnixProcessID string:org.freedesktop.secrets | "
             "awk '{print $2}')");
}
bool lockKeyring() {
  return run(
      "dbus-send --session --print-reply --dest=org.freedesktop.secrets /org/freedesktop/secrets "
      "org.freedesktop.Secret.Service.Lock array:objpath:/org/freedesktop/secrets/collection/login "
      ">/dev/null");
}
/// Starts the keyring, which must have ended, with its password.
bool startKeyring() {
  return run("printf pw | gnome-keyring-daemon --unlock --components=secrets >/dev/null 2>&1");
}
void waitFor(SecretServiceKeychainStore& store, OSStatus status) {
  waitUntil([&] { return store.availability() == status; }, "the keyring's state has changed");
}

Ref<SecretServiceKeychainStore> openStore(SecretServiceOptions options = {}) {
  return makeRef<SecretServiceKeychainStore>(options);
}

KeychainItem password(const Value& account, const char* value = "secret") {
  KeychainItem item;
  item.attributes[Attribute::accessGroup] = "group"_ns;
  item.attributes[Attribute::account] = account;
  item.value.emplace(value);
  return item;
}
OSStatus add(KeychainStore& store, const KeychainItem& item) { return store.add({&item, 1}); }
OSStatus find(KeychainStore& store, std::string* values = nullptr) {
  std::vector<KeychainItem> found;
  const OSStatus status = store.find({}, KeychainStore::Values::include, SIZE_MAX, found);
  for (const KeychainItem& item : found) {
    const auto bytes = item.value->bytes();
    if (values) values->append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  }
  return status;
}

void emptyPlace() {
  const auto store = openStore();
  store->remove({KeychainItemClass::genericPassword, {}});
  store->remove({KeychainItemClass::key, {}});
}

INSTANTIATE_TEST_SUITE_P(SecretService, KeychainStoreSuite,
                         testing::Values(KeychainStorePlace{emptyPlace,
                                                            [] { return openStore(); }}));

class SecretServiceKeychainStoreTest : public testing::Test {
 protected:
  void SetUp() override { emptyPlace(); }
};

TEST_F(SecretServiceKeychainStoreTest, ALockedCollectionIsNotAnEmptyOne) {
  const auto store = openStore();
  ASSERT_EQ(add(*store, password("a"_ns)), errSecSuccess);
  ASSERT_TRUE(lockKeyring());
  EXPECT_EQ(store->availability(), errSecInteractionNotAllowed);
  EXPECT_EQ(find(*store), errSecInteractionNotAllowed);
  EXPECT_EQ(add(*store, password("b"_ns)), errSecInteractionNotAllowed);
  EXPECT_EQ(store->update({}, password("b"_ns)), errSecInteractionNotAllowed);
  EXPECT_EQ(store->remove({}), errSecInteractionNotAllowed);
  // No program is there that could show the question.
  EXPECT_EQ(openStore({.prompting = Prompting::allowed, .promptTimeout = 0.5})->availability(),
            errSecInteractionNotAllowed);
  ASSERT_TRUE(sendToKeyring("KILL"));
  waitFor(*store, errSecNotAvailable);
  ASSERT_TRUE(startKeyring());
  waitFor(*store, errSecSuccess);
  EXPECT_EQ(find(*store), errSecSuccess);
}

TEST_F(SecretServiceKeychainStoreTest, OutlivesTheService) {
  const auto store = openStore();
  ASSERT_EQ(add(*store, password("a"_ns, "kept")), errSecSuccess);
  ASSERT_TRUE(sendToKeyring("KILL"));
  waitFor(*store, errSecNotAvailable);
  EXPECT_EQ(find(*store), errSecNotAvailable);
  EXPECT_EQ(store->remove({}), errSecNotAvailable);
  ASSERT_TRUE(startKeyring());
  waitFor(*store, errSecSuccess);
  std::string value;
  EXPECT_EQ(find(*store, &value), errSecSuccess);
  EXPECT_EQ(value, "kept");
}

TEST_F(SecretServiceKeychainStoreTest, DoesNotWaitForeverForServiceOrBus) {
  const auto store = openStore({.timeout = 0.3});
  ASSERT_EQ(store->availability(), errSecSuccess);
  ASSERT_TRUE(sendToKeyring("STOP"));
  EXPECT_EQ(store->availability(), errSecNotAvailable);
  EXPECT_EQ(openStore({.timeout = 0.3})->availability(), errSecNotAvailable);
  ASSERT_TRUE(sendToKeyring("CONT"));
  waitFor(*store, errSecSuccess);

  // A bus that accepts connections and says nothing, and one that is not there.
  sockaddr_un address{AF_UNIX, "mute"};
  const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
  unlink("mute");
  ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(listen(listener, 8), 0);
  const std::string bus = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  for (const char* each : {"unix:path=mute", "unix:path=/nowhere", "nonsense"}) {
    setenv("DBUS_SESSION_BUS_ADDRESS", each, 1);
    EXPECT_EQ(openStore({.timeout = 0.3})->availability(), errSecNotAvailable) << each;
  }
  close(listener);

  // No address: a running bus is found, and none is started.
  const std::string folder = std::getenv("ZEB_TEST_KEYRING");
  const std::string programs = std::getenv("PATH");
  ASSERT_TRUE(run("cd " + folder +
                  " && printf '#!/bin/sh\\ntouch %s/launched' $PWD >dbus-launch && "
                  "chmod +x dbus-launch"));
  setenv("PATH", (folder + ":" + programs).c_str(), 1);
  setenv("DISPLAY", ":99", 1);
  for (const char* each : {"autolaunch:", ""}) {
    *each ? setenv("DBUS_SESSION_BUS_ADDRESS", each, 1) : unsetenv("DBUS_SESSION_BUS_ADDRESS");
    EXPECT_EQ(openStore()->availability(), errSecNotAvailable) << each;
  }
  EXPECT_NE(access((folder + "/launched").c_str(), F_OK), 0);
  ASSERT_EQ(symlink((folder + "/bus").c_str(), (folder + "/run/bus").c_str()), 0);
  EXPECT_EQ(openStore()->availability(), errSecSuccess);
  unlink((folder + "/run/bus").c_str());
  unsetenv("DISPLAY");
  setenv("PATH", programs.c_str(), 1);
  setenv("DBUS_SESSION_BUS_ADDRESS", bus.c_str(), 1);
  EXPECT_EQ(openStore()->availability(), errSecSuccess);
}

TEST_F(SecretServiceKeychainStoreTest, LeavesOtherProgramsAlone) {
  const SecretSchema foreign{"org.example.Other",
                             SECRET_SCHEMA_NONE,
                             {{"account", SECRET_SCHEMA_ATTRIBUTE_STRING}},
                             0,
                             nullptr,
                             nullptr,
                             nullptr,
                             nullptr,
                             nullptr,
                             nullptr,
                             nullptr};
  ASSERT_TRUE(secret_password_store_sync(&foreign, SECRET_COLLECTION_DEFAULT, "other", "theirs",
                                         nullptr, nullptr, "account", "text:a", nullptr));
  const auto store = openStore();
  EXPECT_EQ(find(*store), errSecItemNotFound);
  ASSERT_EQ(add(*store, password("a"_ns)), errSecSuccess);
  EXPECT_EQ(store->remove({}), errSecSuccess);
  EXPECT_EQ(store->remove({}), errSecItemNotFound);
  char* const theirs =
      secret_password_lookup_sync(&foreign, nullptr, nullptr, "account", "text:a", nullptr);
  EXPECT_STREQ(theirs, "theirs");
  secret_password_free(theirs);

  // Ours after another program has damaged it.
  const SecretSchema ours{"zebutilities.KeychainItem",
                          SECRET_SCHEMA_NONE,
                          {{"class", SECRET_SCHEMA_ATTRIBUTE_STRING}},
                          0,
                          nullptr,
                          nullptr,
                          nullptr,
                          nullptr,
                          nullptr,
                          nullptr,
                          nullptr};
  ASSERT_TRUE(secret_password_store_sync(&ours, SECRET_COLLECTION_DEFAULT, "damaged", "", nullptr,
                                         nullptr, "class", "genericPassword", nullptr));
  EXPECT_EQ(find(*store), errSecDecode);
  EXPECT_EQ(store->remove({}), errSecSuccess);
}

TEST_F(SecretServiceKeychainStoreTest, TakesBackWhatItCannotFinish) {
  const auto store = openStore();
  const Value noAttribute = NSArray{1};
  const KeychainItem items[] = {password("a"_ns), password(noAttribute)};
  EXPECT_EQ(store->add(items), errSecParam);
  EXPECT_EQ(find(*store), errSecItemNotFound);
  ASSERT_EQ(add(*store, password("a"_ns, "old")), errSecSuccess);
  EXPECT_EQ(store->update({}, password(noAttribute, "new")), errSecParam);
  std::string value;
  EXPECT_EQ(find(*store, &value), errSecSuccess);
  EXPECT_EQ(value, "old");
}

TEST_F(SecretServiceKeychainStoreTest, UsesTheCollectionThatTheHostNames) {
  const auto store = openStore({.collection = "session"});
  ASSERT_EQ(add(*store, password("a"_ns)), errSecSuccess);
  EXPECT_EQ(find(*openStore()), errSecItemNotFound);
  EXPECT_EQ(find(*openStore({.collection = "session"})), errSecSuccess);
  ASSERT_EQ(add(*openStore({.collection = "Login"}), password("b"_ns)), errSecSuccess);
  EXPECT_EQ(find(*openStore()), errSecSuccess);
  EXPECT_EQ(find(*openStore({.collection = "missing"})), errSecNotAvailable);
  EXPECT_EQ(openStore({.collection = std::u16string_view(u"\xD800")})->availability(), errSecParam);
}

TEST_F(SecretServiceKeychainStoreTest, LaterReadersDoNotOvertakeAWaitingWriter) {
  const auto store = openStore();
  ASSERT_EQ(add(*store, password("a"_ns)), errSecSuccess);
  const std::string folder = g_get_user_runtime_dir() + std::string("/zebutilities");
  std::jthread writer;
  FileLock reader;
  ASSERT_EQ(reader.acquire(folder, 0, FileLock::Mode::shared), 0);
  writer = std::jthread([&] { EXPECT_EQ(add(*store, password("b"_ns)), errSecSuccess); });
  waitUntil([&] { return FileLock().acquire(folder + "/gate", 0, FileLock::Mode::shared) != 0; },
            "the writer waits behind the gate");
  EXPECT_EQ(find(*openStore({.timeout = 0.3})), errSecNotAvailable);
}

TEST_F(SecretServiceKeychainStoreTest, IsRefusedInTheChildOfAFork) {
  const auto store = openStore();
  ASSERT_EQ(store->availability(), errSecSuccess);
  const pid_t child = fork();
  if (child == 0)
    _exit(openStore()->availability() == errSecNotAvailable &&
                  store->availability() == errSecNotAvailable
              ? 0
              : 1);
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(store->availability(), errSecSuccess);
}

/// The next test runs this one in two processes at the same time.
TEST(SecretServiceProcess, AddsItemsThatMayExist) {
  const auto store = openStore();
  for (int i = 0; i < 20; ++i) {
    const OSStatus status = add(*store, password(std::to_string(i)));
    EXPECT_TRUE(status == errSecSuccess || status == errSecDuplicateItem) << status;
  }
}

TEST_F(SecretServiceKeychainStoreTest, OneOfTwoProcessesAddsAnItem) {
  const std::string process = std::filesystem::canonical("/proc/self/exe").string() +
                              " --gtest_filter=SecretServiceProcess.* >/dev/null ";
  EXPECT_TRUE(run(process + "& " + process + "&& wait $!")) << "run the test of one process";
  std::string values;
  EXPECT_EQ(find(*openStore(), &values), errSecSuccess);
  EXPECT_EQ(values.size(), 20 * std::string_view("secret").size());
}

/// Tests with a service that behaves as the test says.
class FakeSecretServiceTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(sendToKeyring("KILL"));
    waitFor(*openStore(), errSecNotAvailable);
  }
  void TearDown() override {
    ASSERT_TRUE(startKeyring());
    waitFor(*openStore(), errSecSuccess);
  }
};

TEST_F(FakeSecretServiceTest, MustEncryptItsSessions) {
  {
    FakeService service({});
    EXPECT_EQ(openStore()->availability(), errSecSuccess);
  }
  FakeService service(
      {{FakeService::encryptedSession, {""}}, {"OpenSession plain", {"(<''>, objectpath '/s')"}}});
  EXPECT_EQ(openStore()->availability(), errSecNotAvailable);
  EXPECT_TRUE(service.wasCalled("OpenSession plain"));
}

TEST_F(FakeSecretServiceTest, AsksTheUserAndWaitsForTheAnswer) {
  FakeService::Replies replies{
      {"Get Locked", {"(<true>,)"}},
      {"Unlock /org/freedesktop/secrets", {"(@ao [], objectpath '/p')"}},
      {"Prompt /p", {"()"}},
  };
  {
    FakeService service(replies);
    const auto store = openStore({.prompting = Prompting::allowed, .promptTimeout = 0.3});
    EXPECT_EQ(store->availability(), errSecInteractionNotAllowed)
        << "neither the user nor the service answers";
    waitUntil([&] { return service.wasCalled("Dismiss /p"); }, "the prompt is dismissed");
  }
  const auto status = [&] {
    FakeService service(replies);
    const OSStatus result = openStore({.prompting = Prompting::allowed})->availability();
    EXPECT_FALSE(service.wasCalled("Dismiss /p"));
    return result;
  };
  replies["Completed"] = {"(true, <@ao []>)"};
  EXPECT_EQ(status(), errSecInteractionNotAllowed);
  replies["Completed"] = {"(false, <[objectpath '/c']>)"};
  EXPECT_EQ(status(), errSecSuccess);

  // A collection that is locked during the work: other processes must not wait for the user.
  replies["Get Locked"] = {"(<false>,)", "(<true>,)"};
  replies["SearchItems /c"] = {"(@ao [],)"};
  {
    FakeService service(replies);
    EXPECT_EQ(find(*openStore({.prompting = Prompting::allowed})), errSecInteractionNotAllowed);
    EXPECT_FALSE(service.wasCalled("Prompt /p"));
  }
  replies["Get Locked"].pop_front();

  // The service ends while the user thinks.
  replies.erase("Completed");
  std::optional<FakeService> service(std::in_place, replies);
  std::jthread end([&] {
    waitUntil([&] { return service->wasCalled("Prompt /p"); }, "the user is asked");
    service.reset();
  });
  EXPECT_EQ(openStore({.prompting = Prompting::allowed})->availability(), errSecNotAvailable);
}

TEST_F(FakeSecretServiceTest, RemovesAllItemsOrSaysThatItDidNot) {
  FakeService::Replies replies{{"SearchItems /c", {"([objectpath '/c/1', '/c/2'],)"}},
                               {"Get Attributes", {"(<'no attributes'>,)"}}};
  {
    FakeService service(replies);
    EXPECT_EQ(openStore()->remove({}), errSecDecode);
  }
  replies["Get Attributes"] = {"(<{'class': 'genericPassword', 'order': '1', 'value': 'some'}>,)"};
  replies["GetSecrets /org/freedesktop/secrets"] = {"(@a{o(oayays)} {},)"};
  replies["Delete /c/1"] = {"(objectpath '/',)"};
  FakeService service(replies);
  EXPECT_EQ(openStore()->remove({}), errSecIO);
  EXPECT_TRUE(service.wasCalled("Delete /c/2"));
  EXPECT_FALSE(service.wasCalled("CreateItem /c")) << "a value that is unknown became an empty one";
}

}  // namespace
}  // namespace zeb::test
