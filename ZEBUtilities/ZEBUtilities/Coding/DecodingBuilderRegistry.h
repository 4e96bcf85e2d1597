#pragma once

#include <ZEBUtilities/Coding/DecodingBuilder.h>

#include <initializer_list>
#include <span>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>

namespace zeb {

/// Finds the builder for each encodable name. Must not change while an unarchiver reads.
class DecodingBuilderRegistry : public NSObject {
 public:
  /// Nil when the name is unknown.
  virtual Ref<DecodingBuilder> decodingBuilder(const NSString& forEncodableName) const = 0;
};

/// One entry of a registry.
class BuilderSpec {
 public:
  /// An entry with the type's own name and constructor. An entry for a primitive kind stops the
  /// process when it builds, because decoders read primitives directly.
  template <class T>
    requires(ZEBDecodableType<T> || PrimitiveType<T>)
  [[nodiscard]] static BuilderSpec decodableType();
  /// A nil function throws NSException (NSInvalidArgumentException), here and below.
  [[nodiscard]] static BuilderSpec buildFunction(const NSString& encodableName,
                                                 Block<ZEBEncodable(ZEBDecoder&)> buildFunction);
  [[nodiscard]] static BuilderSpec objCBuildFunction(
      const NSString& encodableName, Block<Ref<ZEBObjCEncodable>(ZEBDecoder&)> buildFunction);
  /// An entry with the given builder under the given name, even if the builder has another one. A
  /// nil builder makes the name unknown, even if the next registry in the chain knows it.
  [[nodiscard]] static BuilderSpec builder(const NSString& encodableName,
                                           Ref<DecodingBuilder> builder);

  const NSString& encodableName() const noexcept { return encodableName_; }
  const Ref<DecodingBuilder>& decodingBuilder() const noexcept { return builder_; }

 private:
  BuilderSpec(const NSString& encodableName, Ref<DecodingBuilder> builder)
      : encodableName_(encodableName), builder_(std::move(builder)) {}

  NSString encodableName_;
  Ref<DecodingBuilder> builder_;
};

/// A registry with a list of entries, optionally in front of another registry that is asked for all
/// other names. Chains may have any length. Of two entries with the same name the later one counts.
/// Immutable; may be used from any thread.
class BasicDecodingBuilderRegistry final : public DecodingBuilderRegistry {
 public:
  using Builders = std::unordered_map<NSString, Ref<DecodingBuilder>>;

  /// An empty registry without a next one.
  BasicDecodingBuilderRegistry() = default;
  explicit BasicDecodingBuilderRegistry(std::span<const BuilderSpec> builderSpecs,
                                        Ref<DecodingBuilderRegistry> inFrontOf = nullptr);
  explicit BasicDecodingBuilderRegistry(std::initializer_list<BuilderSpec> builderSpecs,
                                        Ref<DecodingBuilderRegistry> inFrontOf = nullptr)
      : BasicDecodingBuilderRegistry(std::span(builderSpecs.begin(), builderSpecs.size()),
                                     std::move(inFrontOf)) {}

  ~BasicDecodingBuilderRegistry() override;

  const Builders& encodableNameToDecodingBuilder() const noexcept { return builders_; }
  const Ref<DecodingBuilderRegistry>& inFrontOf() const noexcept { return inFrontOf_; }

  Ref<DecodingBuilder> decodingBuilder(const NSString& forEncodableName) const override;

  /// Registered as "ZEBBasicDecodingBuilderRegistry", with decodingBuilderForEncodableName: and the
  /// two properties. Its class method init makes an empty registry.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }
  std::string className() const override { return "ZEBBasicDecodingBuilderRegistry"; }

 private:
  Builders builders_;
  Ref<DecodingBuilderRegistry> inFrontOf_;
};

namespace detail {

[[noreturn]] void stopForPrimitive() noexcept;

/// Any value of a primitive kind.
template <class T>
Value samplePrimitive() {
  if constexpr (std::same_as<T, NSString>)
    return "";
  else if constexpr (std::same_as<T, NSData>)
    return NSData::data();
  else if constexpr (std::same_as<T, NSDate>)
    return NSDate::dateWithTimeIntervalSince1970(0);
  else if constexpr (std::same_as<T, NSNumber>)
    return 0;
  else if constexpr (BoxableRecord<T>)
    return boxed(T());
  else if constexpr (std::is_arithmetic_v<T>)
    return T();
  else
    return makeRef<CLLocation>(CLLocation::Fields());
}

}  // namespace detail

template <class T>
  requires(ZEBDecodableType<T> || PrimitiveType<T>)
BuilderSpec BuilderSpec::decodableType() {
  if constexpr (ZEBDecodableType<T>) {
    return buildFunction(T::encodableName(),
                         [](ZEBDecoder& decoder) { return ZEBEncodable(T(decoder)); });
  } else {
    return buildFunction(detail::primitiveName(detail::samplePrimitive<T>()),
                         [](ZEBDecoder&) -> ZEBEncodable { detail::stopForPrimitive(); });
  }
}

}  // namespace zeb
