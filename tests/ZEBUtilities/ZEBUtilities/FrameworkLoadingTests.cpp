#include <Linux/DynamicLoader.h>
#include <ZEBUtilities/ZEBFrameworkLoading.h>
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace zeb {
namespace {

TEST(FrameworkLoading, OpensAFrameworkByAnyOfItsNames) {
  const NSString own = ZEBFrameworksDirectory();
  ASSERT_FALSE(own.isNil());
  const std::string path = own.utf8() + "/UIKit.framework";
  const struct {
    std::string name;
    NSArray directories;
  } cases[] = {
      {"UIKit", {own}},
      {"UIKit.framework", {"/nowhere", 17, own.utf8() + "/"}},
      {"/nowhere/UIKit.framework", {own}},
      {path, nullptr},
      {path + "/", {"/nowhere"}},
  };
  for (const auto& [name, directories] : cases) {
    NSError error("untouched", 1);
    const ZEBLibraryHandle handle = ZEBLoadFramework(name, RTLD_NOW, directories, &error);
    ASSERT_TRUE(handle) << name << error;
    for (const char* symbol : {"UIApplicationDidEnterBackgroundNotification",
                               "UIApplicationWillEnterForegroundNotification"}) {
      const auto* text = static_cast<const char* const*>(symbolInSharedObject(handle, symbol));
      ASSERT_TRUE(text);
      EXPECT_STREQ(*text, symbol);
    }
    EXPECT_EQ(symbolInSharedObject(handle, "UIApplicationMain"), nullptr);
    EXPECT_TRUE(ZEBUnloadFramework(handle, &error));
    EXPECT_EQ(error.domain(), "untouched"_ns);
  }
}

TEST(FrameworkLoading, ReportsTheLastFailure) {
  NSError error;
  EXPECT_FALSE(ZEBLoadFramework(nullptr, RTLD_NOW, {"/"}, &error));
  EXPECT_EQ(error, NSError("NSPOSIXErrorDomain", 22));
  error = nullptr;
  EXPECT_FALSE(ZEBUnloadFramework(nullptr, &error));
  EXPECT_EQ(error, NSError("NSPOSIXErrorDomain", 22));

  // Each error tells the file that was tried last.
  for (const auto& [name, tried] : {std::pair{"Foo", "Foo.framework/Foo"},
                                    {"Foo.framework", "Foo.framework/Foo"},
                                    {"/Some/Dir/Foo.framework", "/Some/Dir/Foo.framework/Foo"}}) {
    EXPECT_FALSE(ZEBLoadFramework(name, RTLD_NOW, {"/Extra"}, &error));
    EXPECT_EQ(error.domain(), "NSPOSIXErrorDomain"_ns);
    EXPECT_EQ(error.code(), 2);
    EXPECT_EQ(error.userInfo()["frameworkName"], Value("Foo.framework/Foo"));
    EXPECT_TRUE(NSString(error.userInfo()["dlerror"]).hasPrefix(std::string(tried) + ":"))
        << error.userInfo();
  }
  EXPECT_FALSE(ZEBLoadFramework("Foo", RTLD_NOW));

  // A library that the program was linked with, and that nobody has opened.
  Dl_info image;
  void* handle = nullptr;
  ASSERT_TRUE(dladdr1(stdout, &image, &handle, RTLD_DL_LINKMAP));
  EXPECT_FALSE(ZEBUnloadFramework(handle, &error));
  EXPECT_EQ(error.code(), 2);
  EXPECT_EQ(error.userInfo().count(), 1u);
  EXPECT_GT(NSString(error.userInfo()["dlerror"]).length(), 0u);
}

TEST(FrameworkLoading, TakesTheHostsFolderFirst) {
  const NSString found = ZEBFrameworksDirectory();
  ZEBSetFrameworksDirectory("/opt/frameworks");
  EXPECT_EQ(ZEBFrameworksDirectory(), "/opt/frameworks"_ns);
  ZEBSetFrameworksDirectory(nullptr);
  EXPECT_EQ(ZEBFrameworksDirectory(), found);
}

}  // namespace
}  // namespace zeb
