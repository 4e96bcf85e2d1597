// A program of another project: it sees the installed library only.
#include <ZEBUtilities/ZEBUtilities.h>

int main() {
  const zeb::NSDictionary dictionary{{"a", 1}};
  return zeb::zeb_intForKey(dictionary, "a") == 1 ? 0 : 1;
}
