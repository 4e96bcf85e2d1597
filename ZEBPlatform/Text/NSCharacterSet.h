#pragma once

#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/Ref.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

class NSMutableCharacterSet;

/// A set of Unicode code points. Immutable; any thread.
///
/// A test for membership is one look into a bitmap for code points below U+10000, and two for the
/// others. A set takes 10 KiB, and 128 bytes more for each block of 1024 code points above U+FFFF
/// of which it has some but not all. So keep sets instead of making them again and again.
///
/// The well-known sets are made once, at the first use, and live as long as the process. Their
/// contents follow the general categories of the Unicode version of the installed ICU. Surrogates
/// (U+D800 to U+DFFF) are in none of them, `illegalCharacterSet` included, so that an unpaired
/// surrogate counts as some character that a user may see. They are in the inverted sets.
class NSCharacterSet : public NSObject {
 public:
  /// No code points above this one exist.
  static constexpr char32_t maxCodePoint = 0x10FFFF;

  /// Categories Zs and the tabulator U+0009, without line ends.
  static const Ref<NSCharacterSet>& whitespaceCharacterSet();
  /// The union of `whitespaceCharacterSet` and `newlineCharacterSet`.
  static const Ref<NSCharacterSet>& whitespaceAndNewlineCharacterSet();
  /// U+000A to U+000D, U+0085, U+2028 and U+2029.
  static const Ref<NSCharacterSet>& newlineCharacterSet();
  /// Category Nd: the decimal digits of all scripts.
  static const Ref<NSCharacterSet>& decimalDigitCharacterSet();
  /// Categories Cc and Cf: control and format characters.
  static const Ref<NSCharacterSet>& controlCharacterSet();
  /// Category Cn: code points that are not assigned, and those that never will be. Private use is
  /// not illegal.
  static const Ref<NSCharacterSet>& illegalCharacterSet();
  /// Categories L* and M*: letters and the marks that combine with them.
  static const Ref<NSCharacterSet>& letterCharacterSet();
  /// Categories Lu and Lt.
  static const Ref<NSCharacterSet>& uppercaseLetterCharacterSet();
  /// Category Ll.
  static const Ref<NSCharacterSet>& lowercaseLetterCharacterSet();
  /// Categories L*, M* and N*.
  static const Ref<NSCharacterSet>& alphanumericCharacterSet();
  /// Category M*.
  static const Ref<NSCharacterSet>& nonBaseCharacterSet();
  /// Category P*.
  static const Ref<NSCharacterSet>& punctuationCharacterSet();
  /// Category S*.
  static const Ref<NSCharacterSet>& symbolCharacterSet();

  /// The characters of the text; a surrogate pair is one. Empty for nil.
  static Ref<NSCharacterSet> characterSetWithCharactersInString(const NSString& string);
  /// The code points from `range.location` on. What lies above U+10FFFF is left out.
  static Ref<NSCharacterSet> characterSetWithRange(NSRange range);

  /// The set of all code points that are not in this one.
  [[nodiscard]] Ref<NSCharacterSet> invertedSet() const;

  /// For one UTF-16 code unit; a surrogate counts as the code point of its number.
  bool characterIsMember(char16_t unit) const noexcept {
    return (basic_[unit / bitsOfWord] >> (unit % bitsOfWord)) & 1;
  }
  /// False for numbers above U+10FFFF.
  bool longCharacterIsMember(char32_t codePoint) const noexcept {
    if (codePoint <= 0xFFFF) return characterIsMember(static_cast<char16_t>(codePoint));
    if (codePoint > maxCodePoint) return false;
    const char32_t above = codePoint - 0x10000;
    const Block& block = blocks_[blockOf_[above / bitsOfBlock]];
    const char32_t bit = above % bitsOfBlock;
    return (block[bit / bitsOfWord] >> (bit % bitsOfWord)) & 1;
  }
  /// Whether all code points of `other` are in this set. True for nil.
  bool isSupersetOfSet(const Ref<NSCharacterSet>& other) const noexcept;

  /// The set itself, or a copy that does not change if this set is mutable.
  [[nodiscard]] virtual Ref<NSCharacterSet> copy() const;
  [[nodiscard]] Ref<NSMutableCharacterSet> mutableCopy() const;

  /// Sets with the same code points are equal, mutable or not.
  bool isEqual(const NSObject& other) const override;
  std::size_t hash() const noexcept override;
  std::string className() const override { return "NSCharacterSet"; }

  /// The empty set.
  NSCharacterSet();

 protected:
  enum class Change : bool { remove, add };

  /// The code points from `first` up to and including `last`, which may be at most `maxCodePoint`.
  void changeRange(char32_t first, char32_t last, Change change);
  void changeRange(NSRange range, Change change);
  void changeCharacters(const NSString& string, Change change);
  /// Adds the code points of `other`, or keeps only those that `other` has.
  void unite(const NSCharacterSet& other);
  void intersect(const NSCharacterSet& other);
  void invert() noexcept;
  /// A new set with the same code points.
  Ref<NSCharacterSet> immutableCopy() const;

 private:
  static constexpr std::uint32_t bitsOfWord = 64;
  static constexpr std::uint32_t bitsOfBlock = 1024;
  using Block = std::array<std::uint64_t, bitsOfBlock / bitsOfWord>;

  /// `categories` has the bit 1 << c for each general category c, numbered as ICU does.
  static Ref<NSCharacterSet> setOfCategories(std::uint32_t categories,
                                             std::u16string_view others = {});
  const Block& blockAt(std::size_t index) const noexcept { return blocks_[blockOf_[index]]; }
  void assign(const NSCharacterSet& other);
  /// A block that no other index uses.
  Block& ownBlockAt(std::size_t index);

  /// One bit for each code point below U+10000.
  std::array<std::uint64_t, 0x10000 / bitsOfWord> basic_{};
  /// For each block of code points from U+10000 on the index of its bits.
  std::array<std::uint16_t, (maxCodePoint + 1 - 0x10000) / bitsOfBlock> blockOf_{};
  /// The first one has no code point and the second one has all; the others belong to one block.
  std::vector<Block> blocks_;
};

/// A set of code points that changes in place. It belongs to one thread at a time.
class NSMutableCharacterSet : public NSCharacterSet {
 public:
  /// An empty set.
  static Ref<NSMutableCharacterSet> characterSet() { return makeRef<NSMutableCharacterSet>(); }

  /// What lies above U+10FFFF is left out.
  void addCharactersInRange(NSRange range) { changeRange(range, Change::add); }
  void removeCharactersInRange(NSRange range) { changeRange(range, Change::remove); }
  /// A surrogate pair is one character. Nil changes nothing.
  void addCharactersInString(const NSString& string) { changeCharacters(string, Change::add); }
  void removeCharactersInString(const NSString& string) {
    changeCharacters(string, Change::remove);
  }
  /// Nil counts as the empty set.
  void formUnionWithCharacterSet(const Ref<NSCharacterSet>& other);
  void formIntersectionWithCharacterSet(const Ref<NSCharacterSet>& other);
  using NSCharacterSet::invert;

  [[nodiscard]] Ref<NSCharacterSet> copy() const override { return immutableCopy(); }
  std::string className() const override { return "NSMutableCharacterSet"; }

 private:
  friend class NSCharacterSet;
};

}  // namespace zeb
