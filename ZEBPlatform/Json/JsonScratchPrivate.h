#pragma once

#include <ZEBPlatform/Json/JsonStructurePrivate.h>
#include <ZEBPlatform/Json/KeyTablePrivate.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace zeb::detail {

/// A value under construction: its two words, whose references into the arena are not counted.
struct Words {
  std::uint64_t head;
  std::uint64_t payload;
};

/// Holds the values whose collection is not closed yet. Keeps its memory for the next document.
class WordStack {
 public:
  /// Where the stack begins. Has room for `words` and one block more, because values are copied in
  /// blocks.
  Words* reserve(std::size_t words);

  std::size_t reservedBytes() const noexcept { return capacity_ * sizeof(Words); }
  /// Bytes that may have been written and so occupy memory.
  std::size_t usedBytes() const noexcept { return used_ * sizeof(Words); }
  /// Returns the memory after the first `bytes` to the system.
  void discardAfter(std::size_t bytes) noexcept;

  static constexpr std::size_t wordsAtOnce = 4;

 private:
  struct Free {
    void operator()(Words* words) const noexcept;
  };
  std::unique_ptr<Words, Free> memory_;
  std::size_t capacity_ = 0;
  std::size_t used_ = 0;
};

/// A reader's working memory.
class JsonScratch {
 public:
  JsonScratch() = default;
  JsonScratch(const JsonScratch&) = delete;
  JsonScratch& operator=(const JsonScratch&) = delete;
  ~JsonScratch();

  JsonStructure structure;
  WordStack stack;
  KeyTable keys;

 private:
  friend class JsonScratchLease;

  /// Whether it may be kept for the next document. Releases what must not be kept.
  bool prepareToBeKept() noexcept;
  void discardMostMemory() noexcept;

  std::size_t sharedBytes_ = 0;  ///< its part of the memory budget that threads share
};

/// Lends the calling thread its working memory while it reads one document.
///
/// A thread keeps `maxKeptBytesPerThread` for its next document. What a larger document needed
/// beyond that is kept as well, so that reading such documents repeatedly costs no page faults, as
/// long as all threads together keep at most `maxSharedKeptBytes` in this way. The rest is returned
/// to the system.
class JsonScratchLease {
 public:
  static constexpr std::size_t maxKeptBytesPerThread = std::size_t{1} << 20;
  static constexpr std::size_t maxSharedKeptBytes = std::size_t{32} << 20;

  JsonScratchLease();
  JsonScratchLease(const JsonScratchLease&) = delete;
  JsonScratchLease& operator=(const JsonScratchLease&) = delete;
  ~JsonScratchLease();

  JsonScratch& operator*() const noexcept { return *scratch_; }

 private:
  std::unique_ptr<JsonScratch> scratch_;
};

}  // namespace zeb::detail
