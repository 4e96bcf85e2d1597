#include <ZEBPlatform/Foundation.h>
#include <ZEBUtilities/Collections.h>

#include <cstdio>

int main() {
  using namespace zeb;
  const NSDictionary user{{"name", "Noor"}, {"age", "31"}};
  std::printf("%d\n", zeb_intForKey(user, "age"));
}
