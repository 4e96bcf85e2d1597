#pragma once

#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <string>

namespace zeb {

/// A place on the globe in degrees: latitude north, longitude east.
struct CLLocationCoordinate2D {
  double latitude = 0;
  double longitude = 0;

  bool operator==(const CLLocationCoordinate2D&) const = default;
};

/// The place and time of a device. Immutable; any thread.
class CLLocation final : public NSObject {
 public:
  struct Fields {
    CLLocationCoordinate2D coordinate;
    double altitude = 0;            ///< metres above sea level
    double horizontalAccuracy = 0;  ///< metres; negative: the coordinate is invalid
    double verticalAccuracy = -1;   ///< metres; negative: the altitude is invalid
    double course = -1;             ///< degrees clockwise from north; negative: unknown
    double speed = -1;              ///< metres a second; negative: unknown
    NSDate timestamp = NSDate::date();

    bool operator==(const Fields&) const = default;
  };

  explicit CLLocation(const Fields& fields) noexcept : fields_(fields) {}

  CLLocationCoordinate2D coordinate() const noexcept { return fields_.coordinate; }
  double altitude() const noexcept { return fields_.altitude; }
  double horizontalAccuracy() const noexcept { return fields_.horizontalAccuracy; }
  double verticalAccuracy() const noexcept { return fields_.verticalAccuracy; }
  double course() const noexcept { return fields_.course; }
  double speed() const noexcept { return fields_.speed; }
  NSDate timestamp() const noexcept { return fields_.timestamp; }

  /// Equal if all fields are.
  bool isEqual(const NSObject& other) const noexcept override;
  std::size_t hash() const noexcept override;
  std::string description() const override;

 private:
  const Fields fields_;
};

}  // namespace zeb
