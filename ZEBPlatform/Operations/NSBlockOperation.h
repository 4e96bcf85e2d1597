#pragma once

#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Operations/NSOperation.h>

#include <vector>

namespace zeb {

/// An operation whose work is one block or several; several run at once, and the operation finishes when
/// all have returned. The blocks are released when the operation has run.
class NSBlockOperation : public NSOperation {
 public:
  NSBlockOperation() noexcept = default;
  explicit NSBlockOperation(Block<void()> block) : block_(std::move(block)) {}

  static Ref<NSBlockOperation> blockOperationWithBlock(Block<void()> block) {
    return makeRef<NSBlockOperation>(std::move(block));
  }

  /// Before the operation is enqueued or started. Nil: nothing.
  void addExecutionBlock(Block<void()> block);

  void main() override;

 private:
  Block<void()> block_;
  std::vector<Block<void()>> moreBlocks_;
};

}  // namespace zeb
