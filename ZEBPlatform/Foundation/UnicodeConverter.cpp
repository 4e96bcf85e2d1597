// Compiled once for each kind of processor that it supports: the last lines choose one of these
// when the program runs.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE <ZEBPlatform/Foundation/UnicodeConverter.cpp>
// AVX-512 without the instructions that compress bytes and 16-bit units is not faster than AVX2,
// and there are hardly any processors with SSSE3 but without SSE4.
#define HWY_WANT_AVX3_DL
#define HWY_DISABLED_TARGETS (HWY_AVX3 | HWY_SSSE3)
// Only Highway's headers are used. Its library measures the processor's clock while a program
// starts, which takes milliseconds. So the choice below is our own, for x86 processors, and
// Highway's assertions, which would need the library, are left out.
#define HWY_IS_DEBUG_BUILD 0
#if !defined(__x86_64__)
#define HWY_COMPILE_ONLY_STATIC
#endif
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <ZEBPlatform/Foundation/UnicodeSequencesPrivate.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <type_traits>

HWY_BEFORE_NAMESPACE();

namespace zeb::detail::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

const UnicodeConverter& converter() { return plainUnicodeConverter; }

#else

namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Units = hn::CappedTag<std::uint16_t, 32>;
using Bytes = hn::Rebind<std::uint8_t, Units>;

/// The processor skips the memory of lanes that a mask excludes.
constexpr bool hasMaskedMemory = HWY_TARGET == HWY_AVX3_DL;

constexpr std::uint64_t lowestBits(std::size_t count) noexcept {
  return count < 64 ? (std::uint64_t{1} << count) - 1 : ~std::uint64_t{0};
}

/// One bit for each lane, the first lane in the lowest bit.
template <class Tag, class Mask>
HWY_INLINE std::uint64_t bitsOf(Tag tag, Mask mask) noexcept {
  // A number of exactly the mask's size stays in a register.
  constexpr std::size_t lanes = hn::MaxLanes(Tag());
  using Bits = std::conditional_t<
      lanes <= 8, std::uint8_t,
      std::conditional_t<lanes <= 16, std::uint16_t,
                         std::conditional_t<lanes <= 32, std::uint32_t, std::uint64_t>>>;
  Bits bits = 0;
  hn::StoreMaskBits(tag, mask, reinterpret_cast<std::uint8_t*>(&bits));
  return bits;
}

template <class Tag>
HWY_INLINE auto maskOf(Tag tag, std::uint64_t bits) noexcept {
  return hn::LoadMaskBits(tag, reinterpret_cast<const std::uint8_t*>(&bits));
}

/// The first `count` elements, and zeros after them.
template <class Tag, class Element>
HWY_INLINE hn::Vec<Tag> loadFirst(Tag tag, const Element* from, std::size_t count) noexcept {
  using Lane = hn::TFromD<Tag>;
  static_assert(sizeof(Lane) == sizeof(Element));
  if constexpr (hasMaskedMemory) {
    return hn::MaskedLoad(hn::FirstN(tag, count), tag, reinterpret_cast<const Lane*>(from));
  } else {
    Lane copy[hn::MaxLanes(Tag())] = {};
    std::memcpy(copy, from, std::min(count, hn::Lanes(tag)) * sizeof(Lane));
    return hn::LoadU(tag, copy);
  }
}

template <class Tag, class Element>
HWY_INLINE hn::Vec<Tag> loadAll(Tag tag, const Element* from) noexcept {
  return hn::LoadU(tag, reinterpret_cast<const hn::TFromD<Tag>*>(from));
}

/// Stores the first `count` lanes only.
template <class Tag, class Vector, class Element>
HWY_INLINE void storeFirst(Vector vector, Tag tag, Element* to, std::size_t count) noexcept {
  using Lane = hn::TFromD<Tag>;
  static_assert(sizeof(Lane) == sizeof(Element));
  if constexpr (hasMaskedMemory) {
    hn::BlendedStore(vector, hn::FirstN(tag, count), tag, reinterpret_cast<Lane*>(to));
  } else {
    Lane copy[hn::MaxLanes(Tag())];
    hn::StoreU(vector, tag, copy);
    std::memcpy(to, copy, count * sizeof(Lane));
  }
}

template <class Tag, class Vector, class Element>
HWY_INLINE void storeAll(Vector vector, Tag tag, Element* to) noexcept {
  hn::StoreU(vector, tag, reinterpret_cast<hn::TFromD<Tag>*>(to));
}

/// Converts ASCII in large blocks, up to a block that contains another character.
HWY_INLINE void copyASCII(std::string_view utf8, char16_t* units, TextProgress& progress) noexcept {
  const Units unitTag;
  const Bytes byteTag;
  const std::size_t lanes = hn::Lanes(unitTag);
  while (utf8.size() - progress.read >= 2 * lanes) {
    const char* const from = utf8.data() + progress.read;
    char16_t* const to = units + progress.written;
    const auto first = loadAll(byteTag, from);
    const auto second = loadAll(byteTag, from + lanes);
    const auto isASCII = hn::Lt(hn::Or(first, second), hn::Set(byteTag, 0x80));
    if (!hn::AllTrue(byteTag, isASCII)) return;
    storeAll(hn::PromoteTo(unitTag, first), unitTag, to);
    storeAll(hn::PromoteTo(unitTag, second), unitTag, to + lanes);
    progress.read += 2 * lanes;
    progress.written += 2 * lanes;
  }
}

enum class Decoding { replacing, wellFormed, untilBackslash };

/// Whether a text may have any length, or lies in one block that can be read as a whole. Most texts
/// of documents are short, so they have code without the questions of longer texts.
enum class Extent { any, oneBlock };

#if HWY_TARGET != HWY_AVX3_DL

/// How to move the units that have a bit in the index to the front.
struct UnitPlaces {
  alignas(16) std::uint8_t of[256][16];
};
constexpr UnitPlaces unitPlaces = [] {
  UnitPlaces result{};
  for (unsigned index = 0; index < 256; ++index) {
    std::size_t kept = 0;
    for (unsigned unit = 0; unit < 8; ++unit) {
      if (!(index >> unit & 1)) continue;
      result.of[index][kept++] = static_cast<std::uint8_t>(2 * unit);
      result.of[index][kept++] = static_cast<std::uint8_t>(2 * unit + 1);
    }
  }
  return result;
}();

#endif

/// Stores the units whose bits are set, one after the other, and anything after them up to the
/// number of lanes.
template <class Vector>
HWY_INLINE void storeKept(Vector units, std::uint64_t kept, char16_t* to) noexcept {
#if HWY_TARGET == HWY_AVX3_DL
  const Units tag;
  storeAll(hn::Compress(units, maskOf(tag, kept)), tag, to);
#else
  // The library's own function copies its table for every call when g++ compiles it.
  constexpr std::size_t lanesOfTable = 8;
  const hn::CappedTag<std::uint16_t, lanesOfTable> partTag;
  const hn::Repartition<std::uint8_t, decltype(partTag)> byteTag;
  const auto storePart = [&](auto part, std::uint64_t bits, char16_t* target) HWY_ATTR {
    const auto places = hn::Load(byteTag, unitPlaces.of[bits & 0xFF]);
    storeAll(hn::TableLookupBytes(hn::BitCast(byteTag, part), places), byteTag,
             reinterpret_cast<char*>(target));
  };
  if constexpr (hn::MaxLanes(Units()) == lanesOfTable) {
    storePart(units, kept, to);
  } else {
    storePart(hn::LowerHalf(partTag, units), kept, to);
    storePart(hn::UpperHalf(partTag, units), kept >> lanesOfTable,
              to + std::popcount(kept & lowestBits(lanesOfTable)));
  }
#endif
}

/// The bytes after a byte that its unit depends on.
constexpr std::size_t lookAhead = 2;

/// For every byte of a block computes the unit of a sequence that begins there, and then keeps the
/// units of the bytes where one does. So the work does not depend on the sequences' lengths.
template <Decoding decoding, Extent extent = Extent::any>
HWY_INLINE TextProgress decodeBlocks(std::string_view utf8, std::size_t readable,
                                     char16_t* units) noexcept {
  constexpr bool isChecked = decoding != Decoding::untilBackslash;
  constexpr std::size_t lanes = hn::MaxLanes(Units());
  const Units unitTag;
  const Bytes byteTag;
  const auto all = [&](std::uint16_t value) HWY_ATTR { return hn::Set(unitTag, value); };
  const auto allBytes = [&](std::uint8_t value) HWY_ATTR { return hn::Set(byteTag, value); };
  TextProgress progress;

  while (progress.read < utf8.size()) {
    const char* const from = utf8.data() + progress.read;
    char16_t* const to = units + progress.written;
    const std::size_t left = utf8.size() - progress.read;
    const std::size_t visible = readable - progress.read;
    const bool isWhole = extent == Extent::oneBlock || visible >= lanes + lookAhead;
    const char* source = from;
    char padded[lanes + lookAhead];
    if (!hasMaskedMemory && !isWhole) {
      std::memset(padded, 0, sizeof padded);
      std::memcpy(padded, from, visible);
      source = padded;
    }
    const auto bytesFrom = [&](std::size_t offset) HWY_ATTR {
      return isWhole || !hasMaskedMemory
                 ? loadAll(byteTag, source + offset)
                 : loadFirst(byteTag, from + offset, visible - std::min(offset, visible));
    };
    const auto firstBytes = bytesFrom(0);
    const auto first = hn::PromoteTo(unitTag, firstBytes);
    const auto second = hn::PromoteTo(unitTag, bytesFrom(1));

    // One bit for each byte of the block: it continues a sequence, begins one of two bytes or more,
    // and so on.
    const std::uint64_t continuations =
        bitsOf(byteTag, hn::Eq(hn::And(firstBytes, allBytes(0xC0)), allBytes(0x80)));
    const std::uint64_t two = bitsOf(byteTag, hn::Gt(firstBytes, allBytes(0xBF)));
    const std::uint64_t three = bitsOf(byteTag, hn::Gt(firstBytes, allBytes(0xDF)));
    const std::uint64_t four = bitsOf(byteTag, hn::Gt(firstBytes, allBytes(0xEF)));

    // A sequence that is not entirely in the block is left to the next one. This looks at single
    // bytes, because the next block waits for the result.
    std::size_t end = left;
    if (extent == Extent::any && left >= lanes) {
      const auto isAtLeast = [from](std::size_t place, unsigned char lead) -> std::size_t {
        return static_cast<unsigned char>(from[place]) >= lead;
      };
      end = lanes - isAtLeast(lanes - 1, 0xC0) - 2 * isAtLeast(lanes - 2, 0xE0) -
            3 * isAtLeast(lanes - 3, 0xF0);
    }
    bool isLast = false;
    if constexpr (decoding == Decoding::untilBackslash) {
      const std::uint64_t backslashes =
          bitsOf(byteTag, hn::Eq(firstBytes, allBytes('\\'))) & lowestBits(end);
      isLast = backslashes != 0;
      if (isLast) end = static_cast<std::size_t>(std::countr_zero(backslashes));
    }

    const auto isTwo = hn::Gt(first, all(0xBF));
    const auto low = hn::And(second, all(0x3F));
    const auto twoValue = hn::Or(hn::And(hn::ShiftLeft<6>(first), all(0x7C0)), low);
    auto value = hn::IfThenElse(isTwo, twoValue, first);
    auto isFault = hn::And(isTwo, hn::Lt(value, all(0x80)));
    auto lowest = hn::Zero(unitTag);
    // Most scripts have either hardly any sequences of three bytes or many.
    if (three != 0) {
      const auto isThree = hn::Gt(first, all(0xDF));
      lowest = hn::And(hn::PromoteTo(unitTag, bytesFrom(2)), all(0x3F));
      const auto threeValue =
          hn::Or(hn::ShiftLeft<12>(first), hn::Or(hn::ShiftLeft<6>(low), lowest));
      value = hn::IfThenElse(isThree, threeValue, value);
      isFault = hn::Or(hn::And(isTwo, hn::Lt(value, all(0x80))),
                       hn::And(isThree, hn::Lt(value, all(0x800))));
      if constexpr (decoding == Decoding::wellFormed) {
        const auto isSurrogate = hn::Eq(hn::And(value, all(0xF800)), all(0xD800));
        isFault = hn::Or(isFault, hn::And(isThree, isSurrogate));
      }
    }
    std::uint64_t faults = isChecked ? bitsOf(unitTag, isFault) & ~four : 0;
    std::uint64_t kept = ~continuations;
    if (four != 0) {
      // The first unit of a pair takes the place of the first byte, the second that of the second.
      const auto high = hn::Add(hn::Or(hn::ShiftLeft<8>(hn::And(first, all(0x0F))),
                                       hn::Or(hn::ShiftLeft<2>(low), hn::ShiftRight<4>(lowest))),
                                all(0xD7C0));
      const auto pairedLow =
          hn::Or(hn::ShiftLeft<6>(hn::And(second, all(0x0F))), hn::Or(lowest, all(0xDC00)));
      value = hn::IfThenElse(maskOf(unitTag, four), high, value);
      value = hn::IfThenElse(maskOf(unitTag, four << 1), pairedLow, value);
      kept |= four << 1;
      if constexpr (isChecked) {
        const auto isHigh = hn::Eq(hn::And(high, all(0xFC00)), all(0xD800));
        faults |= four & ~bitsOf(unitTag, isHigh);
      }
    }
    if constexpr (isChecked) {
      const std::uint64_t misplaced = (two << 1 | three << 2 | four << 3) ^ continuations;
      if (HWY_UNLIKELY(((faults & lowestBits(end)) | (misplaced & lowestBits(lanes))) != 0)) {
        constexpr auto malformed =
            decoding == Decoding::wellFormed ? Malformed::stops : Malformed::replaced;
        const std::string_view rest = utf8.substr(progress.read);
        const TextProgress plain = decodeSequences<malformed>(rest, lanes, to);
        progress.read += plain.read;
        progress.written += plain.written;
        if (malformed == Malformed::stops && plain.read < std::min(lanes, left)) break;
        continue;
      }
    }

    kept &= lowestBits(end);
    const auto count = static_cast<std::size_t>(std::popcount(kept));
    if (!isChecked || left >= lanes) {
      storeKept(value, kept, to);
    } else {
      char16_t copy[lanes];
      storeKept(value, kept, copy);
      std::memcpy(to, copy, count * sizeof(char16_t));
    }
    progress.read += end;
    progress.written += count;
    if (isLast || extent == Extent::oneBlock) break;
    if (isChecked && (two | continuations) == 0) copyASCII(utf8, units, progress);
  }
  return progress;
}

std::size_t decode(std::string_view utf8, char16_t* units) noexcept {
  return decodeBlocks<Decoding::replacing>(utf8, utf8.size(), units).written;
}

TextProgress decodeWellFormed(std::string_view utf8, char16_t* units) noexcept {
  return decodeBlocks<Decoding::wellFormed>(utf8, utf8.size(), units);
}

HWY_NOINLINE TextProgress decodeLongUntilBackslash(std::string_view utf8, std::size_t readable,
                                                   char16_t* units) noexcept {
  return decodeBlocks<Decoding::untilBackslash>(utf8, readable, units);
}

TextProgress decodeUntilBackslash(std::string_view utf8, std::size_t readable,
                                  char16_t* units) noexcept {
  const std::size_t lanes = hn::Lanes(Units());
  if (utf8.size() > lanes || readable < lanes + lookAhead) {
    return decodeLongUntilBackslash(utf8, readable, units);
  }
  return decodeBlocks<Decoding::untilBackslash, Extent::oneBlock>(utf8, readable, units);
}

std::size_t encodedLength(std::u16string_view units) noexcept {
  const Units tag;
  const std::size_t lanes = hn::Lanes(tag);
  const auto all = [&](std::uint16_t value) HWY_ATTR { return hn::Set(tag, value); };
  std::size_t length = units.size();
  for (std::size_t read = 0; read < units.size(); read += lanes) {
    const char16_t* const from = units.data() + read;
    const std::size_t left = units.size() - read;
    const bool isWhole = left > lanes;
    const auto own = isWhole ? loadAll(tag, from) : loadFirst(tag, from, left);
    const auto next = isWhole ? loadAll(tag, from + 1) : loadFirst(tag, from + 1, left - 1);
    const auto isPair = hn::And(hn::Eq(hn::And(own, all(0xFC00)), all(0xD800)),
                                hn::Eq(hn::And(next, all(0xFC00)), all(0xDC00)));
    length += hn::CountTrue(tag, hn::Gt(own, all(0x7F))) +
              hn::CountTrue(tag, hn::Gt(own, all(0x7FF))) - 2 * hn::CountTrue(tag, isPair);
  }
  return length;
}

#if HWY_TARGET == HWY_AVX3_DL

constexpr std::size_t unitsPerBlock = 16;

#else

constexpr std::size_t unitsPerBlock = 4;

/// How to move the bytes of units together: a place for each byte, and the number of bytes.
struct Packing {
  alignas(16) std::uint8_t places[256][16];
  std::uint8_t lengths[256];
};

/// For `units` units in 16 bytes. The index has a bit for each unit that needs a second byte, and
/// above them one for each that needs a third.
constexpr Packing packingOf(unsigned units) {
  Packing result{};
  for (unsigned index = 0; index < 256; ++index) {
    std::uint8_t length = 0;
    for (unsigned unit = 0; unit < units; ++unit) {
      const unsigned bytes = 1 + (index >> unit & 1) + (index >> (unit + units) & 1);
      for (unsigned byte = 0; byte < bytes; ++byte) {
        result.places[index][length++] = static_cast<std::uint8_t>(16 / units * unit + byte);
      }
    }
    result.lengths[index] = length;
  }
  return result;
}
constexpr Packing packing = packingOf(unitsPerBlock);
constexpr Packing twoBytePacking = packingOf(2 * unitsPerBlock);

#endif

using TwoBlocks = hn::CappedTag<std::uint16_t, 2 * unitsPerBlock>;
using Words = hn::CappedTag<std::uint32_t, unitsPerBlock>;
using BlockUnits = hn::Rebind<std::uint16_t, Words>;
using WordBytes = hn::Repartition<std::uint8_t, Words>;

enum class Encoding { all, untilEscape };

/// Moves `end`, and returns true, if a unit before it stops the conversion: one that JSON escapes,
/// or one whose bit is set in `stops`.
template <class Vector, class Tag>
HWY_INLINE bool limitToPlain(Vector units, Tag tag, SlashEscapes slashes, std::uint64_t stops,
                             std::size_t& end) noexcept {
  auto isEscaped =
      hn::Or(hn::Lt(units, hn::Set(tag, 0x20)),
             hn::Or(hn::Eq(units, hn::Set(tag, '"')), hn::Eq(units, hn::Set(tag, '\\'))));
  if (slashes == SlashEscapes::yes) {
    isEscaped = hn::Or(isEscaped, hn::Eq(units, hn::Set(tag, '/')));
  }
  stops = (stops | bitsOf(tag, isEscaped)) & lowestBits(end);
  if (stops == 0) return false;
  end = static_cast<std::size_t>(std::countr_zero(stops));
  return true;
}

#if HWY_TARGET == HWY_AVX3_DL

/// Stores the bytes for which `used` is not zero, one after the other, and returns their number.
template <class Vector>
HWY_INLINE std::size_t storeUsedBytes(Vector bytes, Vector used, char* to,
                                      std::size_t room) noexcept {
  const WordBytes tag;
  const auto isUsed = hn::Ne(used, hn::Zero(tag));
  const auto packed = hn::Compress(bytes, isUsed);
  const std::size_t count = hn::CountTrue(tag, isUsed);
  if (room >= hn::Lanes(tag)) {
    storeAll(packed, tag, to);
  } else {
    storeFirst(packed, tag, to, count);
  }
  return count;
}

#else

/// Stores the bytes that the packing's entry takes together, less `unused` bytes, and returns their
/// number.
template <class Vector>
HWY_INLINE std::size_t storePacked(Vector bytes, const Packing& table, std::size_t index,
                                   std::size_t unused, char* to, std::size_t room) noexcept {
  const WordBytes tag;
  const auto packed = hn::TableLookupBytes(bytes, hn::Load(tag, table.places[index]));
  const std::size_t count = table.lengths[index] - unused;
  if (room >= hn::Lanes(tag)) {
    storeAll(packed, tag, to);
  } else {
    storeFirst(packed, tag, to, count);
  }
  return count;
}

#endif

/// Stores the first `count` units, which need at most two bytes each.
template <class Vector>
HWY_INLINE std::size_t storeTwoBytes(Vector units, std::size_t count, char* to,
                                     std::size_t room) noexcept {
  const TwoBlocks tag;
  const WordBytes byteTag;
  const auto all = [&](std::uint16_t value) HWY_ATTR { return hn::Set(tag, value); };
  const auto isTwo = hn::Gt(units, all(0x7F));
  const auto two = hn::Or(hn::Or(hn::ShiftRight<6>(units), all(0xC0)),
                          hn::Or(hn::ShiftLeft<8>(hn::And(units, all(0x3F))), all(0x8000)));
  const auto bytes = hn::BitCast(byteTag, hn::IfThenElse(isTwo, two, units));
#if HWY_TARGET == HWY_AVX3_DL
  const auto used =
      hn::IfThenElseZero(hn::FirstN(tag, count), hn::IfThenElse(isTwo, all(0xFFFF), all(0xFF)));
  return storeUsedBytes(bytes, hn::BitCast(byteTag, used), to, room);
#else
  const std::size_t index = bitsOf(tag, isTwo) & lowestBits(count);
  return storePacked(bytes, twoBytePacking, index, 2 * unitsPerBlock - count, to, room);
#endif
}

/// Spreads a block's units over words with room for four bytes, computes the bytes, and then moves
/// them together.
template <Encoding encoding>
HWY_INLINE TextProgress encodeBlocks(std::u16string_view units, char* utf8, std::size_t room,
                                     SlashEscapes slashes) noexcept {
  const Words wordTag;
  const BlockUnits unitTag;
  const WordBytes byteTag;
  const auto all = [&](std::uint16_t value) HWY_ATTR { return hn::Set(unitTag, value); };
  const auto allWords = [&](std::uint32_t value) HWY_ATTR { return hn::Set(wordTag, value); };
  const auto stopsPlainly = [slashes](char32_t scalar) {
    return encoding == Encoding::untilEscape && isEscapedInJSON(scalar, slashes);
  };
  TextProgress progress;
  bool mayBeTwo = true;  // as the block before

  while (progress.read < units.size()) {
    const char16_t* const from = units.data() + progress.read;
    char* const to = utf8 + progress.written;
    const std::size_t left = units.size() - progress.read;
    // Units that need at most two bytes are converted without spreading them, twice as many at
    // once.
    const auto pairOfBlocks =
        left >= 2 * unitsPerBlock ? loadAll(TwoBlocks(), from) : loadFirst(TwoBlocks(), from, left);
    if (mayBeTwo && hn::AllTrue(TwoBlocks(), hn::Lt(pairOfBlocks, hn::Set(TwoBlocks(), 0x800)))) {
      std::size_t end = std::min(left, 2 * unitsPerBlock);
      const bool isLast = encoding == Encoding::untilEscape &&
                          limitToPlain(pairOfBlocks, TwoBlocks(), slashes, std::uint64_t{0}, end);
      const std::size_t count = storeTwoBytes(pairOfBlocks, end, to, room - progress.written);
      progress.read += end;
      progress.written += count;
      if (isLast) break;
      continue;
    }
    const auto block =
        left >= unitsPerBlock ? loadAll(unitTag, from) : loadFirst(unitTag, from, left);
    std::size_t end = std::min(left, unitsPerBlock);
    std::uint64_t stops = 0;
    const std::uint64_t highs = bitsOf(unitTag, hn::Eq(hn::And(block, all(0xFC00)), all(0xD800)));
    const std::uint64_t lows = bitsOf(unitTag, hn::Eq(hn::And(block, all(0xFC00)), all(0xDC00)));
    std::uint64_t pairs = 0;
    if ((highs | lows) != 0) {
      if constexpr (unitsPerBlock == 4) {
        const TextProgress plain =
            encodeSequences(units.substr(progress.read), end, to, stopsPlainly);
        progress.read += plain.read;
        progress.written += plain.written;
        if (plain.read < end) break;
        continue;
      }
      // A pair that the next block completes is left to that block.
      if (left > unitsPerBlock && highs >> (unitsPerBlock - 1) != 0) end = unitsPerBlock - 1;
      pairs = highs & lows >> 1;
      if constexpr (encoding == Encoding::untilEscape) {
        stops = (highs & ~pairs) | (lows & ~(pairs << 1));
      }
    }
    const bool isLast =
        encoding == Encoding::untilEscape && limitToPlain(block, unitTag, slashes, stops, end);

    const auto words = hn::PromoteTo(wordTag, block);
    const auto lastSix = hn::Or(hn::And(words, allWords(0x3F)), allWords(0x80));
    const auto isTwo = hn::Gt(words, allWords(0x7F));
    const auto isThree = hn::Gt(words, allWords(0x7FF));
    mayBeTwo = hn::AllFalse(wordTag, isThree);
    const auto two =
        hn::Or(hn::Or(hn::ShiftRight<6>(words), allWords(0xC0)), hn::ShiftLeft<8>(lastSix));
    const auto middleSix =
        hn::Or(hn::And(hn::ShiftLeft<2>(words), allWords(0x3F00)), allWords(0x8000));
    const auto three = hn::Or(hn::Or(hn::ShiftRight<12>(words), allWords(0xE0)),
                              hn::Or(middleSix, hn::ShiftLeft<16>(lastSix)));
    auto bytes = hn::IfThenElse(isThree, three, hn::IfThenElse(isTwo, two, words));

#if HWY_TARGET == HWY_AVX3_DL
    auto used = hn::IfThenElse(isThree, allWords(0xFFFFFF),
                               hn::IfThenElse(isTwo, allWords(0xFFFF), allWords(0xFF)));
    if (pairs != 0) {
      const auto next = hn::PromoteTo(wordTag, loadFirst(unitTag, from + 1, left - 1));
      const auto scalar = hn::Add(hn::Or(hn::ShiftLeft<10>(hn::And(words, allWords(0x3FF))),
                                         hn::And(next, allWords(0x3FF))),
                                  allWords(0x10000));
      const auto sixAt = [&](auto shifted, std::uint32_t place) HWY_ATTR {
        return hn::Or(hn::And(shifted, allWords(0x3Fu << place)), allWords(0x80u << place));
      };
      const auto four = hn::Or(hn::Or(hn::ShiftRight<18>(scalar), allWords(0xF0)),
                               hn::Or(sixAt(hn::ShiftRight<4>(scalar), 8),
                                      hn::Or(sixAt(hn::ShiftLeft<10>(scalar), 16),
                                             sixAt(hn::ShiftLeft<24>(scalar), 24))));
      bytes = hn::IfThenElse(maskOf(wordTag, pairs), four, bytes);
      used = hn::IfThenElse(maskOf(wordTag, pairs), allWords(0xFFFFFFFF), used);
      used = hn::IfThenZeroElse(maskOf(wordTag, pairs << 1), used);
    }
    used = hn::IfThenElseZero(hn::FirstN(wordTag, end), used);
    const std::size_t count = storeUsedBytes(
        hn::BitCast(byteTag, bytes), hn::BitCast(byteTag, used), to, room - progress.written);
#else
    const std::uint64_t kept = lowestBits(end);
    const std::size_t index = (bitsOf(wordTag, isTwo) & kept) | (bitsOf(wordTag, isThree) & kept)
                                                                    << unitsPerBlock;
    const std::size_t count = storePacked(hn::BitCast(byteTag, bytes), packing, index,
                                          unitsPerBlock - end, to, room - progress.written);
#endif
    progress.read += end;
    progress.written += count;
    if (isLast) break;
  }
  return progress;
}

std::size_t encode(std::u16string_view units, char* utf8, std::size_t room) noexcept {
  return encodeBlocks<Encoding::all>(units, utf8, room, SlashEscapes::no).written;
}

TextProgress encodeUntilEscape(std::u16string_view units, char* utf8,
                               SlashEscapes slashes) noexcept {
  const std::size_t room = 3 * units.size() + UnicodeConverter::slack;
  return encodeBlocks<Encoding::untilEscape>(units, utf8, room, slashes);
}

}  // namespace

const UnicodeConverter& converter() {
  static constexpr UnicodeConverter own = {decode,        decodeWellFormed, decodeUntilBackslash,
                                           encodedLength, encode,           encodeUntilEscape};
  return own;
}

#endif

}  // namespace zeb::detail::HWY_NAMESPACE

HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace zeb::detail {

namespace {

#if HWY_TARGETS & (HWY_AVX2 | HWY_AVX3_DL)
bool supportsAVX2() noexcept {
  return __builtin_cpu_supports("x86-64-v3") && __builtin_cpu_supports("aes") &&
         __builtin_cpu_supports("pclmul");
}
#endif
#if HWY_TARGETS & HWY_AVX3_DL
bool supportsAVX3DL() noexcept {
  return supportsAVX2() && __builtin_cpu_supports("x86-64-v4") &&
         __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2") &&
         __builtin_cpu_supports("avx512vnni") && __builtin_cpu_supports("avx512bitalg") &&
         __builtin_cpu_supports("avx512vpopcntdq") && __builtin_cpu_supports("vpclmulqdq") &&
         __builtin_cpu_supports("vaes");
}
#endif
#if HWY_TARGETS & HWY_SSE4
bool supportsSSE4() noexcept {
  return __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("aes") &&
         __builtin_cpu_supports("pclmul");
}
#endif

/// Calls `visit` with the implementation of each target that this processor supports, the best one
/// first, until it returns true. The last one is that for all processors.
template <class Visit>
void visitSupported(const Visit& visit) {
#if HWY_TARGETS & HWY_AVX3_DL
  if (supportsAVX3DL() && visit(N_AVX3_DL::converter())) return;
#endif
#if HWY_TARGETS & HWY_AVX2
  if (supportsAVX2() && visit(N_AVX2::converter())) return;
#endif
#if HWY_TARGETS & HWY_SSE4
  if (supportsSSE4() && visit(N_SSE4::converter())) return;
#endif
  visit(HWY_NAMESPACE::converter());
}

const UnicodeConverter& chosenConverter() noexcept {
  const UnicodeConverter* chosen = nullptr;
  visitSupported([&](const UnicodeConverter& best) {
    chosen = &best;
    return true;
  });
  return *chosen;
}

}  // namespace

const UnicodeConverter& unicodeConverter() noexcept {
  static const UnicodeConverter& chosen = chosenConverter();
  return chosen;
}

std::vector<const UnicodeConverter*> supportedUnicodeConverters() {
  std::vector<const UnicodeConverter*> converters{&plainUnicodeConverter};
  visitSupported([&](const UnicodeConverter& found) {
    if (&found != &plainUnicodeConverter) converters.push_back(&found);
    return false;
  });
  return converters;
}

}  // namespace zeb::detail

#endif
