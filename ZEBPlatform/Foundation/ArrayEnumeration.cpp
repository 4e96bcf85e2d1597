#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/detail/ArrayEnumeration.h>

namespace zeb::detail {

void MutationCheck::raiseMutation() {
  throw NSException(NSGenericException, "the array was mutated while being enumerated");
}

}  // namespace zeb::detail
