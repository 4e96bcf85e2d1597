#pragma once

#include "Fields.h"
#include "Registry.h"

namespace zeb::timeline {

/// Makes a timeline of a parsed document, which is a dictionary with "posts" or an array of a code
/// hosting site's events. Missing and wrong fields get defaults.
class FeedReader {
 public:
  static bool canRead(const Value& document);

  Timeline timeline(const Value& document);

  /// Counted over all documents that were read.
  const Gaps& gaps() const noexcept { return gaps_; }
  std::size_t authorCount() const noexcept { return authors_->count(); }

 private:
  Post post(const Fields& fields);
  Post event(const Fields& fields);
  Ref<Author> author(const Fields& fields, const StringKey& handleKey);
  /// The links' ranges are measured in the text as it arrives, with character references.
  void addTextAndLinks(Post& post, const Fields& fields, const NSArray& links);
  /// The words of the text that link are the title of a link without one.
  void addLink(Post& post, const Fields& fields, const StringKey& titleKey,
               const NSString& words = "");

  Gaps gaps_;
  Ref<AuthorPool> authors_ = makeRef<AuthorPool>();
};

}  // namespace zeb::timeline
