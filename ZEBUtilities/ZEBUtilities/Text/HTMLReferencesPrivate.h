#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace zeb::detail {

/// A character reference in an escaped text that stands for a character.
struct HTMLReference {
  std::uint32_t start;  ///< the place of the "&"
  std::uint32_t end;    ///< the place after the ";"
  char32_t replacement;
  std::uint32_t shrinkBefore;  ///< the units by which all earlier references shrink the text

  std::uint32_t replacementLength() const noexcept { return replacement < 0x10000 ? 1 : 2; }
  /// Every reference is longer than its replacement.
  std::uint32_t shrink() const noexcept { return end - start - replacementLength(); }
};

/// The references of a text that are to be replaced, in order. Found in linear time, whatever the
/// text is: each "&" is followed only as far as what stands there can become a reference, which is
/// not beyond the next "&".
///
/// The memory is that of the last text of the same thread. A thread keeps up to 128 KiB.
class HTMLReferences {
 public:
  explicit HTMLReferences(std::string_view ascii);
  explicit HTMLReferences(std::u16string_view units);
  HTMLReferences(const HTMLReferences&) = delete;
  HTMLReferences& operator=(const HTMLReferences&) = delete;
  ~HTMLReferences();

  std::span<const HTMLReference> list() const noexcept { return *list_; }

 private:
  HTMLReferences();

  std::unique_ptr<std::vector<HTMLReference>> list_;
};

}  // namespace zeb::detail
