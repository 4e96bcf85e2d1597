#include <Foundation/Format.h>
#include <Foundation/NSNumber.h>
#include <Foundation/StringHash.h>
#include <Geometry/CLLocation.h>

namespace zeb {

bool CLLocation::isEqual(const NSObject& other) const noexcept {
  const auto* location = dynamic_cast<const CLLocation*>(&other);
  return location && location->fields_ == fields_;
}

std::size_t CLLocation::hash() const noexcept {
  return detail::mixHash(NSNumber(fields_.coordinate.latitude).hash(),
                         NSNumber(fields_.coordinate.longitude).hash());
}

std::string CLLocation::description() const {
  return NSString::stringWithFormat("<%+.8f,%+.8f> +/- %.2fm (speed %.2f mps / course %.2f) @ %@",
                                    fields_.coordinate.latitude, fields_.coordinate.longitude,
                                    fields_.horizontalAccuracy, fields_.speed, fields_.course,
                                    fields_.timestamp)
      .utf8();
}

}  // namespace zeb
