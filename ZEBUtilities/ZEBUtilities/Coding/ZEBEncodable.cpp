#include <Linux/Console.h>
#include <ZEBUtilities/Coding/ZEBEncodable.h>

namespace zeb {

namespace {

const detail::EncodableBox& boxOf(const Value& value) {
  const auto* box = dynamic_cast<const detail::EncodableBox*>(value.objectPointer());
  if (!box) fatal("Encoders should directly encode primitives");
  return *box;
}

}  // namespace

NSString ZEBEncodable::encodableName() const { return boxOf(value_).encodableName(); }

void ZEBEncodable::encode(ZEBEncoder& encoder) const { boxOf(value_).encode(encoder); }

ZEBEncodable ZEBEncodable::from(const Value& value) noexcept {
  ZEBEncodable encodable;
  if (dynamic_cast<const detail::EncodableBox*>(value.objectPointer())) encodable.value_ = value;
  return encodable;
}

}  // namespace zeb
