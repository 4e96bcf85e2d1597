#include <ZEBPlatform/Linux/detail/Console.h>
#include <ZEBUtilities/Coding/DecodingBuilderRegistry.h>

#include <utility>

namespace zeb {

void detail::stopForPrimitive() noexcept {
  fatal("Encoders should directly encode and decode primitives");
}

BuilderSpec BuilderSpec::buildFunction(const NSString& encodableName,
                                       Block<ZEBEncodable(ZEBDecoder&)> buildFunction) {
  return {encodableName, makeRef<BasicDecodingBuilder>(encodableName, std::move(buildFunction))};
}

BuilderSpec BuilderSpec::objCBuildFunction(
    const NSString& encodableName, Block<Ref<ZEBObjCEncodable>(ZEBDecoder&)> buildFunction) {
  return {encodableName, makeRef<BasicDecodingBuilder>(encodableName, std::move(buildFunction))};
}

BuilderSpec BuilderSpec::builder(const NSString& encodableName, Ref<DecodingBuilder> builder) {
  return {encodableName, std::move(builder)};
}

BasicDecodingBuilderRegistry::BasicDecodingBuilderRegistry(
    std::span<const BuilderSpec> builderSpecs, Ref<DecodingBuilderRegistry> inFrontOf)
    : inFrontOf_(std::move(inFrontOf)) {
  for (const BuilderSpec& spec : builderSpecs) {
    builders_.insert_or_assign(spec.encodableName().copy(), spec.decodingBuilder());
  }
}

// Takes a long chain apart in a loop, because nested destructor calls would overflow the stack.
BasicDecodingBuilderRegistry::~BasicDecodingBuilderRegistry() {
  Ref<DecodingBuilderRegistry> next = std::move(inFrontOf_);
  while (next && next->isUniquelyReferenced()) {
    auto* link = dynamic_cast<BasicDecodingBuilderRegistry*>(next.get());
    if (!link) return;
    next = std::exchange(link->inFrontOf_, nullptr);
  }
}

Ref<DecodingBuilder> BasicDecodingBuilderRegistry::decodingBuilder(
    const NSString& forEncodableName) const {
  const BasicDecodingBuilderRegistry* registry = this;
  for (;;) {
    const auto found = registry->builders_.find(forEncodableName);
    if (found != registry->builders_.end()) return found->second;
    const DecodingBuilderRegistry* next = registry->inFrontOf_.get();
    if (!next) return nullptr;
    registry = dynamic_cast<const BasicDecodingBuilderRegistry*>(next);
    if (!registry) return next->decodingBuilder(forEncodableName);
  }
}

}  // namespace zeb
