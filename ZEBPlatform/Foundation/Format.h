#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>

namespace zeb {

/// One argument of a formatted text, with the type it was passed as. Borrows its source: only for
/// use within the expression that makes it.
class FormatArgument {
 public:
  template <std::integral Integer>
  FormatArgument(Integer integer) noexcept
      : type_(std::is_signed_v<Integer> ? Type::Signed : Type::Unsigned),
        width_(sizeof(Integer)),
        bits_(static_cast<std::uint64_t>(integer)) {}
  template <class Enumeration>
    requires std::is_enum_v<Enumeration>
  FormatArgument(Enumeration value) noexcept
      : FormatArgument(static_cast<std::underlying_type_t<Enumeration>>(value)) {}
  FormatArgument(std::floating_point auto number) noexcept
      : type_(Type::Number), number_(static_cast<double>(number)) {}
  FormatArgument(const char* utf8) noexcept
      : type_(Type::Text), text_(utf8 ? std::string_view(utf8) : std::string_view("(null)")) {}
  FormatArgument(std::string_view utf8) noexcept : type_(Type::Text), text_(utf8) {}
  FormatArgument(const std::string& utf8) noexcept : type_(Type::Text), text_(utf8) {}
  FormatArgument(const Value& value) noexcept : type_(Type::Object), value_(&value) {}
  FormatArgument(const NSObject& object) noexcept : type_(Type::Instance), pointer_(&object) {}
  template <std::derived_from<NSObject> T>
  FormatArgument(const Ref<T>& object) noexcept
      : type_(Type::Instance), pointer_(static_cast<const NSObject*>(object.get())) {}
  FormatArgument(const void* pointer) noexcept : type_(Type::Pointer), pointer_(pointer) {}

 private:
  friend class Formatter;

  enum class Type : std::uint8_t { Signed, Unsigned, Number, Text, Object, Instance, Pointer };

  Type type_;
  std::uint8_t width_ = 8;
  union {
    std::uint64_t bits_ = 0;
    double number_;
    const Value* value_;
    const void* pointer_;
  };
  std::string_view text_;
};

/// Text formatted in the manner of the platform, as UTF-8.
///
/// Directives: %@ (any value or object), %d %i %u %x %X %o %c (with h hh l ll z t q j before them),
/// %f %F %e %E %g %G %a %A, %s (UTF-8), %C (one UTF-16 unit), %S (as %s), %p, %%; flags "- +#0",
/// width and precision as numbers or "*", and positions (%1$@). Arguments carry their own types: a
/// directive that does not fit its argument prints the argument by its own type instead of reading
/// garbage. A directive without an argument is printed unchanged.
std::string formattedText(std::string_view format, std::initializer_list<FormatArgument> arguments);

template <class... Arguments>
NSString NSString::stringWithFormat(std::string_view format, const Arguments&... arguments) {
  // One expression, because arguments may refer to temporaries.
  return NSString(std::string_view(formattedText(format, {FormatArgument(arguments)...})));
}

template <class... Arguments>
NSMutableString& NSMutableString::appendFormat(std::string_view format,
                                               const Arguments&... arguments) {
  return appendUTF8(formattedText(format, {FormatArgument(arguments)...}));
}

}  // namespace zeb
