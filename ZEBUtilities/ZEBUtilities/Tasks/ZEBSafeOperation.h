#pragma once

#include <ZEBPlatform/Operations/NSBlockOperation.h>
#include <ZEBPlatform/Operations/NSInvocationOperation.h>
#include <ZEBPlatform/Operations/NSOperation.h>

namespace zeb {

/// Whether the system keeps an operation's completion block after it has run, so that a block that
/// refers to its operation would never be released. False, because this platform releases it.
bool zeb_isCompletionBlockNotNilledBugPresent() noexcept;

/// An operation whose completion block is released after it has run. All operations on this
/// platform do that, so that the three classes add only names that express what the code relies on.
///
/// In the dynamic runtime the three are registered under their names, with the selectors of their
/// base classes. The initialisers are class methods there, and blocks are passed as described in
/// Runtime/BlockConversion.h.
class ZEBSafeOperation : public NSOperation {
 public:
  /// Removes the completion block before it has run.
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
