#include <ZEBPlatform/Security/SecRandom.h>
#include <openssl/rand.h>

#include <algorithm>
#include <climits>

namespace zeb {

int SecRandomCopyBytes(SecRandomSource, std::span<std::byte> bytes) noexcept {
  // The library fills at most INT_MAX bytes at a time.
  while (!bytes.empty()) {
    const std::size_t length = std::min(bytes.size(), std::size_t{INT_MAX});
    auto* const octets = reinterpret_cast<unsigned char*>(bytes.data());
    if (RAND_priv_bytes(octets, static_cast<int>(length)) != 1) return -1;
    bytes = bytes.subspan(length);
  }
  return 0;
}

}  // namespace zeb
