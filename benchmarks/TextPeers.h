#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace zeb::bench {

/// Texts of Qt. Implemented in a file that may include Qt's headers; without Qt it does not exist.
class QtTexts {
 public:
  explicit QtTexts(const std::vector<std::u16string>& texts);
  QtTexts(const QtTexts&) = delete;
  QtTexts& operator=(const QtTexts&) = delete;
  ~QtTexts();

  /// Trims each text at both ends, at its beginning and at its end, and tests whether it is empty
  /// then. Answers the sum of the lengths and the number of texts that are not empty.
  std::size_t trim() const;
  /// How many of the texts have a character that shows.
  std::size_t countPrintable() const;
  /// Converts each text to UTF-8. Answers the sum of the lengths.
  std::size_t toUTF8() const;

 private:
  struct Texts;
  std::unique_ptr<Texts> texts_;
};

/// The length of a QString of the text.
std::size_t qtLengthOfUTF8(std::string_view utf8);

}  // namespace zeb::bench
