// A program of another project that uses the component Text.
#include <ZEBPlatform/Text.h>
#include <ZEBUtilities/ZEBUtilities.h>

#include <cstdio>

int main() {
  using namespace zeb;
  if (NSLocale::localeWithLocaleIdentifier("ar-EG")->countryCode() != "EG") return 1;
  // What works without the component is better with it.
  const NSString text = zeb_errorString(NSError("état", 7));
  if (text == "7 État") return 0;
  std::puts(text.utf8().c_str());
  return 1;
}
