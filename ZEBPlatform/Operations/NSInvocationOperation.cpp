#include <ZEBPlatform/Operations/NSInvocationOperation.h>

namespace zeb {

const char* const NSInvocationOperationCancelledException =
    "NSInvocationOperationCancelledException";

void NSInvocationOperation::main() {
  hasRun_ = true;
  const Block<Value()> invocation = std::exchange(invocation_, nullptr);
  if (!invocation) return;
  try {
    result_ = invocation();
  } catch (const NSException& exception) {
    exception_ = exception;
    throw;
  }
}

Value NSInvocationOperation::result() const {
  if (!isFinished()) return {};
  if (exception_) throw NSException(*exception_);
  if (!hasRun_)
    throw NSException(NSInvocationOperationCancelledException, "the operation was cancelled");
  return result_;
}

}  // namespace zeb
