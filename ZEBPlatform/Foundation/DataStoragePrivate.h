#pragma once

#include <ZEBPlatform/Foundation/NSData.h>

#include <mutex>
#include <vector>

namespace zeb::detail {

/// Data whose bytes do not follow its header.
struct IndirectDataStorage : DataStorage {
  IndirectDataStorage(std::uint8_t storageFlags, std::size_t size) noexcept
      : DataStorage(static_cast<std::uint8_t>(storageFlags | StorageIndirect), size) {}
  virtual ~IndirectDataStorage() = default;
};

/// Bytes that the caller owns until `release` is called.
struct ForeignDataStorage final : IndirectDataStorage {
  ForeignDataStorage(std::span<const std::byte> foreign, Block<void()> releaseFunction)
      : IndirectDataStorage(0, foreign.size()), release(std::move(releaseFunction)) {
    bytes = foreign.data();
  }
  ~ForeignDataStorage() override {
    if (release) release();
  }
  Block<void()> release;
};

/// Several data one after the other; `bytes` is filled when one contiguous range is first asked
/// for.
struct JoinedDataStorage final : IndirectDataStorage {
  JoinedDataStorage(std::vector<NSData> pieces, std::size_t size)
      : IndirectDataStorage(0, size), parts(std::move(pieces)) {}
  const std::byte* joined();

  const std::vector<NSData> parts;
  std::once_flag joining;
  std::vector<std::byte> buffer;
};

struct MutableDataStorage final : IndirectDataStorage {
  MutableDataStorage() : IndirectDataStorage(StorageMutable, 0) {}
  void contentsChanged() noexcept {
    bytes = buffer.data();
    length = buffer.size();
  }
  std::vector<std::byte> buffer;
};

void destroyData(DataStorage* data) noexcept;

}  // namespace zeb::detail
