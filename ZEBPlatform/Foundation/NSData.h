#pragma once

#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/FunctionView.h>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <ranges>
#include <span>
#include <string_view>
#include <type_traits>

namespace zeb {

class NSError;
class NSMutableData;

/// How a file is read; bits to combine.
enum NSDataReadingOptions : std::uint64_t {
  /// Maps the file into memory instead of copying it, so that only the used parts are read. If
  /// another process shortens the file while the data lives, reading the missing bytes ends the
  /// process (SIGBUS): map only files that are replaced and never shortened.
  NSDataReadingMappedIfSafe = 1,
};

/// How a file is written; bits to combine.
enum NSDataWritingOptions : std::uint64_t {
  /// At every moment, also if the process is killed or the disk is full, the file has either the
  /// old or the new content, and after success the new content is on the disk. The bytes go to a
  /// temporary file in the same folder, which then takes the file's place with the permissions of
  /// the old one (without set-uid, set-gid and sticky bits) and, as far as the process may, its
  /// owner and group. Hard links to the old file keep the old content. A link at the path is
  /// followed and must lead to a file. A killed process may leave the temporary file (".zeb-…")
  /// behind.
  NSDataWritingAtomic = 1,
  /// A file that exists is an error (EEXIST).
  NSDataWritingWithoutOverwriting = 2,
};

namespace detail {

/// Contiguous elements of one byte that are neither `std::byte` nor a text.
template <class Range>
concept ByteRange =
    std::ranges::contiguous_range<const Range&> && std::ranges::sized_range<const Range&> &&
    sizeof(std::ranges::range_value_t<Range>) == 1 &&
    std::is_trivially_copyable_v<std::ranges::range_value_t<Range>> &&
    !std::convertible_to<const Range&, std::span<const std::byte>> &&
    !std::convertible_to<const Range&, std::string_view>;

}  // namespace detail

/// Immutable bytes, in one range or several: joining data shares the parts instead of copying them.
class NSData : public Value {
 public:
  constexpr NSData() noexcept = default;
  constexpr NSData(std::nullptr_t) noexcept {}
  /// The value when it is data, else nil.
  template <detail::ValueBeside<NSData> Source>
  explicit NSData(const Source& value) noexcept : Value(value.isData() ? value : Value()) {}

  static NSData data() { return dataWithBytes(std::span<const std::byte>()); }
  /// Copies the bytes. The terminating zero of a text literal is not part of them.
  static NSData dataWithBytes(std::span<const std::byte> bytes);
  static NSData dataWithBytes(std::string_view bytes) {
    return dataWithBytes(std::as_bytes(std::span(bytes)));
  }
  /// Copies any other contiguous bytes, such as a `std::vector<unsigned char>`.
  template <detail::ByteRange Bytes>
  static NSData dataWithBytes(const Bytes& bytes) {
    return dataWithBytes(std::as_bytes(std::span(bytes)));
  }
  /// Refers to foreign bytes in place; `release` is called once, after the last handle is gone.
  static NSData dataWithBytesNoCopy(std::span<const std::byte> bytes, Block<void()> release);
  /// The parts one after the other, shared. Nil and empty parts add nothing.
  static NSData dataByJoining(std::span<const NSData> parts);
  /// Nil when `text` is nil or not canonical base64 (RFC 4648, section 4, with padding and without
  /// line breaks).
  static NSData dataWithBase64EncodedString(const NSString& text);

  /// The content of a regular file. Paths are texts, so files whose names are not UTF-8 cannot be
  /// named. If reading fails, nil and an error of NSPOSIXErrorDomain with the system's code and
  /// the path under NSFilePathErrorKey. A file of more than `maxLength` bytes is an error (EFBIG),
  /// as is one for which there is no memory (ENOMEM).
  static NSData dataWithContentsOfFile(const NSString& path, std::uint64_t options = 0,
                                       NSError* error = nullptr) {
    return dataWithContentsOfFile(path, options, SIZE_MAX, error);
  }
  static NSData dataWithContentsOfFile(const NSString& path, std::uint64_t options,
                                       std::size_t maxLength, NSError* error = nullptr);
  /// Writes the bytes, range by range, to a file, which is made for its owner alone (mode 0600) if
  /// it does not exist. If that fails, false and an error as above; without NSDataWritingAtomic the
  /// file may then contain a part. False on nil data.
  bool writeToFile(const NSString& path, std::uint64_t options, NSError* error = nullptr) const;

  std::size_t length() const noexcept;
  std::size_t size() const noexcept { return length(); }
  bool isEmpty() const noexcept { return length() == 0; }
  /// True of nil data, too.
  [[nodiscard]] bool empty() const noexcept { return isEmpty(); }

  /// All bytes as one range, valid as long as the data lives and is not changed. For data of
  /// several ranges the first call joins them, which costs a copy, and keeps the joined copy. Any
  /// thread.
  std::span<const std::byte> bytes() const;
  /// As `bytes`, for text and parsers.
  std::string_view view() const;

  /// Calls `visit` with each range of bytes and its place in the whole until it answers false.
  /// Never copies.
  void enumerateByteRanges(
      FunctionView<bool(std::span<const std::byte> bytes, NSRange range)> visit) const;

  /// Throws NSException (NSRangeException) when the range reaches past the end.
  [[nodiscard]] NSData subdataWithRange(NSRange range) const;

  /// RFC 4648, section 4: with padding, without line breaks. Nil on nil.
  NSString base64EncodedString() const;

  [[nodiscard]] NSData copy() const { return NSData(Value::copy()); }
  [[nodiscard]] NSData detachedCopy() const { return NSData(Value::detachedCopy()); }
  [[nodiscard]] NSMutableData mutableCopy() const;

 protected:
  explicit NSData(detail::Storage* adopted) noexcept : Value(adoptStorage, adopted) {}
};

/// Bytes that change in place. Handles share them; they belong to one thread at a time.
class NSMutableData : public NSData {
 public:
  /// No bytes.
  NSMutableData();
  constexpr NSMutableData(std::nullptr_t) noexcept : NSData(nullptr) {}
  /// The shared mutable data itself when the value is one, else nil.
  static NSMutableData from(const Value& value) noexcept;

  /// On a nil data these do nothing.
  void appendBytes(std::span<const std::byte> bytes);
  void appendBytes(std::string_view bytes) { appendBytes(std::as_bytes(std::span(bytes))); }
  template <detail::ByteRange Bytes>
  void appendBytes(const Bytes& bytes) {
    appendBytes(std::as_bytes(std::span(bytes)));
  }
  void appendData(const NSData& other);
  /// New bytes are zero.
  void setLength(std::size_t length);
  std::span<std::byte> mutableBytes() noexcept;
};

}  // namespace zeb
