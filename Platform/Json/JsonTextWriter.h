#pragma once

#include <Foundation/DataBuilder.h>
#include <Foundation/Value.h>
#include <Foundation/ValueStorage.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zeb::detail {

/// Writes the parts of a JSON text one after the other. Knows how each part is spelled, not what may
/// follow what: that is its callers' business.
class JsonTextWriter {
 public:
  explicit JsonTextWriter(bool escapesSlashes) noexcept : escapesSlashes_(escapesSlashes) {}

  /// Brackets, commas and whatever else is JSON already.
  void put(char character) {
    output_.require(1);
    output_.put(character);
  }
  void put(std::string_view text) {
    output_.require(text.size());
    output_.put(text);
  }

  /// With quotes and escapes. Unpaired surrogates become numbered escapes.
  void writeString(const StringStorage& string);
  /// What stands between the quotes.
  void writeContent(const StringStorage& string);
  void writeASCII(std::string_view text);

  void writeInteger(std::int64_t number);
  void writeUnsigned(std::uint64_t number);
  /// Finite ones only.
  void writeDouble(double number);
  void writeFloat(float number);
  /// A boolean, number or null, which must be finite.
  void writeScalar(const Value& value);

  std::size_t size() const noexcept { return output_.size(); }
  DataBuilder& output() noexcept { return output_; }
  NSData finish() { return output_.finish(); }

 private:
  bool needsEscapes(std::uint64_t word) const noexcept;
  char* writeShort(char* target, const char* at, const char* end) const noexcept;
  char* writeCharacters(char* target, const char* at, const char* end) const noexcept;
  char* writeCharacter(char* target, char character) const noexcept;
  char* writeScalarValue(char* target, char32_t scalar) const noexcept;
  void writeWide(std::u16string_view units);

  const bool escapesSlashes_;
  DataBuilder output_;
};

}  // namespace zeb::detail
