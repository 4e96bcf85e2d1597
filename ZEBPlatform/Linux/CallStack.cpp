#include <ZEBPlatform/Linux/detail/CallStack.h>
#include <ZEBPlatform/Linux/detail/Demangling.h>
#include <ZEBPlatform/Linux/detail/LoadedImages.h>

#include <execinfo.h>

#include <array>
#include <cstdint>
#include <cstdio>

namespace zeb {

namespace {

std::string textOf(std::size_t position, std::uintptr_t address, const CodeLocation& location) {
  const std::string& path = location.image.path;
  const std::string image = path.empty() ? "???" : path.substr(path.rfind('/') + 1);
  std::array<char, 32> text;
  std::snprintf(text.data(), text.size(), "%-3zu ", position);
  std::string line = text.data() + image;
  if (image.size() < 35) line.append(35 - image.size(), ' ');
  std::snprintf(text.data(), text.size(), " 0x%016zx ", address);
  line += text.data();
  std::uintptr_t start = location.symbolAddress;
  if (location.symbol.starts_with("_Z")) {
    line += demangledName(location.symbol.c_str());
  } else if (!location.symbol.empty()) {
    line += location.symbol;
  } else {
    start = location.image.loadAddress;
    std::snprintf(text.data(), text.size(), "0x%zx", start);
    line += text.data();
  }
  return line + " + " + std::to_string(address - start);
}

}  // namespace

void prepareCallStackCapture() noexcept {
  void* address;
  captureCallStack({&address, 1});
}

std::size_t captureCallStack(std::span<void*> returnAddresses) noexcept {
  return static_cast<std::size_t>(
      backtrace(returnAddresses.data(), static_cast<int>(returnAddresses.size())));
}

std::vector<std::string> callStackTexts(std::span<void* const> returnAddresses) {
  const std::vector<CodeLocation> locations = locationsOfCode(returnAddresses);
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < locations.size(); ++i) {
    texts.push_back(textOf(i, reinterpret_cast<std::uintptr_t>(returnAddresses[i]), locations[i]));
  }
  return texts;
}

}  // namespace zeb
