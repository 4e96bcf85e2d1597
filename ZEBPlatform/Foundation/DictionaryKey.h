#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/StringKey.h>
#include <ZEBPlatform/Foundation/Value.h>

#include <concepts>
#include <cstddef>
#include <type_traits>

namespace zeb {

/// The key of a lookup, in subscripts, readers and paths: every text that makes a `StringKey`, and
/// every value, such as a key from an iteration or `Value(5)`.
///
/// Borrowed for the duration of one call. A nil key is never found.
class DictionaryKey : public StringKey {
 public:
  template <std::size_t Size>
  consteval DictionaryKey(const char (&literal)[Size]) noexcept : StringKey(literal) {}
  template <class Text>
    requires(!std::is_array_v<Text> && std::constructible_from<StringKey, const Text&>)
  DictionaryKey(const Text& text) noexcept : StringKey(text) {}
  template <std::size_t Size>
  DictionaryKey(char (&buffer)[Size]) noexcept : StringKey(buffer) {}
  DictionaryKey(const Value& value) noexcept : StringKey(textOf(value)) {
    if (!value.isString() && !value.isNil()) source_ = &value;
  }

  /// The key when it is neither text nor nil, else null.
  const Value* otherValue() const noexcept {
    return isNil() ? static_cast<const Value*>(source_) : nullptr;
  }
};

}  // namespace zeb
