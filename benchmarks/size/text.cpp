#include <ZEBPlatform/Text.h>

#include <cstdio>

int main() {
  using namespace zeb;
  std::puts(NSLocale::currentLocale()->localeIdentifier().utf8().c_str());
}
