#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace zeb::detail {

/// What is wrong with a document, and where (offset into its UTF-8 form). The message is null when
/// nothing is wrong.
struct JsonFault {
  const char* message = nullptr;
  std::size_t offset = 0;
  bool isEndOfText = false;  ///< more text could have made it right
};

/// Finds the offsets of all tokens in a JSON text: of brackets, colons, commas, opening quotes, and
/// the first character of every other token. Checks at the same time that the text is UTF-8, that
/// strings end, and that they contain no unescaped control characters.
///
/// Can be reused; keeps its memory for the next text.
class JsonStructure {
 public:
  JsonStructure();
  ~JsonStructure();

  /// Fills `indexes()`, or returns the first fault. Takes texts of up to 4 GiB.
  JsonFault scan(std::string_view utf8);

  /// The offsets in rising order. One more element after the end holds the text's length.
  std::span<const std::uint32_t> indexes() const noexcept { return indexes_; }

  std::size_t reservedBytes() const noexcept;
  /// Bytes that have been written and so occupy memory.
  std::size_t usedBytes() const noexcept;
  /// Returns the memory after the first `bytes` to the system. Invalidates `indexes()`.
  void discardAfter(std::size_t bytes) noexcept;

 private:
  class Engine;

  JsonFault scanPlainly(std::string_view utf8);

  Engine* engine_;
  std::vector<std::uint32_t> own_;  ///< the result of `scanPlainly`
  std::span<const std::uint32_t> indexes_;
};

}  // namespace zeb::detail
