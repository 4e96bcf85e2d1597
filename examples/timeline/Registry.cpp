#include "Registry.h"

namespace zeb::timeline {

using Builders = std::initializer_list<BuilderSpec>;

Ref<Author> AuthorPool::shared(const Ref<Author>& author) {
  const Ref<Author> known = authors_.objectForKey(author->handle).object<Author>();
  if (known && known->isEqual(*author)) return known;
  authors_.setObject(author, author->handle);
  return author;
}

Ref<DecodingBuilderRegistry> modelRegistry() {
  return makeRef<BasicDecodingBuilderRegistry>(Builders{
      BuilderSpec::decodableType<Timeline>(),
      BuilderSpec::decodableType<Post>(),
      BuilderSpec::decodableType<Link>(),
      BuilderSpec::decodableType<ZEBRawValueEnumCodable<PostKind>>(),
      BuilderSpec::objCBuildFunction("Author",
                                     [](ZEBDecoder& decoder) { return makeRef<Author>(decoder); }),
  });
}

Ref<DecodingBuilderRegistry> sharingRegistry(const Ref<AuthorPool>& pool) {
  const auto buildAuthor = [pool](ZEBDecoder& decoder) {
    return pool->shared(makeRef<Author>(decoder));
  };
  return makeRef<BasicDecodingBuilderRegistry>(
      Builders{BuilderSpec::objCBuildFunction("Author", buildAuthor)}, modelRegistry());
}

}  // namespace zeb::timeline
