#include <ZEBPlatform/Linux/detail/CallStack.h>
#include <ZEBPlatform/Linux/detail/Demangling.h>
#include <ZEBPlatform/Linux/detail/LoadedImages.h>

#include <execinfo.h>

#include <array>
#include <charconv>
#include <cstdint>
#include <string_view>

namespace zeb {

namespace {

void appendPadded(std::string& line, std::string_view text, std::size_t width) {
  line += text;
  if (text.size() < width) line.append(width - text.size(), ' ');
}

/// With "0x" and at least `digits` digits. Much faster than `snprintf`.
void appendAddress(std::string& line, std::uintptr_t address, std::size_t digits) {
  std::array<char, 2 * sizeof address> text;
  const char* const end = std::to_chars(text.begin(), text.end(), address, 16).ptr;
  const auto length = static_cast<std::size_t>(end - text.data());
  line += "0x";
  if (length < digits) line.append(digits - length, '0');
  line.append(text.data(), length);
}

std::string textOf(std::size_t position, std::uintptr_t address, const CodeLocation& location) {
  const std::string_view path = location.image.path;
  std::string line;
  line.reserve(128);
  appendPadded(line, std::to_string(position), 3);
  line += ' ';
  appendPadded(line, path.empty() ? "???" : path.substr(path.rfind('/') + 1), 35);
  line += ' ';
  appendAddress(line, address, 2 * sizeof address);
  line += ' ';
  std::uintptr_t start = location.symbolAddress;
  if (location.symbol.starts_with("_Z")) {
    line += demangledName(location.symbol.c_str());
  } else if (!location.symbol.empty()) {
    line += location.symbol;
  } else {
    start = location.image.loadAddress;
    appendAddress(line, start, 1);
  }
  line += " + ";
  line += std::to_string(address - start);
  return line;
}

}  // namespace

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
