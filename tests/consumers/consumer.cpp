// A program of another project, which can use only the installed library, without the component
// Text.
#include <ZEBPlatform/Linux/DynamicLoader.h>
#include <ZEBUtilities/ZEBUtilities.h>

#include <cstdio>
#include <string>

int main() {
  using namespace zeb;
  const NSDictionary dictionary{{"a", 1}};
  if (zeb_intForKey(dictionary, "a") != 1) return 1;
  // Needs outside libraries that only our own libraries refer to.
  const NSData text = NSData::dataWithBytes(std::string(100, 'a'));
  if (zeb_gzipDecompress(zeb_gzipCompress(text, 6)) != text) return 1;
  if (zeb_hexStringValue(zeb_MD5Hash(text)) != "36a92cc94a9e0fa21f625f8bfb007adf") return 1;
  if (zeb_errorString(NSError("état", 7)) != "7 état") return 1;
  // This program does not refer to the class, so the linker could leave it out of a static library.
  if (!objc_lookUpClass("ZEBObservable")) return 1;

  // The shared library knows its own place; a program with the static library has to set it.
  if (ZEBFrameworksDirectory().isNil()) ZEBSetFrameworksDirectory(ZEB_FRAMEWORKS_DIRECTORY);
  NSError error;
  const ZEBLibraryHandle handle =
      ZEBLoadFramework("UIKit", dynamicLoaderLazyLocalMode, {ZEBFrameworksDirectory()}, &error);
  if (handle && ZEBUnloadFramework(handle, &error)) return 0;
  std::puts(error.userInfo().description().utf8().c_str());
  return 1;
}
