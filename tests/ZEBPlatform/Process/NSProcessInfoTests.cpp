#include <ZEBPlatform/Process/NSProcessInfo.h>
#include <gtest/gtest.h>
#include <sys/utsname.h>

namespace zeb::test {

TEST(NSProcessInfo, AgreesWithTheSystem) {
  const auto& info = NSProcessInfo::processInfo();
  EXPECT_TRUE(NSString(info->arguments().firstObject()).hasSuffix("zeb_test_ZEBPlatform_Process"));
  setenv("ZEB_TEST_VARIABLE", "a=b", 1);
  EXPECT_EQ(info->environment()["ZEB_TEST_VARIABLE"], Value("a=b"));
  EXPECT_GE(info->processorCount(), info->activeProcessorCount());
  EXPECT_TRUE(info->activeProcessorCount() > 0 && info->physicalMemory() > 1 << 20);
  EXPECT_GT(info->systemUptime(), 0);
  EXPECT_NE(info->globallyUniqueString(), info->globallyUniqueString());
  for (const char* name : {"other", "zeb_test_ZEBPlatform_Process"}) {
    info->setProcessName(*name == 'o' ? name : nullptr);
    EXPECT_EQ(info->processName(), name);
  }

  utsname system;
  ASSERT_EQ(uname(&system), 0);
  EXPECT_EQ(info->hostName(), system.nodename);
  const auto [major, minor, patch] = info->operatingSystemVersion();
  EXPECT_TRUE(
      NSString(system.release).hasPrefix(NSString::stringWithFormat("%lld.%lld", major, minor)))
      << major;
  EXPECT_TRUE(info->isOperatingSystemAtLeastVersion({major, minor, patch}) &&
              info->isOperatingSystemAtLeastVersion({major - 1, 99, 99}) &&
              !info->isOperatingSystemAtLeastVersion({major, minor + 1, 0}));
  EXPECT_TRUE(info->operatingSystemVersionString().containsString(system.release));
}

}  // namespace zeb::test
