#include <ZEBPlatform/RunLoop/NSThread.h>
#include <ZEBUtilities/Diagnostics.h>
#include <dlfcn.h>
#include <gnu/libc-version.h>

#include "Support/Support.h"

namespace zeb::test {

TEST(ZEBSymbolication, TheImagesOfAStackHaveTheirLoadAddresses) {
  const NSString program = "zeb_test_ZEBUtilities_Diagnostics";
  const NSDictionary all = ZEBSymbolication::_loadAddressMap();
  Dl_info facts;
  ASSERT_TRUE(dladdr(reinterpret_cast<void*>(&gnu_get_libc_version), &facts));
  const NSString libcAddress = NSString::stringWithFormat("%p", facts.dli_fbase);
  EXPECT_EQ(all["libc.so.6"], Value(libcAddress));

  const NSDictionary used = ZEBSymbolication::loadAddressMapForStack(NSThread::callStackSymbols());
  EXPECT_EQ(used, (NSDictionary{{"libc.so.6", libcAddress}, {program, all[program]}}));

  const struct {
    Value line;
    bool isFound;
  } cases[] = {{"0   libc.so.6   0x1 puts + 1", true},
               {"7\u2003\tlibc.so.6", true},
               {" libc.so.6", true},
               {"libc.so.6", false},
               {"0 1 libc.so.6", false},
               {"/lib/libc.so.6(puts+0x1) [0x1]", false},
               {12, false},
               {"", false}};
  for (const auto& [line, isFound] : cases) {
    const NSDictionary map = ZEBSymbolication::loadAddressMapForStack(NSArray{line});
    EXPECT_TRUE(map.count() == isFound && (!isFound || map["libc.so.6"] == libcAddress)) << line;
  }
}

}  // namespace zeb::test
