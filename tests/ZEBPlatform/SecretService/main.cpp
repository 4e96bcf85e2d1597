#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <vector>

/// ThreadSanitizer does not see the locks of libraries that were built without it, and reports what
/// they allocate, copy and free.
extern "C" const char* __tsan_default_suppressions() {
  return "called_from_lib:libglib-2.0.so\n"
         "called_from_lib:libgobject-2.0.so\n"
         "called_from_lib:libgio-2.0.so\n"
         "called_from_lib:libsecret-1.so\n"
         "called_from_lib:libgcrypt.so\n";
}

/// Runs the tests in a session with a keyring of its own, which the script with_keyring starts.
int main(int argc, char** argv) {
  std::vector<char*> arguments(argv, argv + argc + 1);
  testing::InitGoogleTest(&argc, argv);
  if (testing::GTEST_FLAG(list_tests) || std::getenv("ZEB_TEST_KEYRING")) return RUN_ALL_TESTS();
  std::string program = std::filesystem::canonical("/proc/self/exe");
  arguments[0] = program.data();
  std::string path = ZEB_WITH_KEYRING;
  arguments.insert(arguments.begin(), path.data());
  execv(path.c_str(), arguments.data());
  std::perror(path.c_str());
  return 1;
}
