#include <ZEBPlatform/Linux/detail/Console.h>
#include <ZEBUtilities/Coding/ZEBEncodable.h>

#include <utility>

namespace zeb {

namespace {

const detail::EncodableBox* boxOf(const Value& value) noexcept {
  return dynamic_cast<const detail::EncodableBox*>(value.objectPointer());
}

}  // namespace

NSString detail::primitiveName(const Value& primitive) {
  if (unboxed<CGRect>(primitive)) return "CGRect";
  if (unboxed<CGPoint>(primitive)) return "CGPoint";
  if (unboxed<CGSize>(primitive)) return "CGSize";
  if (unboxed<NSRange>(primitive)) return "NSRange";
  switch (primitive.kind()) {
    case ValueKind::Boolean:
      return "Bool";
    case ValueKind::SignedInteger:
    case ValueKind::UnsignedInteger:
      return primitive.typeCode() == 'i' ? "Int32" : "Int";
    case ValueKind::Float:
      return "Float";
    case ValueKind::Double:
      return "Double";
    case ValueKind::String:
      return "String";
    case ValueKind::Data:
      return "Data";
    case ValueKind::Date:
      return "Date";
    case ValueKind::Object:
      return primitive.object<CLLocation>() ? NSString("CLLocation") : NSString();
    default:
      return nullptr;
  }
}

NSString ZEBEncodable::encodableName() const {
  const detail::EncodableBox* box = boxOf(value_);
  return box ? box->encodableName() : detail::primitiveName(value_);
}

void ZEBEncodable::encode(ZEBEncoder& encoder) const {
  if (isNil()) return;
  const detail::EncodableBox* box = boxOf(value_);
  if (!box) fatal("Encoders should directly encode primitives");
  box->encode(encoder);
}

ZEBEncodable ZEBEncodable::from(Value value) noexcept {
  ZEBEncodable encodable;
  if (boxOf(value) || !detail::primitiveName(value).isNil()) encodable.value_ = std::move(value);
  return encodable;
}

}  // namespace zeb
