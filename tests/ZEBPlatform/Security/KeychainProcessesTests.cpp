#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <csignal>

#include "KeychainFolder.h"

namespace zeb::test {

using KeychainProcesses = KeychainFolder;

/// Runs the work in a child process, which ends with the work's result.
template <class Work>
pid_t inChild(const Work& work) {
  const pid_t child = fork();
  if (child == 0) {
    alarm(300);  // a child that hangs is ended with a signal
    _exit(work());
  }
  return child;
}
/// The child's result, or 1000 and the signal that ended it.
int resultOf(pid_t child) {
  int result = -1;
  waitpid(child, &result, 0);
  return WIFEXITED(result) ? WEXITSTATUS(result) : 1000 + WTERMSIG(result);
}

TEST_F(KeychainProcesses, MakeOneStoreTogetherAndWriteToIt) {
  constexpr int processes = 4;
  constexpr int items = 500;
  for (int round = 0; round < 10; ++round) {
    fs::remove_all(place);
    std::vector<pid_t> children;
    for (int process = 0; process < processes; ++process) {
      children.push_back(inChild([&] {
        const auto store = open();
        for (int i = 0; i < (round ? 1 : items); ++i) {
          const auto name = std::to_string(process) + "-" + std::to_string(i);
          if (addOne(store, password(name, name)) != errSecSuccess) return 1;
          if (secrets(store, named(name)) != name) return 2;
        }
        return 0;
      }));
    }
    for (const pid_t child : children) EXPECT_EQ(resultOf(child), 0);
    std::vector<KeychainItem> found;
    ASSERT_EQ(open()->find({}, Values::include, SIZE_MAX, found), errSecSuccess);
    EXPECT_EQ(found.size(), static_cast<std::size_t>(processes * (round ? 1 : items)));
  }
}

TEST_F(KeychainProcesses, LoseNothingAcknowledgedWhenTheyAreKilled) {
  std::string acknowledged;
  for (int round = 0; round < 20; ++round) {
    int channel[2];
    ASSERT_EQ(pipe(channel), 0);
    const pid_t child = inChild([&] {
      const auto store = open();
      for (char i = 'a';; ++i) {
        const std::string name{static_cast<char>('A' + round), i};
        if (addOne(store, password(name, name)) != errSecSuccess) return 1;
        if (i > 'c' && store->remove({{}, named(name)}) != errSecSuccess) return 2;
        if (i > 'c') i = 'c';  // from here on it adds and removes the same item
        if (write(channel[1], name.data(), 2) != 2) return 3;
      }
    });
    close(channel[1]);
    const auto readName = [&] {
      char name[2];
      if (read(channel[0], name, 2) != 2) return false;
      if (name[1] <= 'c') acknowledged.append(acknowledged.empty() ? "" : " ").append(name, 2);
      return true;
    };
    // The child is killed at different moments, in the first rounds while it makes the store.
    for (int i = 0; i < round && readName(); ++i) continue;
    usleep(static_cast<useconds_t>(round % 7 * 300));
    kill(child, SIGKILL);
    EXPECT_EQ(resultOf(child), 1000 + SIGKILL);
    while (readName()) continue;
    close(channel[0]);
    const auto store = open();
    ASSERT_TRUE(store) << status;
    // Removes what the killed child has added but not acknowledged.
    std::vector<KeychainItem> found;
    store->find({}, Values::include, SIZE_MAX, found);
    for (const KeychainItem& item : found) {
      const std::string each = NSString(item.attributes[account]).utf8();
      if (acknowledged.find(each) != std::string::npos) continue;
      EXPECT_EQ(each[0], 'A' + round);
      EXPECT_EQ(store->remove({{}, item.attributes}), errSecSuccess);
    }
    EXPECT_EQ(secrets(store, {}), acknowledged.empty() ? notFound : acknowledged);
  }
}

TEST_F(KeychainProcesses, GoOnAfterAForkWhateverTheThreadsDo) {
  const auto store = open();
  ASSERT_EQ(addOne(store, password("before", "before")), errSecSuccess);
  std::atomic<bool> isOver{false};
  std::vector<std::jthread> threads;
  for (const char* name : {"x", "y", "z"}) {
    threads.emplace_back([&, name] {
      while (!isOver) {
        EXPECT_EQ(addOne(store, password(name, name)), errSecSuccess);
        const auto reads = [&] { return secrets(store, named("before")) != "before"; };
        EXPECT_EQ(*name == 'z' ? resultOf(inChild(reads)) : reads(), 0);
        EXPECT_EQ(store->remove({{}, named(name)}), errSecSuccess);
      }
    });
  }
  std::string expected = "before";
  for (int round = 0; round < 20; ++round) {
    const std::string name = std::to_string(round);
    const pid_t child = inChild([&] {
      if (addOne(store, password("c" + name, "c" + name)) != errSecSuccess) return 1;
      if (secrets(store, named("before")) != "before") return 2;
      // A fork of a fork, and a store of the child's own.
      return resultOf(inChild([&] { return secrets(open(), named("before")) != "before"; }));
    });
    EXPECT_EQ(addOne(store, password("p" + name, "p" + name)), errSecSuccess);
    EXPECT_EQ(resultOf(child), 0);
    EXPECT_EQ(secrets(store, named("c" + name)), "c" + name);
    EXPECT_EQ(secrets(store, named("p" + name)), "p" + name);
  }
  isOver = true;
}

TEST_F(KeychainProcesses, ReportALockedDatabaseAndAReplacedOne) {
  const auto store = open();
  ASSERT_EQ(addOne(store, password("anna", "1")), errSecSuccess);
  execute("BEGIN IMMEDIATE");
  EXPECT_EQ(addOne(store, password("bert", "2")), errSecNotAvailable);
  EXPECT_EQ(secrets(store, named("anna")), "1") << "reading needs no such lock";
  execute("COMMIT");
  EXPECT_EQ(addOne(store, password("bert", "2")), errSecSuccess);
  // An older copy of the store is put back, then the store is missing, then there is another one.
  other.reset();
  fs::copy(place, folder / "copy");
  EXPECT_EQ(addOne(store, password("carl", "3")), errSecSuccess);
  EXPECT_EQ(secrets(store, {}), "1 2 3");
  fs::rename(place, folder / "moved");
  fs::rename(folder / "copy", place);
  EXPECT_EQ(secrets(store, {}), "1 2");
  fs::rename(place, folder / "copy");
  EXPECT_EQ(secrets(store, {}), std::to_string(errSecNotAvailable));
  EXPECT_EQ(addOne(store, password("carl", "3")), errSecNotAvailable);
  const auto fresh = open();
  EXPECT_EQ(addOne(fresh, password("anna", "new")), errSecSuccess);
  EXPECT_EQ(secrets(store, {}), std::to_string(errSecInvalidKeychain));
  EXPECT_EQ(addOne(store, password("carl", "3")), errSecInvalidKeychain);
  EXPECT_EQ(secrets(fresh, {}), "new");
}

TEST_F(KeychainProcesses, SeeTheLocksOfAFolderThatIsOpenUnderTwoNames) {
  const auto first = open();
  ASSERT_EQ(addOne(first, password("anna", "1")), errSecSuccess);
  fs::rename(place, folder / "moved");
  place = folder / "moved";
  const auto second = open();
  EXPECT_EQ(secrets(second, {}), "1");
  // Locks of this kind conflict with those of SQLite in the same process, too.
  const int file = ::open((place / "keychain.db").c_str(), O_RDWR);
  struct flock lock = {};
  lock.l_type = F_WRLCK;
  EXPECT_EQ(fcntl(file, F_OFD_GETLK, &lock), 0);
  EXPECT_EQ(lock.l_type, F_RDLCK) << "the connections have lost their locks";
  close(file);
}

TEST_F(KeychainProcesses, ReportAFullDiskAndLoseNothing) {
  const auto store = open();
  ASSERT_EQ(addOne(store, password("anna", "1")), errSecSuccess);
  const std::string large(3 << 20, 'x');
  const int result = resultOf(inChild([&] {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{1 << 20, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limit);
    if (addOne(store, password("bert", large)) != errSecDiskFull) return 1;
    if (secrets(store, named("anna")) != "1") return 2;
    if (addOne(store, password("carl", "3")) != errSecSuccess) return 3;
    const rlimit none{100, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &none);
    const auto path = (folder / "new").string();
    OSStatus failure = 0;
    EmbeddedKeychainStore::open(path, KeychainKeyInFile(), &failure);
    return failure == errSecDiskFull ? 0 : 4;
  }));
  EXPECT_EQ(result, 0);
  EXPECT_EQ(secrets(store, {}), "1 3");
  // What was begun without room is finished when there is some.
  EXPECT_TRUE(EmbeddedKeychainStore::open((folder / "new").string(), KeychainKeyInFile()));
}

TEST_F(KeychainProcesses, ReadButDoNotWriteAReadOnlyFolder) {
  constexpr uid_t nobody = 65534;  // the tests may run as root, whom no permission stops
  const int result = resultOf(inChild([&] {
    const bool isRoot = geteuid() == 0;
    if (isRoot && (chown(folder.c_str(), nobody, nobody) || setuid(nobody))) return 1;
    if (addOne(open(), password("anna", "1")) != errSecSuccess) return 2;
    fs::permissions(place, fs::perms(0500));
    for (int round = 0; round < 2; ++round) {
      const auto store = open();
      if (!store || secrets(store, named("anna")) != "1") return 3;
      if (store->remove({{}, named("anna")}) != errSecWrPerm) return 4;
      fs::permissions(place / "keychain.db", fs::perms(0400));
    }
    fs::permissions(place, fs::perms(0700));
    fs::permissions(place / "keychain.db", fs::perms(0600));
    const auto store = open();
    if (store->remove({{}, named("anna")}) != errSecSuccess) return 5;
    fs::rename(place, folder / "moved");
    fs::create_directory(place);
    fs::permissions(place, fs::perms(0500));
    return open() || status != errSecWrPerm ? 6 : 0;
  }));
  EXPECT_EQ(result, 0);
}

}  // namespace zeb::test
