#pragma once

// Optional: lets fmt print values. Include it where fmt is used; nothing else in the library needs it.

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/Value.h>

#include <fmt/format.h>

#include <string_view>
#include <type_traits>

/// Prints the description; takes the format's directives for texts.
template <class Handle>
struct fmt::formatter<Handle, char, std::enable_if_t<std::is_base_of_v<zeb::Value, Handle>>>
    : fmt::formatter<std::string_view> {
  template <class Context>
  auto format(const zeb::Value& value, Context& context) const {
    return fmt::formatter<std::string_view>::format(value.description().utf8(), context);
  }
};
