#pragma once

#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBUtilities/Coding/DecodingBuilderRegistry.h>

#include "Model.h"

namespace zeb::timeline {

/// Makes equal authors one object. One thread at a time.
class AuthorPool : public NSObject {
 public:
  /// The known author that is equal, if there is one; otherwise adds this author and returns it.
  Ref<Author> shared(const Ref<Author>& author);
  std::size_t count() const noexcept { return authors_.count(); }

 private:
  NSMutableDictionary authors_;  ///< by handle
};

/// Rebuilds every type of the model. Any thread.
Ref<DecodingBuilderRegistry> modelRegistry();

/// The same with another builder for authors, which lets posts share them again: archives contain
/// trees, so decoding creates an author for each post. One thread at a time, like the pool.
Ref<DecodingBuilderRegistry> sharingRegistry(const Ref<AuthorPool>& pool);

}  // namespace zeb::timeline
