#include <ZEBUtilities/Coding/DecodingBuilder.h>

#include <utility>

namespace zeb {

BasicDecodingBuilder::BasicDecodingBuilder(const NSString& encodableName,
                                           BuildFunction buildFunction)
    : encodableName_(encodableName), buildFunction_(std::move(buildFunction)) {}

BasicDecodingBuilder::BasicDecodingBuilder(const NSString& encodableName,
                                           Block<ZEBEncodable(ZEBDecoder&)> buildFunction)
    : BasicDecodingBuilder(encodableName,
                           BuildFunction([build = std::move(buildFunction)](ZEBDecoder& decoder) {
                             return ZEBEitherEncodable::native(build(decoder));
                           })) {}

BasicDecodingBuilder::BasicDecodingBuilder(const NSString& encodableName,
                                           Block<Ref<ZEBObjCEncodable>(ZEBDecoder&)> buildFunction)
    : BasicDecodingBuilder(encodableName,
                           BuildFunction([build = std::move(buildFunction)](ZEBDecoder& decoder) {
                             return ZEBEitherEncodable::legacy(build(decoder));
                           })) {}

}  // namespace zeb
