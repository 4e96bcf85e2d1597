#include <ZEBPlatform/Linux/detail/CallStack.h>
#include <ZEBPlatform/Linux/detail/Demangling.h>
#include <ZEBPlatform/Linux/detail/LoadedImages.h>

#include <execinfo.h>
#include <link.h>
#include <ucontext.h>
#include <unwind.h>

#include <array>
#include <atomic>
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

struct CodeRange {
  std::uintptr_t begin = 0;
  std::uintptr_t end = 0;

  bool contains(std::uintptr_t address) const noexcept { return address >= begin && address < end; }
};

/// The code of the image that contains the address; empty if none does.
CodeRange codeAround(std::uintptr_t address) noexcept {
  struct Search {
    const std::uintptr_t address;
    CodeRange found{};
  } search{address};
  const auto visit = [](dl_phdr_info* image, std::size_t, void* data) {
    auto& wanted = *static_cast<Search*>(data);
    for (std::size_t i = 0; i < image->dlpi_phnum; ++i) {
      const auto& segment = image->dlpi_phdr[i];
      if (segment.p_type != PT_LOAD || !(segment.p_flags & PF_X)) continue;
      const std::uintptr_t begin = image->dlpi_addr + segment.p_vaddr;
      const CodeRange code{begin, begin + segment.p_memsz};
      if (!code.contains(wanted.address)) continue;
      wanted.found = code;
      return 1;
    }
    return 0;
  };
  dl_iterate_phdr(visit, &search);
  return search.found;
}

/// The code of the unwinder's shared library.
std::atomic<std::uintptr_t> unwinderBegin{0};
std::atomic<std::uintptr_t> unwinderEnd{0};

/// `caller` is where the interrupted function returns to if it has no frame, as functions that copy
/// a few bytes of memory have none.
struct InterruptedPlace {
  std::uintptr_t instruction;
  std::uintptr_t caller;
};

/// Reads another function's stack, which sanitizers would report.
__attribute__((no_sanitize("address", "thread"))) InterruptedPlace
interruptedPlace(const void* context) noexcept {
  const auto& machine = static_cast<const ucontext_t*>(context)->uc_mcontext;
#if defined(__x86_64__)
  const auto* const stack = reinterpret_cast<const std::uintptr_t*>(machine.gregs[REG_RSP]);
  return {static_cast<std::uintptr_t>(machine.gregs[REG_RIP]), *stack};
#elif defined(__aarch64__)
  return {machine.pc, machine.regs[30]};
#else
#error "Name here the registers that hold the interrupted instruction and the return address."
#endif
}

}  // namespace

std::size_t captureCallStack(std::span<void*> returnAddresses) noexcept {
  return static_cast<std::size_t>(
      backtrace(returnAddresses.data(), static_cast<int>(returnAddresses.size())));
}

void prepareInterruptedCapture() noexcept {
  // Sanitizers have functions of their own in the place of those that raise exceptions.
  const CodeRange unwinder = codeAround(reinterpret_cast<std::uintptr_t>(&_Unwind_GetIP));
  if (unwinder.contains(reinterpret_cast<std::uintptr_t>(&captureCallStack))) return;
  unwinderBegin.store(unwinder.begin, std::memory_order_relaxed);
  unwinderEnd.store(unwinder.end, std::memory_order_relaxed);
}

std::size_t captureInterruptedCallStack(std::span<void*> addresses, const void* context) noexcept {
  const InterruptedPlace place = interruptedPlace(context);
  const CodeRange unwinder{unwinderBegin.load(std::memory_order_relaxed),
                           unwinderEnd.load(std::memory_order_relaxed)};
  if (!unwinder.contains(place.instruction) && !unwinder.contains(place.caller)) {
    return captureCallStack(addresses);
  }
  addresses[0] = reinterpret_cast<void*>(place.instruction);
  return 1;
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
