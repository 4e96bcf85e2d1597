#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace zeb::detail {

/// What is wrong with a document, and where (offset into its UTF-8 form). No message: nothing wrong.
struct JsonFault {
  const char* message = nullptr;
  std::size_t offset = 0;
  bool isEndOfText = false;  ///< it is only wrong because the text ends
};

/// Finds the places in a JSON text where something begins: every bracket, colon and comma, every
/// string's opening quote, every other token's first character. Checks what can be checked on the
/// way: that the text is UTF-8, that strings end, and that they hold no bare control characters.
///
/// Reusable: keeps its memory for the next text.
class JsonStructure {
 public:
  JsonStructure();
  ~JsonStructure();

  /// Answers no message and fills `indexes()`, or what is wrong first. At most 4 GiB.
  JsonFault scan(std::string_view utf8);

  /// The places in rising order, as offsets. Followed by one more number, which is the text's length.
  std::span<const std::uint32_t> indexes() const noexcept { return indexes_; }

  std::size_t reservedBytes() const noexcept;
  /// Bytes that have been written, and so take memory.
  std::size_t usedBytes() const noexcept;
  /// Gives the system the memory back that lies behind the first `bytes`. The places are lost.
  void discardBehind(std::size_t bytes) noexcept;

 private:
  class Engine;

  JsonFault scanPlainly(std::string_view utf8);

  Engine* engine_;
  std::vector<std::uint32_t> own_;  ///< what `scanPlainly` found
  std::span<const std::uint32_t> indexes_;
};

}  // namespace zeb::detail
