#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/ProtocolRef.h>

#include <cstddef>
#include <ranges>
#include <vector>

namespace zeb {

class ZEBCircularFIFOBuffer;

/// A protocol (see `ProtocolRef`) that receives the objects that a full buffer drops.
class ZEBCircularFIFOBufferDelegate {
 public:
  /// Optional. Called on the thread that adds, after the new object has taken its place.
  virtual void circularFIFOBuffer(ZEBCircularFIFOBuffer& buffer, const Value& purgedObject) {
    (void)buffer;
    (void)purgedObject;
  }

 protected:
  ~ZEBCircularFIFOBufferDelegate() = default;
};

/// First-in-first-out buffer of at most `size` objects that drops its oldest one to make room. Made
/// with `initWithSize`. One thread at a time.
///
/// Mind that `size()` is the capacity and `count()` the number of objects. Enumerates from oldest
/// to newest. Changing the buffer meanwhile makes the enumeration throw NSException
/// (NSGenericException) at its next step.
class ZEBCircularFIFOBuffer : public NSObject {
 public:
  ZEBCircularFIFOBuffer() = delete;
  /// An empty buffer; nil for size 0.
  static Ref<ZEBCircularFIFOBuffer> initWithSize(std::size_t size);

  /// "ZEBCircularFIFOBuffer", with every member except the enumeration under its selector. There,
  /// the initialiser is a class method and a delegate is an object that implements the protocol.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  std::size_t size() const noexcept { return size_; }
  /// A larger size keeps all objects. A smaller one keeps the newest that fit; the delegate
  /// receives each of the others, oldest first, after the buffer has its new size. 0 throws
  /// NSException (NSInvalidArgumentException) and changes nothing.
  void setSize(std::size_t size);
  std::size_t count() const noexcept { return count_; }
  [[nodiscard]] bool empty() const noexcept { return count_ == 0; }

  /// Held weakly.
  ProtocolRef<ZEBCircularFIFOBufferDelegate> delegate() const noexcept { return delegate_.lock(); }
  void setDelegate(const ProtocolRef<ZEBCircularFIFOBufferDelegate>& delegate) {
    delegate_ = delegate;
  }

  /// Nil throws NSException (NSInvalidArgumentException, "nil object is not allowed").
  void addObject(Value object);
  /// Takes the oldest object out, nil when empty. Does not call the delegate.
  Value removeObject();
  /// The oldest object, nil when empty.
  Value peekObject() const;
  /// From oldest to newest.
  NSArray allObjects() const;
  void removeAllObjects();

  class Iterator {
   public:
    using value_type = Value;
    using difference_type = std::ptrdiff_t;

    Iterator() noexcept = default;
    Iterator(const ZEBCircularFIFOBuffer* buffer, std::size_t position) noexcept
        : buffer_(buffer), position_(position), mutations_(buffer->mutatingInteger_) {}
    const Value& operator*() const {
      requireUnchanged();
      return buffer_->slot(position_);
    }
    Iterator& operator++() {
      requireUnchanged();
      ++position_;
      return *this;
    }
    Iterator operator++(int) {
      Iterator before = *this;
      ++*this;
      return before;
    }
    bool operator==(const Iterator& other) const noexcept { return position_ == other.position_; }

   private:
    void requireUnchanged() const;

    const ZEBCircularFIFOBuffer* buffer_ = nullptr;
    std::size_t position_ = 0;
    std::size_t mutations_ = 0;
  };

  Iterator begin() const noexcept { return Iterator(this, 0); }
  Iterator end() const noexcept { return Iterator(this, count_); }

 private:
  explicit ZEBCircularFIFOBuffer(std::size_t size) noexcept : size_(size) {}

  std::size_t slotIndex(std::size_t position) const noexcept { return (start_ + position) % size_; }
  const Value& slot(std::size_t position) const noexcept { return buffer_[slotIndex(position)]; }
  void tellDelegate(const Value& purged);

  std::size_t size_;
  std::size_t count_ = 0;
  WeakProtocolRef<ZEBCircularFIFOBufferDelegate> delegate_;
  std::vector<Value> buffer_;  ///< grows up to `size_` slots; free ones hold the null marker
  std::size_t start_ = 0;      ///< slot of the oldest object
  std::size_t mutatingInteger_ = 0;
};

}  // namespace zeb

/// Ranges take `size()` for the number of elements, but it is the capacity of a buffer.
template <>
inline constexpr bool std::ranges::disable_sized_range<zeb::ZEBCircularFIFOBuffer> = true;
