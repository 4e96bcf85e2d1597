// A program of another project: it sees the installed library only.
#include <ZEBPlatform/Linux/DynamicLoader.h>
#include <ZEBUtilities/ZEBUtilities.h>

#include <cstdio>

int main() {
  using namespace zeb;
  const NSDictionary dictionary{{"a", 1}};
  if (zeb_intForKey(dictionary, "a") != 1) return 1;
  // Nothing here refers to the class, which static libraries could therefore leave out.
  if (!objc_lookUpClass("ZEBObservable")) return 1;

  // The shared library knows its own place; a program that holds the static one has to tell it.
  if (ZEBFrameworksDirectory().isNil()) ZEBSetFrameworksDirectory(ZEB_FRAMEWORKS_DIRECTORY);
  NSError error;
  const ZEBLibraryHandle handle =
      ZEBLoadFramework("UIKit", dynamicLoaderLazyLocalMode, {ZEBFrameworksDirectory()}, &error);
  if (handle && ZEBUnloadFramework(handle, &error)) return 0;
  std::puts(error.userInfo().description().utf8().c_str());
  return 1;
}
