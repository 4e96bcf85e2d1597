#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Dispatch/DispatchSemaphore.h>
#include <ZEBPlatform/Operations/NSBlockOperation.h>
#include <ZEBPlatform/Operations/OperationExceptionsPrivate.h>

#include <utility>

namespace zeb {

void NSBlockOperation::addExecutionBlock(Block<void()> block) {
  if (!block) return;
  if (block_) {
    moreBlocks_.push_back(std::move(block));
  } else {
    block_ = std::move(block);
  }
}

void NSBlockOperation::main() {
  struct Others {
    std::size_t count;
    dispatch_semaphore_t returned;
    ~Others() {
      for (; count > 0; --count) dispatch_semaphore_wait(returned, DISPATCH_TIME_FOREVER);
    }
  } others{moreBlocks_.size(), moreBlocks_.empty() ? nullptr : dispatch_semaphore_create(0)};
  for (Block<void()>& block : moreBlocks_) {
    dispatch_async(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT),
                   [this, &block, returned = others.returned] {
                     detail::loggingExceptions(*this, [&] { std::exchange(block, nullptr)(); });
                     dispatch_semaphore_signal(returned);
                   });
  }
  if (block_) std::exchange(block_, nullptr)();
}

}  // namespace zeb
