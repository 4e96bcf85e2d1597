#include <ZEBPlatform/Linux/detail/Console.h>
#include <ZEBPlatform/Linux/detail/Random.h>

#include <sys/random.h>

#include <cerrno>

namespace zeb {

void fillWithRandomBytes(std::span<std::byte> bytes) noexcept {
  while (!bytes.empty()) {
    const ssize_t got = getrandom(bytes.data(), bytes.size(), 0);
    if (got < 0) {
      if (errno == EINTR) continue;
      fatal("the system has no random source");
    }
    bytes = bytes.subspan(static_cast<std::size_t>(got));
  }
}

}  // namespace zeb
