#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Linux/detail/Console.h>
#include <ZEBPlatform/Runtime/NSAssertionHandler.h>
#include <ZEBPlatform/Runtime/Send.h>

namespace zeb {

const char* const NSInternalInconsistencyException = "NSInternalInconsistencyException";

void handleFailureInMethod(SEL selector, const Value& object, std::string_view file,
                           std::int64_t line, const NSString& description) {
  std::string where = "Assertion failure in " + detail::methodName(object, selector) + ", ";
  where.append(file).append(":").append(std::to_string(line));
  writeToConsoleLog(where);
  throw NSException(NSInternalInconsistencyException, description);
}

}  // namespace zeb
