#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/ValueStorage.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <span>
#include <string_view>

namespace zeb::detail {

/// Bytes that are written one after the other and then become data without being copied.
///
/// `require` makes room, and the `put` functions write into room that was made. A writer of many
/// small pieces thus checks once for several of them.
class DataBuilder {
 public:
  DataBuilder() = default;
  /// Has room for exactly `capacity` bytes, for data whose length is known.
  explicit DataBuilder(std::size_t capacity)
      : memory_(std::malloc(sizeof(DataStorage) + capacity)) {
    if (!memory_) throw std::bad_alloc();
    cursor_ = content();
    limit_ = cursor_ + capacity;
  }
  DataBuilder(const DataBuilder&) = delete;
  DataBuilder& operator=(const DataBuilder&) = delete;
  ~DataBuilder() { std::free(memory_); }

  void require(std::size_t bytes) {
    if (static_cast<std::size_t>(limit_ - cursor_) < bytes) grow(bytes);
  }
  void put(char character) noexcept { *cursor_++ = character; }
  void put(std::string_view text) noexcept {
    std::memcpy(cursor_, text.data(), text.size());
    cursor_ += text.size();
  }
  char* cursor() const noexcept { return cursor_; }
  void setCursor(char* cursor) noexcept { cursor_ = cursor; }

  /// The room that is left, to be filled by a reader; `setCursor` then keeps a part of it.
  std::span<std::byte> room() const noexcept {
    return {reinterpret_cast<std::byte*>(cursor_), reinterpret_cast<std::byte*>(limit_)};
  }

  /// Bytes written so far.
  std::size_t size() const noexcept {
    return memory_ ? static_cast<std::size_t>(cursor_ - content()) : 0;
  }
  /// The bytes written so far, until the next change.
  std::string_view written() const noexcept { return {memory_ ? content() : "", size()}; }
  /// The last byte; something must have been written.
  char last() const noexcept { return cursor_[-1]; }
  /// Removes everything from `start` on.
  void truncate(std::size_t start) noexcept {
    if (memory_) cursor_ = content() + start;
  }

  /// The data; the builder is empty again.
  NSData finish() {
    require(0);
    if (!memory_) return NSData::data();
    const std::size_t length = size();
    // Not worth a call of the allocator below this size.
    constexpr std::size_t minReturned = std::size_t{128} << 10;
    const auto unused = static_cast<std::size_t>(limit_ - cursor_);
    if (unused > (std::min)(length / 4, minReturned)) {
      if (void* fitting = std::realloc(memory_, sizeof(DataStorage) + length)) memory_ = fitting;
    }
    auto* data = new (memory_) DataStorage(0, length);
    data->bytes = reinterpret_cast<const std::byte*>(data + 1);
    memory_ = nullptr;
    cursor_ = limit_ = nullptr;
    NSData result;
    // Moved in, because converting the value would count a reference up and down again.
    static_cast<Value&>(result) = Value(Value::adoptStorage, data);
    return result;
  }

 private:
  char* content() const noexcept { return static_cast<char*>(memory_) + sizeof(DataStorage); }

  void grow(std::size_t bytes) {
    const std::size_t used = size();
    const std::size_t capacity = (std::max)({used + bytes, used * 2, std::size_t{512}});
    void* memory = std::realloc(memory_, sizeof(DataStorage) + capacity);
    if (!memory) throw std::bad_alloc();
    memory_ = memory;
    cursor_ = content() + used;
    limit_ = content() + capacity;
  }

  void* memory_ = nullptr;  ///< room for the data's header, then the bytes
  char* cursor_ = nullptr;
  char* limit_ = nullptr;
};

}  // namespace zeb::detail
