#pragma once

namespace zeb::detail {

// The keys of the property-list form and of the keyed form.
inline constexpr const char* rangeLocationKey = "rangeValueLocation";
inline constexpr const char* rangeLengthKey = "rangeValueLength";
inline constexpr const char* rangeFlavorKey = "rangeFlavor";
inline constexpr const char* displayStringKey = "displayString";
inline constexpr const char* rangeURLKey = "rangeURL";

}  // namespace zeb::detail
