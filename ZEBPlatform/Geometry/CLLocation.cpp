#include <ZEBPlatform/Foundation/Format.h>
#include <ZEBPlatform/Foundation/KeyedHash.h>
#include <ZEBPlatform/Geometry/CLLocation.h>

namespace zeb {

bool CLLocation::isEqual(const NSObject& other) const noexcept {
  const auto* location = dynamic_cast<const CLLocation*>(&other);
  return location && location->fields_ == fields_;
}

std::size_t CLLocation::hash() const noexcept {
  detail::KeyedHasher hasher;
  for (const Value& field :
       {Value(fields_.coordinate.latitude), Value(fields_.coordinate.longitude),
        Value(fields_.altitude), Value(fields_.horizontalAccuracy), Value(fields_.verticalAccuracy),
        Value(fields_.course), Value(fields_.speed), Value(fields_.timestamp)}) {
    hasher.absorb(field.hash());
  }
  return hasher.finish();
}

std::string CLLocation::description() const {
  return NSString::stringWithFormat("<%+.8f,%+.8f> +/- %.2fm (speed %.2f mps / course %.2f) @ %@",
                                    fields_.coordinate.latitude, fields_.coordinate.longitude,
                                    fields_.horizontalAccuracy, fields_.speed, fields_.course,
                                    fields_.timestamp)
      .utf8();
}

}  // namespace zeb
