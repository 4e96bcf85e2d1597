#include <ZEBPlatform/Linux/DynamicLoader.h>
#include <ZEBUtilities/Bundle.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "Support/FakeSystem.h"
#include "Support/LogRecorder.h"

namespace zeb::test {

TEST(FrameworkLoading, OpensAFrameworkByAnyOfItsNames) {
  const NSString own = ZEBFrameworksDirectory();
  ASSERT_FALSE(own.isNil());
  const std::string path = own.utf8() + "/UIKit.framework";
  const std::pair<std::string, NSArray> cases[] = {
      {"UIKit", {own}},
      {"UIKit.framework", {"/nowhere", 17, own.utf8() + "/"}},
      {"/nowhere/UIKit.framework", {own}},
      {path, nullptr},
      {path + "/", {"/nowhere"}}};
  for (const auto& [name, directories] : cases) {
    NSError error("untouched", 1);
    const ZEBLibraryHandle handle = ZEBLoadFramework(name, RTLD_NOW, directories, &error);
    ASSERT_TRUE(handle) << name << error;
    EXPECT_FALSE(symbolInSharedObject(handle, "UIApplicationMain") ||
                 symbolInSharedObject(handle, nullptr));
    EXPECT_TRUE(ZEBUnloadFramework(handle, &error) && error == NSError("untouched", 1));
  }
}

TEST(FrameworkLoading, ReportsTheLastFailure) {
  NSError error, unloadError;
  EXPECT_FALSE(ZEBLoadFramework(nullptr, RTLD_NOW, {"/"}, &error));
  EXPECT_FALSE(ZEBUnloadFramework(nullptr, &unloadError));
  EXPECT_TRUE(error == NSError("NSPOSIXErrorDomain", 22) && error == unloadError);

  // Each error names the last file that was tried.
  const std::string systems = "/System/Library/Frameworks/Foo.framework";
  for (const std::string name :
       {"Foo", "Foo.framework", "Some/Foo.framework", "/A/Foo.framework"}) {
    const std::string& tried = name.starts_with("Foo") ? systems : name;
    EXPECT_FALSE(ZEBLoadFramework(name, RTLD_NOW, {"/Extra"}, &error));
    EXPECT_EQ(zeb_errorDomainAndCodeString(error, 0), "NSPOSIXErrorDomain:2");
    EXPECT_EQ(error.userInfo()["frameworkName"], Value("Foo.framework/Foo"));
    EXPECT_TRUE(NSString(error.userInfo()["dlerror"]).hasPrefix(tried + "/Foo:")) << error;
  }
  EXPECT_FALSE(ZEBLoadFramework("Foo", RTLD_NOW));

  // A library that the program was linked with, and that was not opened with the loader.
  Dl_info image;
  void* handle = nullptr;
  ASSERT_TRUE(dladdr1(stdout, &image, &handle, RTLD_DL_LINKMAP));
  EXPECT_FALSE(ZEBUnloadFramework(handle, &error));
  EXPECT_TRUE(error.code() == 2 && error.userInfo().count() == 1);
  EXPECT_GT(NSString(error.userInfo()["dlerror"]).length(), 0u);
}

TEST(FrameworkLoading, LoadsNoFileThatOthersCouldChange) {
  namespace fs = std::filesystem;
  std::string folder = testing::TempDir() + "frameworks-XXXXXX";
  ASSERT_TRUE(mkdtemp(folder.data()));
  const fs::path start = fs::current_path();
  const std::string framework = folder + "/Trap.framework";
  const std::string file = framework + "/Trap";
  fs::create_directory(framework);
  fs::copy_file(ZEBFrameworksDirectory().utf8() + "/UIKit.framework/UIKit", file);
  fs::current_path(folder);
  const auto dlerror = [&](const NSString& path, const NSArray& directories) -> std::string {
    NSError error;
    const ZEBLibraryHandle handle = ZEBLoadFramework(path, RTLD_NOW, directories, &error);
    if (handle) ZEBUnloadFramework(handle);
    return handle ? "loaded" : NSString(error.userInfo()["dlerror"]).utf8();
  };
  const auto expectHolds = [](const std::string& text, const std::string& part) {
    EXPECT_NE(text.find(part), std::string::npos) << text;
  };

  LogRecorder log;
  for (const char* relative : {"Trap", "./Trap", "../Trap.framework"})
    EXPECT_NE(dlerror(relative, {"", ".", fs::path(folder).filename().string()}), "loaded");
  expectHolds(dlerror("./Trap", nullptr), "relative");
  // In a sticky folder, users cannot replace the files of others.
  for (const auto& [ofFile, ofFolder, expected] : {std::tuple(0600u, 01777u, std::string("loaded")),
                                                   {0664, 0755, file + " can be changed"},
                                                   {0646, 0755, file + " can be changed"},
                                                   {0644, 0757, framework + " can be changed"}}) {
    fs::permissions(file, fs::perms(ofFile));
    fs::permissions(framework, fs::perms(ofFolder));
    expectHolds(dlerror(framework, nullptr), expected);
  }
  EXPECT_NE(dlerror("Trap", {folder}), "loaded");
  expectHolds(log.take().back(), framework + " can be changed");  // the error names another file
  fs::permissions(framework, fs::perms(0755));
  EXPECT_EQ(dlerror(framework, nullptr), "loaded");
  if (geteuid() == 0) {
    ASSERT_EQ(chown(file.c_str(), 12345, 0), 0);
    expectHolds(dlerror(framework, nullptr), file + " belongs to another user");
    ASSERT_EQ(chown(file.c_str(), 0, 0), 0);
  }

  const NSString found = ZEBFrameworksDirectory();
  ZEBSetFrameworksDirectory(folder);
  EXPECT_EQ(ZEBFrameworksDirectory(), NSString(folder));
  fakeRaisedPrivileges = true;
  EXPECT_TRUE(dlerror("Trap", {folder}) != "loaded" && dlerror(framework, nullptr) != "loaded" &&
              ZEBFrameworksDirectory() != NSString(folder));
  fakeRaisedPrivileges = false;
  ZEBSetFrameworksDirectory(nullptr);
  EXPECT_EQ(ZEBFrameworksDirectory(), found);
  fs::current_path(start);
  fs::remove_all(folder);
}

}  // namespace zeb::test
