#pragma once

#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBUtilities/Coding/ZEBEitherEncodable.h>

namespace zeb {

/// Rebuilds the objects of one encodable name. Immutable; may be used from any thread.
class DecodingBuilder : public NSObject {
 public:
  virtual NSString encodableName() const = 0;
  /// Makes the object from its fields. May throw.
  virtual ZEBEitherEncodable build(ZEBDecoder& decoder) const = 0;
};

/// A builder of value-model objects.
class NativeDecodingBuilder : public DecodingBuilder {
 public:
  virtual ZEBEncodable buildNative(ZEBDecoder& decoder) const = 0;
  ZEBEitherEncodable build(ZEBDecoder& decoder) const final {
    return ZEBEitherEncodable::native(buildNative(decoder));
  }
};

/// A builder of shared objects.
class LegacyDecodingBuilder : public DecodingBuilder {
 public:
  virtual Ref<ZEBObjCEncodable> buildLegacy(ZEBDecoder& decoder) const = 0;
  ZEBEitherEncodable build(ZEBDecoder& decoder) const final {
    return ZEBEitherEncodable::legacy(buildLegacy(decoder));
  }
};

/// A builder with a name and a function, whose exceptions are passed on unchanged. A nil function
/// throws NSException (NSInvalidArgumentException).
class BasicDecodingBuilder final : public DecodingBuilder {
 public:
  using BuildFunction = Block<ZEBEitherEncodable(ZEBDecoder&)>;

  BasicDecodingBuilder(const NSString& encodableName, BuildFunction buildFunction);
  BasicDecodingBuilder(const NSString& encodableName,
                       Block<ZEBEncodable(ZEBDecoder&)> buildFunction);
  BasicDecodingBuilder(const NSString& encodableName,
                       Block<Ref<ZEBObjCEncodable>(ZEBDecoder&)> buildFunction);

  NSString encodableName() const override { return encodableName_; }
  const BuildFunction& buildFunction() const noexcept { return buildFunction_; }
  ZEBEitherEncodable build(ZEBDecoder& decoder) const override { return buildFunction_(decoder); }

  /// "BasicDecodingBuilder", with the property encodableName.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

 private:
  const NSString encodableName_;
  const BuildFunction buildFunction_;
};

}  // namespace zeb
