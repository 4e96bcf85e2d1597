#include <ZEBPlatform/Security/SecretBytes.h>

#include <openssl/crypto.h>

#include <algorithm>
#include <utility>

namespace zeb {

SecretBytes::SecretBytes(std::size_t length)
    : memory_(length == 0 ? nullptr : std::make_unique<std::byte[]>(length)), length_(length) {}

SecretBytes::SecretBytes(std::span<const std::byte> bytes) : SecretBytes(bytes.size()) {
  std::copy(bytes.begin(), bytes.end(), memory_.get());
}

SecretBytes::SecretBytes(SecretBytes&& other) noexcept
    : memory_(std::move(other.memory_)), length_(std::exchange(other.length_, 0)) {}

SecretBytes& SecretBytes::operator=(SecretBytes&& other) noexcept {
  if (this != &other) {
    shorten(0);
    memory_ = std::move(other.memory_);
    length_ = std::exchange(other.length_, 0);
  }
  return *this;
}

SecretBytes::~SecretBytes() { shorten(0); }

void SecretBytes::shorten(std::size_t length) noexcept {
  if (length_ > length) OPENSSL_cleanse(memory_.get() + length, length_ - length);
  length_ = length;
}

NSData SecretBytes::dataByAdopting(SecretBytes&& bytes) {
  const std::span<const std::byte> content = bytes.bytes();
  return NSData::dataWithBytesNoCopy(content,
                                     [owner = std::move(bytes)]() mutable { owner.shorten(0); });
}

bool SecretBytes::equal(std::span<const std::byte> first,
                        std::span<const std::byte> second) noexcept {
  return first.size() == second.size() &&
         CRYPTO_memcmp(first.data(), second.data(), first.size()) == 0;
}

}  // namespace zeb
