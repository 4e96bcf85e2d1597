#pragma once

#include <ZEBPlatform/Foundation/NSData.h>

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>

namespace zeb {

/// Bytes that nobody else may see: passwords, keys. The memory is overwritten before it is freed,
/// and a value never grows in place, so that no copy stays behind. Can be moved, not copied by
/// accident. One thread at a time.
class SecretBytes {
 public:
  SecretBytes() noexcept = default;
  /// `length` zero bytes.
  explicit SecretBytes(std::size_t length);
  /// A copy of the bytes.
  explicit SecretBytes(std::span<const std::byte> bytes);
  explicit SecretBytes(std::string_view text) : SecretBytes(std::as_bytes(std::span(text))) {}
  SecretBytes(SecretBytes&& other) noexcept;
  SecretBytes& operator=(SecretBytes&& other) noexcept;
  ~SecretBytes();

  [[nodiscard]] SecretBytes copy() const { return SecretBytes(bytes()); }

  std::span<const std::byte> bytes() const noexcept { return {memory_.get(), length_}; }
  std::span<std::byte> mutableBytes() noexcept { return {memory_.get(), length_}; }
  std::size_t size() const noexcept { return length_; }
  [[nodiscard]] bool empty() const noexcept { return length_ == 0; }
  /// Drops the bytes behind `length`, which is not larger than the size, and overwrites them.
  void shorten(std::size_t length) noexcept;

  /// Data that owns the bytes and overwrites them when its last handle is gone. Copies that others
  /// make of the data are not overwritten.
  static NSData dataByAdopting(SecretBytes&& bytes);

  /// Takes the same time wherever the bytes differ. Lengths are not secret.
  static bool equal(std::span<const std::byte> first, std::span<const std::byte> second) noexcept;

 private:
  std::unique_ptr<std::byte[]> memory_;
  std::size_t length_ = 0;
};

}  // namespace zeb
