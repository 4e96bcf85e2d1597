// Reads the control that the input names. The answer is either a value within the limit or a system
// error, and every value that comes from a file lies below /proc/sys: without "/" in the name, the
// file of the same path has to exist there.

#include <ZEBPlatform/Linux/SystemControl.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

using namespace zeb;

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

/// By the rules of paths, unlike the library, which goes from entry to entry.
bool isBelowProcSys(std::string name) {
  for (char& c : name) c = c == '.' ? '/' : c == '/' ? '.' : c;
  std::error_code failure;
  const std::string file = std::filesystem::canonical("/proc/sys/" + name, failure).string();
  return !failure && file == "/proc/sys/" + name;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string name(reinterpret_cast<const char*>(data), size);
  std::string value = "kept";
  const int failure = readSystemControl(name, value);
  require(failure >= 0);
  if (failure) {
    require(value == "kept");
  } else {
    require(value.size() <= 1 << 20);
    require(name.starts_with("kern.") || name.starts_with("hw.") || isBelowProcSys(name));
  }
  std::int32_t number = 7;
  if (readSystemControl(name, number)) require(number == 7);
  return 0;
}
