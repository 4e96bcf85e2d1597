#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Coding/DecodingBuilderRegistry.h>
#include <ZEBUtilities/Coding/ZEBEncoderConversion.h>

namespace zeb {

Class* ZEBObjCEncodable::runtimeClass() {
  static Class* const cls = registerClass(
      "ZEBEncodable", {
                          property("encodableName", &ZEBObjCEncodable::encodableName),
                          method("encodeWithEncoder:",
                                 [](const ZEBObjCEncodable& self, ZEBEncoder* encoder) {
                                   if (!encoder)
                                     raiseInvalidArgument("encodeWithEncoder: needs an encoder");
                                   self.encodeWithEncoder(*encoder);
                                 }),
                      });
  return cls;
}

Class* BasicDecodingBuilder::runtimeClass() {
  static Class* const cls = registerClass(
      "BasicDecodingBuilder", {property("encodableName", &BasicDecodingBuilder::encodableName)});
  return cls;
}

Class* BasicDecodingBuilderRegistry::runtimeClass() {
  using Self = BasicDecodingBuilderRegistry;
  static Class* const cls = registerClass(
      "ZEBBasicDecodingBuilderRegistry",
      {
          classMethod("init", [] { return makeRef<Self>(); }),
          classMethod("new", [] { return makeRef<Self>(); }),
          property("inFrontOf", &Self::inFrontOf),
          property("encodableNameToDecodingBuilder",
                   [](const Self& self) {
                     NSMutableDictionary builders;
                     for (const auto& [name, builder] : self.encodableNameToDecodingBuilder()) {
                       builders.setObject(builder, name);
                     }
                     return NSDictionary(builders);
                   }),
          method("decodingBuilderForEncodableName:", &Self::decodingBuilder),
      });
  return cls;
}

}  // namespace zeb
