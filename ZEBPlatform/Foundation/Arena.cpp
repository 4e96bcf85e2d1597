#include <ZEBPlatform/Foundation/detail/Arena.h>

#include <algorithm>
#include <cstdlib>

namespace zeb::detail {

Arena* Arena::create(std::size_t bytes) {
  // The arena itself lies in front of its first chunk, so that a small document is one allocation.
  const std::size_t room = (bytes + 7) & ~std::size_t{7};
  const std::size_t size = sizeof(Arena) + sizeof(ChunkHeader) + room + slack;
  void* memory = std::malloc(size);
  if (!memory) throw std::bad_alloc();
  Arena* arena = new (memory) Arena;
  arena->chunk_ = static_cast<char*>(memory) + sizeof(Arena);
  new (arena->chunk_) ChunkHeader{arena, nullptr};
  arena->cursor_ = arena->chunk_ + sizeof(ChunkHeader);
  arena->limit_ = arena->cursor_ + room;
  arena->nextChunkSize_ = room;
  arena->footprint_ = size;
  return arena;
}

void* Arena::allocateInNewChunk(std::size_t size) {
  const std::size_t room = (std::max(nextChunkSize_, size) + 7) & ~std::size_t{7};
  void* memory = std::malloc(sizeof(ChunkHeader) + room + slack);
  if (!memory) throw std::bad_alloc();
  new (memory) ChunkHeader{this, chunk_};
  chunk_ = static_cast<char*>(memory);
  cursor_ = chunk_ + sizeof(ChunkHeader) + size;
  limit_ = chunk_ + sizeof(ChunkHeader) + room;
  footprint_ += sizeof(ChunkHeader) + room + slack;
  return chunk_ + sizeof(ChunkHeader);
}

void Arena::destroy() noexcept {
  char* chunk = chunk_;
  while (char* previous = reinterpret_cast<ChunkHeader*>(chunk)->previous) {
    std::free(chunk);
    chunk = previous;
  }
  std::free(this);  // the first chunk follows it
}

void retainArenaOf(const Storage& storage) noexcept { Arena::of(storage).retain(); }
void releaseArenaOf(const Storage& storage) noexcept { Arena::of(storage).release(); }

}  // namespace zeb::detail
