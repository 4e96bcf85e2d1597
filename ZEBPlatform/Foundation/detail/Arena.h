#pragma once

#include <ZEBPlatform/Foundation/ValueStorage.h>

#include <cstddef>
#include <cstdint>
#include <new>

namespace zeb::detail {

/// Memory of one parsed document: nodes are allocated one after the other and all freed at once.
///
/// Nodes in an arena hold no references to each other. A value outside that refers to a node counts
/// as a reference to the whole arena, so one kept string keeps its document (see
/// `Value::detachedCopy`).
class Arena {
 public:
  /// Starts with one reference, which the builder of the document owns, and room for `bytes`.
  static Arena* create(std::size_t bytes);

  /// Bytes past each allocation that may be overwritten until the next one.
  static constexpr std::size_t slack = 64;

  /// Room for `size` bytes, aligned to 8. Throws std::bad_alloc.
  void* allocate(std::size_t size) {
    size = (size + 7) & ~std::size_t{7};
    if (size > static_cast<std::size_t>(limit_ - cursor_)) return allocateInNewChunk(size);
    void* result = cursor_;
    cursor_ += size;
    return result;
  }

  bool hasRoom(std::size_t size) const noexcept {
    return size + 7 <= static_cast<std::size_t>(limit_ - cursor_);
  }
  /// The minimum size of the next chunk.
  void setNextChunkSize(std::size_t bytes) noexcept { nextChunkSize_ = bytes; }

  /// Returns the unneeded end of the latest allocation, of which `used` bytes stay.
  void shrinkLatest(void* latest, std::size_t used) noexcept {
    cursor_ = static_cast<char*>(latest) + ((used + 7) & ~std::size_t{7});
  }

  /// The value of `countOrOffset` for a node of this arena: its distance to the header of its
  /// chunk, in units of 8 bytes.
  std::uint32_t offsetOf(const void* node) const noexcept {
    return static_cast<std::uint32_t>((static_cast<const char*>(node) - chunk_) / 8);
  }

  static Arena& of(const Storage& storage) noexcept {
    const char* node = reinterpret_cast<const char*>(&storage);
    const std::size_t distance =
        std::size_t{storage.countOrOffset.load(std::memory_order_relaxed)} * 8;
    return *reinterpret_cast<const ChunkHeader*>(node - distance)->arena;
  }

  void retain() noexcept { count_.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept {
    if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1) destroy();
  }

  /// Bytes taken from the heap.
  std::size_t footprint() const noexcept { return footprint_; }

 private:
  struct ChunkHeader {
    Arena* arena;
    char* previous;
  };

  Arena() = default;
  ~Arena() = default;

  void* allocateInNewChunk(std::size_t size);
  void destroy() noexcept;

  std::atomic<std::uint64_t> count_{1};
  char* cursor_ = nullptr;
  char* limit_ = nullptr;
  char* chunk_ = nullptr;
  std::size_t nextChunkSize_ = 0;
  std::size_t footprint_ = 0;
};

}  // namespace zeb::detail
