#include <ZEBPlatform/AddressBook.h>
#include <ZEBPlatform/Notifications.h>
#include <ZEBPlatform/Text/NSLocale.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <optional>

#include "Support/LogRecorder.h"
#include "Support/Storm.h"

namespace zeb::test {

namespace fs = std::filesystem;

using Answer = Block<void(bool isGranted)>;

std::string card(const std::string& lines) { return "BEGIN:VCARD\n" + lines + "\nEND:VCARD\n"; }

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// An empty folder of contacts, which the user lets the program read.
struct ContactStores : testing::Test {
  ContactStores() {
    std::string name = (fs::temp_directory_path() / "zeb-test-XXXXXX").string();
    root = mkdtemp(name.data());
    fs::create_directory(folder());
    configuration.contactsFolder = folder().string();
    configuration.authorizationFile = (root / "settings/answer").string();
    answer("authorized\n");
  }
  ~ContactStores() override {
    CNSetHostConfiguration({});
    fs::remove_all(root);
  }

  fs::path folder() const { return root / "contacts"; }
  /// Makes this the content of the file of the user's answer.
  void answer(const char* content) {
    write(root / "settings/answer", content);
    fs::permissions(root / "settings/answer", fs::perms(0600));
    CNSetHostConfiguration(configuration);
  }
  static void write(const fs::path& file, const std::string& content) {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << content;
  }
  void add(const char* name, const std::string& content) { write(folder() / name, content); }

  NSArray fetch(const NSArray& keys = nullptr) {
    const auto predicate = CNContact::predicateForContactsInContainerWithIdentifier(
        store->defaultContainerIdentifier());
    return store->unifiedContactsMatchingPredicate(predicate, keys, &error);
  }
  /// "identifier: full name, addresses, numbers" of each contact.
  std::string contacts() {
    const NSArray found = fetch(
        {CNContactEmailAddressesKey, CNContactPhoneNumbersKey,
         CNContactFormatter::descriptorForRequiredKeysForStyle(CNContactFormatterStyleFullName)});
    if (!found) return "error: " + error.localizedDescription().utf8();
    std::string text;
    for (const Value& element : found) {
      const auto contact = element.object<CNContact>();
      text += formattedText(
          "%@: %@, %@, %@;",
          {contact->identifier(),
           CNContactFormatter::stringFromContact(contact, CNContactFormatterStyleFullName),
           contact->emailAddresses().componentsJoinedByString("+"),
           contact->phoneNumbers().componentsJoinedByString("+")});
    }
    return text;
  }

  fs::path root;
  CNHostConfiguration configuration;
  Ref<CNContactStore> store = makeRef<CNContactStore>();
  NSError error;
};

TEST_F(ContactStores, UnifyTheCardsOfAllFiles) {
  EXPECT_EQ(contacts(), "");
  add("b.vcf", card("UID:1\nTEL:5") + card("FN:Bo") + card("FN:Cy"));
  add("c.VCF", card("UID:1\nFN:Ann\nTEL:6\nTEL:5\nEMAIL:a@b") + card("UID:1\nFN:No\nEMAIL:a@b"));
  add("a.vcf", card("KIND:group\nFN:g\nUID:g\nMEMBER:g") + card("UID:2\nFN:Di\nTEL:7\nTEL:7"));
  add(".d.vcf", card("FN:hidden"));
  add("d.txt", card("FN:another kind"));
  EXPECT_EQ(contacts(), "2: Di, , 7+7;1: Ann, a@b, 5+6;b.vcf: Bo, , ;b.vcf#2: Cy, , ;");

  fs::remove_all(folder());
  EXPECT_EQ(contacts(), "");
  fs::create_directory(folder());
  add("a.vcf", card("FN:new"));
  add("b.vcf", card("UID:a.vcf\nFN:another"));
  EXPECT_EQ(contacts(), "a.vcf#: new, , ;a.vcf: another, , ;");
}

TEST_F(ContactStores, LogBrokenFilesOnce) {
  LogRecorder log;
  add("a.vcf", "BEGIN:VCARD\nFN:x");
  add("b.vcf", card("FN:Bo") + card("UID:x") + card("UID:y"));
  add("c.vcf", "a text");
  add("c2.vcf", "");
  fs::create_directory(folder() / "d.vcf");
  ASSERT_EQ(mkfifo((folder() / "e.vcf").c_str(), 0600), 0);
  fs::create_symlink("b.vcf", folder() / "f.vcf");
  EXPECT_EQ(contacts(), "b.vcf: Bo, , ;");
  const char* const problems[] = {
      "a.vcf: 1 of its vCards are left out; the first one, in line 1, because END:VCARD is missing",
      ("b.vcf: 2 of its vCards are left out; the first one, in line 4, because it has neither a "
       "name nor an address nor a number"),
      "c.vcf: the file is left out (it contains no vCard)",
      "d.vcf: the file is left out (Is a directory)",
      "e.vcf: the file is left out (Invalid argument)",
      "f.vcf: the file is left out (links are not followed)",
  };
  std::vector<std::string> expected;
  for (const char* problem : problems) {
    expected.push_back("4|AddressBook|ZEBPlatform/AddressBook/ContactFolder|contactsOfFolder|" +
                       (folder() / problem).string());
  }
  EXPECT_EQ(log.take(), expected);
  contacts();
  EXPECT_EQ(log.take(), std::vector<std::string>());
  add("a.vcf", "BEGIN:VCARD\nFN:y, which is longer");
  contacts();
  EXPECT_EQ(log.take(), std::vector<std::string>(1, expected[0]));
}

TEST_F(ContactStores, AHundredthOfTheFilesIsBroken) {
  LogRecorder log;
  for (int number = 0; number < 1000; ++number) {
    const std::string text = card("FN:" + std::to_string(number));
    add((std::to_string(number) + ".vcf").c_str(), number % 100 ? text : text.substr(0, 14));
  }
  for (const std::size_t logged : {10u, 0u}) {
    EXPECT_EQ(fetch().count(), 990u);
    EXPECT_EQ(log.take().size(), logged);
  }
}

TEST_F(ContactStores, PropertiesOfContacts) {
  NSMutableString number("5");
  const CNContact own({.phoneNumbers = {number}});
  number.setString("6");
  EXPECT_EQ(own.phoneNumbers(), NSArray{"5"});
  add("a.vcf", card("UID:1\nN:Lee;Ann\nTEL:5"));
  const auto contact = fetch({CNContactGivenNameKey}).firstObject().object<CNContact>();
  EXPECT_EQ(contact->identifier(), "1");
  EXPECT_EQ(contact->givenName(), "Ann");
  EXPECT_FALSE(contact->isKeyAvailable(CNContactPhoneNumbersKey));
  EXPECT_EQ(raisedName([&] { contact->phoneNumbers(); }), CNContactPropertyNotFetchedExceptionName);
  EXPECT_EQ(raisedName([&] { fetch({"phone"}); }), NSInvalidArgumentException);
  EXPECT_TRUE(contact->isEqual(
      CNContact({.identifier = "1", .givenName = "Ann"}, NSArray{CNContactGivenNameKey})));
  const auto other = CNContact::predicateForContactsInContainerWithIdentifier("other");
  EXPECT_TRUE(store->unifiedContactsMatchingPredicate(other, nullptr, &error).isNil());
  EXPECT_EQ(error.code(), CNErrorCodeRecordDoesNotExist);
}

TEST(ContactFormatter, OrderOfNames) {
  const struct {
    CNContactFields fields;
    const char* english;
    const char* hungarian;
  } cases[] = {
      {{.namePrefix = "Dr.",
        .givenName = "Ann",
        .middleName = "Q.",
        .familyName = "Lee",
        .nameSuffix = "Jr.",
        .nickname = "n",
        .organizationName = "o",
        .formattedName = "f"},
       "Dr. Ann Q. Lee Jr.",
       "Dr. Lee Q. Ann Jr."},
      {{.givenName = "太郎", .familyName = "山田"}, "山田太郎", "山田太郎"},
      {{.givenName = "민수", .familyName = "김"}, "김민수", "김민수"},
      {{.givenName = "𠮷", .familyName = "Lee"}, "𠮷 Lee", "Lee 𠮷"},
      {{.familyName = "𠮷", .nickname = "n"}, "𠮷", "𠮷"},
      {{.middleName = "m", .nickname = "n", .formattedName = "f"}, "f", "f"},
      {{.middleName = "m", .nickname = "n"}, "n", "n"},
      {{.middleName = "m", .nameSuffix = "s", .organizationName = "o"}, "m s", "m s"},
      {{.organizationName = "o"}, "o", "o"},
      {{.phoneNumbers = {"5"}}, "(null)", "(null)"},
  };
  for (const auto& [fields, english, hungarian] : cases) {
    const auto contact = makeRef<CNContact>(fields);
    for (const char* const locale : {"en_US", "ja", "hu", "vi_VN"}) {
      NSLocale::setCurrentLocale(NSLocale::localeWithLocaleIdentifier(locale));
      const bool isFamilyFirst = locale[0] == 'h' || locale[0] == 'v';
      EXPECT_EQ(CNContactFormatter::stringFromContact(contact, CNContactFormatterStyleFullName)
                    .description(),
                isFamilyFirst ? hungarian : english);
    }
  }
  NSLocale::setCurrentLocale(nullptr);
}

/// Collects the results of requests, which arrive on other threads.
struct Requests {
  void request() {
    store->requestAccessForEntityType(
        CNEntityTypeContacts, [this](bool isGranted, const NSError& error) {
          EXPECT_EQ(isGranted, error.isNil());
          std::lock_guard guard(mutex);
          results.push_back(isGranted ? "granted" : error.localizedDescription().utf8());
        });
  }
  std::vector<std::string> await(std::size_t count) {
    waitUntil(
        [&] {
          std::lock_guard guard(mutex);
          return results.size() >= count;
        },
        "the requests have got their results");
    std::lock_guard guard(mutex);
    return std::exchange(results, {});
  }

  Ref<CNContactStore> store = makeRef<CNContactStore>();
  std::mutex mutex;
  std::vector<std::string> results;
};

CNAuthorizationStatus status() {
  return CNContactStore::authorizationStatusForEntityType(CNEntityTypeContacts);
}

TEST_F(ContactStores, AskOnceAndRemember) {
  Requests requests;
  std::vector<Answer> answers;
  fs::remove_all(root / "settings");
  CNSetHostConfiguration(configuration);
  EXPECT_EQ(status(), CNAuthorizationStatusNotDetermined);
  EXPECT_TRUE(contacts().starts_with("error: The user has not been asked"));
  requests.request();
  EXPECT_TRUE(requests.await(1)[0].starts_with("Nobody can ask the user"));
  EXPECT_EQ(status(), CNAuthorizationStatusNotDetermined);

  configuration.accessPrompt = [&](CNEntityType, Answer answer) { answers.push_back(answer); };
  CNSetHostConfiguration(configuration);
  requests.request();
  requests.request();
  ASSERT_EQ(answers.size(), 1u) << "one question for both";
  answers.clear();
  for (const std::string& result : requests.await(2))
    EXPECT_TRUE(result.starts_with("The user has not answered"));

  requests.request();
  EXPECT_EQ(status(), CNAuthorizationStatusNotDetermined);
  answers.at(0)(false);
  answers.at(0)(true);  // too late
  EXPECT_TRUE(requests.await(1)[0].starts_with("The user has refused"));
  EXPECT_EQ(status(), CNAuthorizationStatusDenied);
  EXPECT_EQ(contentOf(root / "settings/answer"), "denied\n");
  EXPECT_EQ(fs::status(root / "settings/answer").permissions(), fs::perms(0600));
  CNSetHostConfiguration(configuration);  // as in another run
  requests.request();
  EXPECT_TRUE(requests.await(1)[0].starts_with("The user has refused"));

  EXPECT_TRUE(CNContactStore::forgetAuthorizationForEntityType(CNEntityTypeContacts, &error));
  requests.request();
  configuration.policy = CNHostPolicy::restricted;
  CNSetHostConfiguration(configuration);
  answers.at(1)(true);
  EXPECT_TRUE(requests.await(1)[0].starts_with("The host of this program"));
  configuration.policy = CNHostPolicy::askUser;
  CNSetHostConfiguration(configuration);
  requests.request();
  EXPECT_EQ(requests.await(1)[0], "granted");
  EXPECT_EQ(status(), CNAuthorizationStatusAuthorized);
  EXPECT_EQ(answers.size(), 2u);
}

TEST_F(ContactStores, Restrictions) {
  configuration.policy = CNHostPolicy::restricted;
  CNSetHostConfiguration(configuration);
  EXPECT_EQ(status(), CNAuthorizationStatusRestricted);
  EXPECT_TRUE(contacts().starts_with("error: The host of this program"));
  configuration.policy = CNHostPolicy::askUser;
  CNSetHostConfiguration(configuration);
  EXPECT_EQ(status(), CNAuthorizationStatusAuthorized);
  fs::remove(folder());
  write(folder(), "a file");
  EXPECT_EQ(status(), CNAuthorizationStatusRestricted);
  EXPECT_TRUE(contacts().starts_with("error: The folder of contacts"));
  fs::remove(folder());
  EXPECT_EQ(status(), CNAuthorizationStatusAuthorized);
  if (geteuid() == 0) {
    fs::create_directory(folder());
    ASSERT_EQ(chown(folder().c_str(), 12345, 12345), 0);
    EXPECT_EQ(status(), CNAuthorizationStatusRestricted);
  }
  LogRecorder log;
  answer("unknown");
  EXPECT_EQ(log.take().size(), 0u) << "an answer is read when it is needed";
  fs::remove(folder());
  EXPECT_EQ(status(), CNAuthorizationStatusNotDetermined);
  EXPECT_EQ(status(), CNAuthorizationStatusNotDetermined);
  EXPECT_EQ(log.take().size(), 1u);
}

TEST_F(ContactStores, BelieveOnlyFilesThatNobodyElseCouldChange) {
  const fs::path file = root / "settings/answer";
  configuration.accessPrompt = [](CNEntityType, const Answer& answer) { answer(true); };
  std::vector<std::function<void()>> faults{[&] { fs::permissions(file, fs::perms(0620)); },
                                            [&] { fs::permissions(file, fs::perms(0602)); },
                                            [&] {
                                              fs::rename(file, root / "target");
                                              fs::create_symlink(root / "target", file);
                                            }};
  if (geteuid() == 0) {
    faults.push_back([&] { ASSERT_EQ(chown(file.c_str(), 12345, 12345), 0); });
  }
  for (const auto& makeFault : faults) {
    makeFault();
    CNSetHostConfiguration(configuration);
    LogRecorder log;
    EXPECT_EQ(status(), CNAuthorizationStatusNotDetermined);
    EXPECT_EQ(log.take().size(), 1u);
    Requests requests;
    requests.request();
    EXPECT_EQ(requests.await(1)[0], "granted");
    EXPECT_EQ(fs::symlink_status(file).permissions(), fs::perms(0600));
    CNSetHostConfiguration(configuration);
    EXPECT_EQ(status(), CNAuthorizationStatusAuthorized);
  }
}

TEST_F(ContactStores, AnAnswerThatCannotBeStoredHoldsForTheProcess) {
  LogRecorder log;
  Requests requests;
  configuration.accessPrompt = [](CNEntityType, const Answer& answer) { answer(true); };
  const NSString stored = configuration.authorizationFile;
  configuration.authorizationFile = "/proc/missing/answer";
  CNSetHostConfiguration(configuration);
  requests.request();
  EXPECT_EQ(requests.await(1)[0], "granted");
  EXPECT_EQ(log.take().size(), 1u);
  for (const NSString& file : {stored, configuration.authorizationFile}) {
    configuration.authorizationFile = file;
    CNSetHostConfiguration(configuration);
    EXPECT_EQ(status(), CNAuthorizationStatusAuthorized);
  }
  EXPECT_TRUE(CNContactStore::forgetAuthorizationForEntityType(CNEntityTypeContacts, &error));
  EXPECT_EQ(status(), CNAuthorizationStatusNotDetermined);
}

/// Whether a thread with the name of the watching one exists.
bool isWatching() {
  for (const auto& thread : fs::directory_iterator("/proc/self/task")) {
    std::string name;
    std::ifstream(thread.path() / "comm") >> name;  // fails if the thread ends meanwhile
    if (name == "zeb-contacts") return true;
  }
  return false;
}

TEST_F(ContactStores, ChangesArePosted) {
  std::atomic<int> posts = 0;
  const auto token = NSNotificationCenter::defaultCenter()->addObserverForName(
      CNContactStoreDidChangeNotification, store, nullptr, [&](auto&) { ++posts; });
  const auto expectPost = [&](const char* change) {
    waitUntil([&] { return posts > 0; }, change);
    posts = 0;
  };
  for (int number = 0; number < 50; ++number) add("a.vcf", card("FN:" + std::to_string(number)));
  waitUntil([&] { return posts > 0; }, "a new file is posted");
  EXPECT_LT(posts, 10) << "a burst is combined";
  expectPost("a new file is posted");
  fs::rename(folder() / "a.vcf", folder() / "b.vcf");
  expectPost("a new name is posted");
  fs::remove_all(folder());
  expectPost("the removal of the folder is posted");
  add("c.vcf", card("FN:c"));
  expectPost("the making of the folder is posted");
  add("c.vcf", card("FN:d"));
  expectPost("a change in the new folder is posted");
  fs::permissions(folder() / "c.vcf", fs::perms(0600));
  expectPost("a file's permissions are posted");
  fs::permissions(folder(), fs::perms(0700));
  expectPost("the folder's permissions are posted");
  configuration.contactsFolder = (root / "link/missing/contacts").string();
  CNSetHostConfiguration(configuration);
  EXPECT_GT(posts.exchange(0), 0) << "another folder is posted at once";
  fs::create_directory(root / "target");
  fs::create_symlink("target", root / "link");
  expectPost("a part of the path is posted");
  fs::create_directories(root / "link/missing/contacts");
  expectPost("the rest of the path is posted");
  write(root / "target/missing/contacts/a.vcf", card("FN:a"));
  expectPost("a file behind a link is posted");

  NSNotificationCenter::defaultCenter()->removeObserver(token);
  EXPECT_TRUE(isWatching());
  store = nullptr;
  waitUntil([] { return !isWatching(); }, "the thread ends with the last store");
}

TEST_F(ContactStores, AFolderThatBecomesReadableIsWatched) {
  // Root may read every folder, so the test gives this right up.
  const bool isRoot = geteuid() == 0;
  const uid_t user = isRoot ? 65534 : geteuid();
  const auto sameGroup = static_cast<gid_t>(-1);
  for (const fs::path& path : {root, folder()}) {
    ASSERT_EQ(chown(path.c_str(), user, sameGroup), 0);
  }
  if (isRoot) {
    ASSERT_EQ(seteuid(user), 0);
  }
  for (const fs::path& closed : {folder(), root}) {
    fs::permissions(closed, fs::perms::none);
    CNSetHostConfiguration(configuration);
    std::atomic<int> posts = 0;
    const auto token = NSNotificationCenter::defaultCenter()->addObserverForName(
        CNContactStoreDidChangeNotification, store, nullptr, [&](auto&) { ++posts; });
    fs::permissions(closed, fs::perms::owner_all);
    waitUntil([&] { return posts > 0; }, "the permission is posted");
    add("a.vcf", card("FN:a"));
    waitUntil([&] { return posts > 1; }, "a file in the readable folder is posted");
    NSNotificationCenter::defaultCenter()->removeObserver(token);
  }
  if (isRoot) {
    ASSERT_EQ(seteuid(0), 0);
  }
}

TEST_F(ContactStores, AFailedWatchStartsAgainWithTheNextStore) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "UndefinedBehaviorSanitizer, which goes with it, opens a pipe to check a type";
#endif
  LogRecorder log;
  int posts = 0;
  const auto token = NSNotificationCenter::defaultCenter()->addObserverForName(
      CNContactStoreDidChangeNotification, store, nullptr, [&](auto&) { ++posts; });
  rlimit limit;
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  const rlimit noDescriptors{0, limit.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &noDescriptors), 0);
  CNSetHostConfiguration(configuration);
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
  EXPECT_EQ(posts, 1);
  EXPECT_EQ(log.take().size(), 1u);
  waitUntil([] { return !isWatching(); }, "the former thread ends");
  const auto other = makeRef<CNContactStore>();
  waitUntil(isWatching, "the next store watches again");
  NSNotificationCenter::defaultCenter()->removeObserver(token);
}

TEST_F(ContactStores, StormOfStoresAndChanges) {
  storm(4, [&](int thread, std::mt19937& random) {
    for (int round = 0; round < 100; ++round) {
      const auto own = makeRef<CNContactStore>();
      const std::string name = std::to_string(thread) + ".vcf";
      switch (random() % 3) {
        case 0:
          add(name.c_str(), card("FN:" + std::string(random() % 10'000 + 1, 'x')));
          break;
        case 1:
          fs::remove(folder() / name);
          break;
        default:
          fetch();
      }
      if (thread == 0 && round % 10 == 0) CNSetHostConfiguration(configuration);
    }
  });
  store = nullptr;
  waitUntil([] { return !isWatching(); }, "the thread ends with the last store");
}

}  // namespace zeb::test
