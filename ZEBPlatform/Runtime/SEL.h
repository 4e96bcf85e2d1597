#pragma once

#include <ZEBPlatform/Foundation/NullableText.h>

#include <cstddef>
#include <functional>
#include <string>

namespace zeb {

namespace detail {

struct SelectorRecord {
  std::string name;
  std::size_t hash;
  std::size_t argumentCount;
};

}  // namespace detail

/// The name of a method, "setTitle:" or "insert:at:" with one colon for each argument. Names are
/// kept once per process, so that comparing selectors compares pointers. Nullable; free to copy;
/// any thread.
class SEL {
 public:
  constexpr SEL() noexcept = default;
  constexpr SEL(std::nullptr_t) noexcept {}
  constexpr explicit SEL(const detail::SelectorRecord* record) noexcept : record_(record) {}

  constexpr explicit operator bool() const noexcept { return record_ != nullptr; }
  friend constexpr bool operator==(SEL left, SEL right) noexcept = default;

  /// "" for nil. Valid for good.
  const char* name() const noexcept { return record_ ? record_->name.c_str() : ""; }
  /// The number of colons.
  std::size_t argumentCount() const noexcept { return record_ ? record_->argumentCount : 0; }
  std::size_t hash() const noexcept { return record_ ? record_->hash : 0; }

 private:
  const detail::SelectorRecord* record_ = nullptr;
};

/// The selector of this name, the same for equal names. UTF-8.
SEL sel_registerName(NullableText name);

namespace detail {
/// The selector of this name if there is one already, else nil.
SEL findSelector(NullableText name) noexcept;
}  // namespace detail

inline const char* sel_getName(SEL selector) noexcept { return selector.name(); }

namespace detail {

template <std::size_t Size>
struct SelectorText {
  consteval SelectorText(const char (&literal)[Size]) noexcept {
    for (std::size_t index = 0; index < Size; ++index) text[index] = literal[index];
  }
  char text[Size];
};

}  // namespace detail

inline namespace literals {

/// `"setTitle:"_sel`: looked up once for each literal.
template <detail::SelectorText name>
SEL operator""_sel() {
  static const SEL selector = sel_registerName(name.text);
  return selector;
}

}  // namespace literals

}  // namespace zeb

template <>
struct std::hash<zeb::SEL> {
  std::size_t operator()(zeb::SEL selector) const noexcept { return selector.hash(); }
};
