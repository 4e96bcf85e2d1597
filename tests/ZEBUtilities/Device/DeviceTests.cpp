#include <ZEBPlatform/Linux/detail/ProcessFacts.h>
#include <ZEBPlatform/Logging/OLGLogging.h>
#include <ZEBUtilities/Device.h>
#include <ZEBUtilities/Device/detail/PlatformYearClass.h>

#include <sys/resource.h>

#include <cerrno>
#include <fstream>

#include "Support/Support.h"

namespace zeb::test {

TEST(ZEBDevicePlatform, ClassifiesAnyModel) {
  const struct {
    NSString model;
    ZEBPlatform platform;
    std::uint32_t version;
    std::int64_t year;
  } cases[] = {{"iPhone1,1", ZEBPlatformPhone, 0x01010000, 2007},
               {"iPhone1,2", ZEBPlatformPhone, 0x01020000, 2008},
               {"iPhone10,3", ZEBPlatformPhone, 0x0A030000, 2017},
               {"iPhone300,1", ZEBPlatformPhone, 0xFF010000, 2262},
               {"iPhone99999999999999999999,-4", ZEBPlatformPhone, 0xFF000000, 2262},
               {"iPod5,1", ZEBPlatformPod, 0x05010000, 2011},
               {"iPod7,1", ZEBPlatformPod, 0x07010000, 2014},
               {"iPad1,1", ZEBPlatformPad, 0x01010000, 2010},
               {"iphone3,1", ZEBPlatformUnknown, 0x03010000, 2007},
               {"AppleTV5,3", ZEBPlatformUnknown, 0x05030000, 2007},
               {"x86_64", ZEBPlatformUnknown, 0x56000000, 2007},
               {"A\u0663,7,8", ZEBPlatformUnknown, 0x07080000, 2007},
               {nullptr, ZEBPlatformUnknown, 0, 2007}};
  for (const auto& [model, platform, version, year] : cases) {
    EXPECT_EQ(ZEBPlatformFromPlatformString(model), platform) << model;
    EXPECT_EQ(ZEBPlatformVersionFromString(model), version) << model;
    EXPECT_EQ(detail::platformYearClass(platform, version), year) << model;
  }
}

TEST(ZEBDevicePlatform, WarnsOnceAboutAnUnknownMachine) {
  rlimit limit;
  getrlimit(RLIMIT_NOFILE, &limit);
  const rlimit none{0, limit.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none);  // the model cannot be read without a descriptor
  EXPECT_TRUE(ZEBPlatformString().isNil() && ZEBPlatformYearClass() == 2007);
  setrlimit(RLIMIT_NOFILE, &limit);
  std::string log, model;
  EXPECT_EQ(readMachineModel(model), 0);
  EXPECT_EQ(ZEBPlatformString(), NSString(model));
  const auto ask = [] {
    EXPECT_TRUE(ZEBCurrentPlatform() == ZEBPlatformUnknown && ZEBPlatformYearClass() == 2007);
  };
  OLGSetHandler([&](const OLGRecord& line) {
    log += formattedText("%d|%s|%s|%s|%d|%s\n", {line.level, line.channel, line.file, line.function,
                                                 line.line, line.message});
    ask();  // a handler may ask for the platform, too
  });
  ask();
  ask();
  OLGSetHandler(nullptr);
  EXPECT_EQ(ZEBPlatformVersion(), ZEBPlatformVersionFromString(model));
  EXPECT_EQ(log,
            "4|ZEBUtilities|ZEBUtilities/ZEBUtilities/ZEBPlatform|"
            "ZEBPlatform ZEBCurrentPlatform()_block_invoke|47|Unknown platform found: " +
                model + "\n");
}

TEST(ZEBSystemControl, FailuresGiveTheSystemsNumber) {
  const NSString unpaired(std::u16string_view(u"kernel.\xD800"));
  const struct {
    int type, subtype;
    NSString name;
    std::int64_t textCode, numberCode;
  } cases[] = {{0, 7, "hw.pagesize", 0, 0},          {6, 7, "nothing", 0, 0},
               {1, 1, nullptr, 0, EINVAL},           {6, 999, nullptr, ENOENT, ENOENT},
               {0, 0, "hw.nothing", ENOENT, ENOENT}, {0, 0, nullptr, ENOENT, ENOENT},
               {0, 0, unpaired, ENOENT, ENOENT},     {0, 0, "kernel", EISDIR, EISDIR}};
  for (const auto& [type, subtype, name, textCode, numberCode] : cases) {
    NSError error;
    const NSString text = ZEBSystemControlRetrieveString(type, subtype, name, &error);
    EXPECT_TRUE(text.isNil() == error.domain().isEqualToString(NSPOSIXErrorDomain) &&
                error.code() == textCode)
        << type << name << error;
    error = nullptr;
    const std::int32_t number =
        type ? ZEBSystemControlRetrieveIntByControlType(type, subtype, &error)
             : ZEBSystemControlRetrieveIntByName(name, &error);
    EXPECT_EQ(error.code(), numberCode) << type << name << error;
    EXPECT_EQ(number, numberCode ? 0 : text.integerValue());
  }
  std::string ports;  // mostly a line without text, which is a value nevertheless
  std::getline(std::ifstream("/proc/sys/net/ipv4/ip_local_reserved_ports"), ports);
  const NSString text = ZEBSystemControlRetrieveStringByName("net.ipv4.ip_local_reserved_ports");
  EXPECT_TRUE(!text.isNil() && text == ports) << text;
}

TEST(NSProcessInfoAdditions, FillsTheFiguresThatAreGiven) {
  const auto& info = NSProcessInfo::processInfo();
  std::uint64_t total = 1, resident = 2, most = 3;
  zeb_getVirtualMemory(nullptr, &total, &resident, &most);
  EXPECT_TRUE(total == 1 && resident == 2 && most == 3);
  zeb_getVirtualMemory(info, nullptr, &resident, nullptr);
  EXPECT_TRUE(resident > 100'000 && total == 1 && most == 3) << resident;
  EXPECT_TRUE(zeb_virtualMemory(info) >= zeb_residentMemory(info) &&
              zeb_freePhysicalMemory(info) > 0);
  EXPECT_EQ(zeb_buildNumberString(info), NSString(kernelBuild()));
}

}  // namespace zeb::test
