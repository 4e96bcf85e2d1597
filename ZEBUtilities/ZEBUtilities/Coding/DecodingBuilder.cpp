#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBUtilities/Coding/DecodingBuilder.h>

#include <utility>

namespace zeb {

namespace {

template <class BuildFunction>
BuildFunction nonNil(BuildFunction function) {
  if (!function) raiseInvalidArgument("A decoding builder's function can't be nil");
  return function;
}

}  // namespace

BasicDecodingBuilder::BasicDecodingBuilder(const NSString& encodableName,
                                           BuildFunction buildFunction)
    : encodableName_(encodableName), buildFunction_(nonNil(std::move(buildFunction))) {}

BasicDecodingBuilder::BasicDecodingBuilder(const NSString& encodableName,
                                           Block<ZEBEncodable(ZEBDecoder&)> buildFunction)
    : BasicDecodingBuilder(
          encodableName,
          BuildFunction([build = nonNil(std::move(buildFunction))](ZEBDecoder& decoder) {
            return ZEBEitherEncodable::native(build(decoder));
          })) {}

BasicDecodingBuilder::BasicDecodingBuilder(const NSString& encodableName,
                                           Block<Ref<ZEBObjCEncodable>(ZEBDecoder&)> buildFunction)
    : BasicDecodingBuilder(
          encodableName,
          BuildFunction([build = nonNil(std::move(buildFunction))](ZEBDecoder& decoder) {
            return ZEBEitherEncodable::legacy(build(decoder));
          })) {}

}  // namespace zeb
