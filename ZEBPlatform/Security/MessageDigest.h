#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace zeb {

/// A digest algorithm. MD2, MD4, MD5 and SHA-1 are broken: they identify data, but do not protect
/// it against forgery.
enum class DigestAlgorithm : std::uint8_t {
  md2,     ///< RFC 1319, 16 bytes
  md4,     ///< RFC 1320, 16 bytes
  md5,     ///< RFC 1321, 16 bytes
  sha1,    ///< FIPS 180-4, 20 bytes
  sha256,  ///< FIPS 180-4, 32 bytes
  sha512,  ///< FIPS 180-4, 64 bytes
};

/// The length of the algorithm's digest in bytes.
std::size_t digestLength(DigestAlgorithm algorithm) noexcept;

namespace detail {
struct DigestSource;
}

/// Computes the digest of one message that arrives in pieces:
///
///     MessageDigest digest(DigestAlgorithm::sha256, head.size() + tail.size());
///     digest.update(head);
///     digest.update(tail);
///     digest.finish(result);
///
/// An object belongs to one thread at a time; different objects are independent. Not for keyed
/// digests: a digest of a secret followed by a message can be extended by others.
///
/// Two outside libraries compute the same digests. One has no set-up cost and is chosen for short
/// messages and for MD2 and MD4; the other is faster per byte and is chosen for long ones.
class MessageDigest {
 public:
  /// `expectedLength` is the message's length in bytes. It decides only which library computes the
  /// digest, so that an estimate gives the right digest, too.
  MessageDigest(DigestAlgorithm algorithm, std::size_t expectedLength) noexcept;
  MessageDigest(const MessageDigest&) = delete;
  MessageDigest& operator=(const MessageDigest&) = delete;
  ~MessageDigest();

  /// The message's next bytes.
  void update(std::span<const std::byte> bytes) noexcept;
  /// Writes the digest, or as many of its first bytes as `digest` has, which is not longer than
  /// `digestLength`. The object can't be used any more.
  void finish(std::span<std::byte> digest) noexcept;

 private:
  static constexpr std::size_t stateBytes = 256;

  const detail::DigestSource& source_;
  void* context_ = nullptr;  ///< of the library for long messages; null if the other one computes
  alignas(16) std::byte state_[stateBytes];  ///< of the library for short messages
};

}  // namespace zeb
