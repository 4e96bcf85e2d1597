#pragma once

#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/FunctionView.h>

#include <cstddef>
#include <span>
#include <string_view>

namespace zeb {

class NSMutableData;

/// Immutable bytes, in one range or several: joining data shares the parts instead of copying them.
class NSData : public Value {
 public:
  constexpr NSData() noexcept = default;
  constexpr NSData(std::nullptr_t) noexcept {}
  /// The value when it is data, else nil.
  template <detail::ValueBeside<NSData> Source>
  explicit NSData(const Source& value) noexcept : Value(value.isData() ? value : Value()) {}

  static NSData data() { return dataWithBytes(std::span<const std::byte>()); }
  /// Copies the bytes.
  static NSData dataWithBytes(std::span<const std::byte> bytes);
  static NSData dataWithBytes(std::string_view bytes) {
    return dataWithBytes(std::as_bytes(std::span(bytes)));
  }
  /// Uses foreign bytes where they are; `release` is called once, when the last handle is gone.
  static NSData dataWithBytesNoCopy(std::span<const std::byte> bytes, Block<void()> release);
  /// The parts one after the other, shared. Nil and empty parts count nothing.
  static NSData dataByJoining(std::span<const NSData> parts);
  /// Nil when `text` is nil or not canonical base64 (RFC 4648, section 4, with padding and without
  /// line breaks).
  static NSData dataWithBase64EncodedString(const NSString& text);

  std::size_t length() const noexcept;
  bool isEmpty() const noexcept { return length() == 0; }

  /// All bytes as one range, valid as long as the data lives and is not changed. Data of several
  /// ranges is joined by the first call, which costs a copy, and keeps the joined copy. Any thread.
  std::span<const std::byte> bytes() const;
  /// As `bytes`, for text and parsers.
  std::string_view view() const;

  /// Calls `visit` with each range of bytes and its place in the whole, until it answers false.
  /// Never copies.
  void enumerateByteRanges(
      FunctionView<bool(std::span<const std::byte> bytes, NSRange range)> visit) const;

  /// Throws NSException (NSRangeException) when the range reaches past the end.
  NSData subdataWithRange(NSRange range) const;

  /// RFC 4648, section 4: with padding, without line breaks. Nil on nil.
  NSString base64EncodedString() const;

  NSData copy() const { return NSData(Value::copy()); }
  NSData detachedCopy() const { return NSData(Value::detachedCopy()); }
  NSMutableData mutableCopy() const;

 protected:
  explicit NSData(detail::Storage* adopted) noexcept : Value(adoptStorage, adopted) {}
};

/// Bytes that change in place. Handles share them; belongs to one thread at a time.
class NSMutableData : public NSData {
 public:
  /// No bytes.
  NSMutableData();
  constexpr NSMutableData(std::nullptr_t) noexcept : NSData(nullptr) {}
  /// The shared mutable data itself when the value is one, else nil.
  static NSMutableData from(const Value& value) noexcept;

  /// On a nil data these do nothing.
  void appendBytes(std::span<const std::byte> bytes);
  void appendData(const NSData& other);
  /// New bytes are zero.
  void setLength(std::size_t length);
  std::span<std::byte> mutableBytes() noexcept;
};

}  // namespace zeb
