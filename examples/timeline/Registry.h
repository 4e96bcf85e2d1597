#pragma once

#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBUtilities/Coding/DecodingBuilderRegistry.h>

#include "Model.h"

namespace zeb::timeline {

/// Lets equal authors be one object. One thread at a time.
class AuthorPool : public NSObject {
 public:
  /// The known author when there is an equal one, else this one, known from now on.
  Ref<Author> shared(const Ref<Author>& author);
  std::size_t count() const noexcept { return authors_.count(); }

 private:
  NSMutableDictionary authors_;  ///< by handle
};

/// Rebuilds every type of the model. Any thread.
Ref<DecodingBuilderRegistry> modelRegistry();

/// The same with another builder for authors in front, which lets posts share them again: an archive
/// holds trees, so an author comes out of it once for each post. One thread at a time, as the pool.
Ref<DecodingBuilderRegistry> sharingRegistry(const Ref<AuthorPool>& pool);

}  // namespace zeb::timeline
