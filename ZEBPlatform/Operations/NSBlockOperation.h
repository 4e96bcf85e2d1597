#pragma once

#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Operations/NSOperation.h>

#include <vector>

namespace zeb {

/// An operation that runs one block, or several blocks concurrently. It finishes when all have
/// returned, and releases them.
class NSBlockOperation : public NSOperation {
 public:
  NSBlockOperation() noexcept = default;
  explicit NSBlockOperation(Block<void()> block) : block_(std::move(block)) {}

  [[nodiscard]] static Ref<NSBlockOperation> blockOperationWithBlock(Block<void()> block) {
    return makeRef<NSBlockOperation>(std::move(block));
  }

  /// To be called before the operation is enqueued or started. Nil is ignored.
  void addExecutionBlock(Block<void()> block);

  void main() override;

 private:
  Block<void()> block_;
  std::vector<Block<void()>> moreBlocks_;
};

}  // namespace zeb
