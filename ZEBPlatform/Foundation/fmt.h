#pragma once

// Optional: lets fmt print values, errors and exceptions. Include it where fmt is used; nothing
// else in the library needs it. A program that also uses fmt/ranges.h includes that header first.
// For std::format, pass `value.description().utf8()` or `error.what()`.

#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/Value.h>

#include <fmt/format.h>

#include <concepts>
#include <string_view>
#include <type_traits>

#ifdef FMT_RANGES_H_
/// Collections print as their description and not as fmt prints ranges.
template <class Handle>
struct fmt::range_format_kind<Handle, char, std::enable_if_t<std::derived_from<Handle, zeb::Value>>>
    : std::integral_constant<fmt::range_format, fmt::range_format::disabled> {};
#endif

/// Prints the description; takes the format's directives for texts.
template <class Handle>
struct fmt::formatter<Handle, char, std::enable_if_t<std::derived_from<Handle, zeb::Value>>>
    : fmt::formatter<std::string_view> {
  template <class Context>
  auto format(const zeb::Value& value, Context& context) const {
    return fmt::formatter<std::string_view>::format(value.description().utf8(), context);
  }
};
template <>
struct fmt::formatter<zeb::NSError, char> : fmt::formatter<zeb::Value> {};
template <>
struct fmt::formatter<zeb::NSException, char> : fmt::formatter<zeb::Value> {};
