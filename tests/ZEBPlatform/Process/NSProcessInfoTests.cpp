#include <ZEBPlatform/Process/NSProcessInfo.h>
#include <gtest/gtest.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cstdlib>

namespace zeb {
namespace {

TEST(NSProcessInfo, AgreesWithTheSystem) {
  const auto& info = NSProcessInfo::processInfo();
  EXPECT_EQ(info->processIdentifier(), getpid());
  EXPECT_EQ(info->processName(), "zeb_test_ZEBPlatform_Process"_ns);
  EXPECT_TRUE(NSString(info->arguments().firstObject()).hasSuffix("zeb_test_ZEBPlatform_Process"));
  setenv("ZEB_TEST_VARIABLE", "a=b", 1);
  EXPECT_EQ(info->environment()["ZEB_TEST_VARIABLE"], Value("a=b"));
  EXPECT_GE(info->processorCount(), info->activeProcessorCount());
  EXPECT_GE(info->activeProcessorCount(), 1u);
  EXPECT_GT(info->physicalMemory(), std::uint64_t{1} << 20);
  EXPECT_GT(info->systemUptime(), 0);
  EXPECT_NE(info->globallyUniqueString(), info->globallyUniqueString());

  utsname system;
  ASSERT_EQ(uname(&system), 0);
  EXPECT_EQ(info->hostName(), NSString(system.nodename));
  const NSOperatingSystemVersion version = info->operatingSystemVersion();
  const NSString start =
      NSString::stringWithFormat("%lld.%lld", version.majorVersion, version.minorVersion);
  EXPECT_TRUE(NSString(system.release).hasPrefix(start)) << start;
  EXPECT_TRUE(info->isOperatingSystemAtLeastVersion(version));
  EXPECT_TRUE(info->isOperatingSystemAtLeastVersion({version.majorVersion - 1, 99, 99}));
  EXPECT_FALSE(
      info->isOperatingSystemAtLeastVersion({version.majorVersion, version.minorVersion + 1, 0}));
  EXPECT_TRUE(info->operatingSystemVersionString().containsString(system.release));

  info->setProcessName("other");
  EXPECT_EQ(info->processName(), "other"_ns);
  info->setProcessName(nullptr);
  EXPECT_EQ(info->processName(), "zeb_test_ZEBPlatform_Process"_ns);
}

}  // namespace
}  // namespace zeb
