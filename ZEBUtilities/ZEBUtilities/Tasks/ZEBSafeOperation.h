#pragma once

#include <ZEBPlatform/Operations/NSBlockOperation.h>
#include <ZEBPlatform/Operations/NSInvocationOperation.h>
#include <ZEBPlatform/Operations/NSOperation.h>

namespace zeb {

/// Whether the system keeps an operation's completion block after it has run, so that a block that refers
/// to its operation would never be released. This platform releases it: false.
bool zeb_isCompletionBlockNotNilledBugPresent() noexcept;

/// An operation whose completion block is certainly released after it has run. As every operation here does
/// that, the three classes are what they derive from, under names that say what the code relies on.
///
/// In the dynamic runtime the three have their own names, and the selectors of what they inherit; the
/// initialisers are class methods there, and blocks travel as Runtime/BlockConversion.h says.
class ZEBSafeOperation : public NSOperation {
 public:
  /// Forgets the completion block before it has run.
  void zeb_clearCompletionBlock() { NSOperation::setCompletionBlock(nullptr); }

  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }
};

class ZEBSafeBlockOperation : public NSBlockOperation {
 public:
  using NSBlockOperation::NSBlockOperation;
  static Ref<ZEBSafeBlockOperation> blockOperationWithBlock(Block<void()> block) {
    return makeRef<ZEBSafeBlockOperation>(std::move(block));
  }

  void zeb_clearCompletionBlock() { NSBlockOperation::setCompletionBlock(nullptr); }

  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }
};

class ZEBSafeInvocationOperation : public NSInvocationOperation {
 public:
  using NSInvocationOperation::NSInvocationOperation;

  void zeb_clearCompletionBlock() { NSInvocationOperation::setCompletionBlock(nullptr); }

  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }
};

}  // namespace zeb
