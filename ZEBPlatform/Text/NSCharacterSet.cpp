#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Text/NSCharacterSet.h>
#include <ZEBPlatform/Text/detail/StringUnits.h>
#include <unicode/uchar.h>

#include <algorithm>

namespace zeb {

namespace {

constexpr std::uint16_t emptyBlock = 0;
constexpr std::uint16_t fullBlock = 1;
constexpr std::uint64_t allBits = ~std::uint64_t{0};

/// Sets or clears the bits `first` up to and including `last` of the bitmap.
void changeBits(std::uint64_t* words, std::uint32_t first, std::uint32_t last, bool value) {
  const std::uint32_t firstWord = first / 64;
  const std::uint32_t lastWord = last / 64;
  for (std::uint32_t word = firstWord; word <= lastWord; ++word) {
    std::uint64_t mask = allBits;
    if (word == firstWord) mask &= allBits << (first % 64);
    if (word == lastWord) mask &= allBits >> (63 - last % 64);
    words[word] = value ? words[word] | mask : words[word] & ~mask;
  }
}

}  // namespace

NSCharacterSet::NSCharacterSet() : blocks_(2) { blocks_[fullBlock].fill(allBits); }

NSCharacterSet::Block& NSCharacterSet::ownBlockAt(std::size_t index) {
  if (blockOf_[index] <= fullBlock) {
    blocks_.push_back(blockAt(index));
    blockOf_[index] = static_cast<std::uint16_t>(blocks_.size() - 1);
  }
  return blocks_[blockOf_[index]];
}

void NSCharacterSet::changeRange(char32_t first, char32_t last, Change change) {
  const bool value = change == Change::add;
  if (first <= 0xFFFF) {
    changeBits(basic_.data(), first, (std::min)(last, char32_t{0xFFFF}), value);
    if (last <= 0xFFFF) return;
    first = 0x10000;
  }
  while (first <= last) {
    const std::uint32_t index = (first - 0x10000) / bitsOfBlock;
    const std::uint32_t begin = (first - 0x10000) % bitsOfBlock;
    const std::uint32_t end = (std::min)(begin + (last - first) + 1, bitsOfBlock);
    // A whole block shares the common one, unless it already has bits, which would stay unused.
    if (begin == 0 && end == bitsOfBlock && blockOf_[index] <= fullBlock) {
      blockOf_[index] = value ? fullBlock : emptyBlock;
    } else {
      changeBits(ownBlockAt(index).data(), begin, end - 1, value);
    }
    first += end - begin;
  }
}

void NSCharacterSet::changeRange(NSRange range, Change change) {
  if (range.length == 0 || range.location > maxCodePoint) return;
  const std::size_t rest = maxCodePoint - range.location;
  changeRange(static_cast<char32_t>(range.location),
              static_cast<char32_t>(range.location + (std::min)(range.length - 1, rest)), change);
}

void NSCharacterSet::changeCharacters(const NSString& string, Change change) {
  for (const char character : string.asciiView()) {
    const auto codePoint = static_cast<char32_t>(character);
    changeRange(codePoint, codePoint, change);
  }
  const std::u16string_view units = string.utf16View();
  for (std::size_t index = 0; index < units.size();) {
    const char32_t codePoint = detail::nextScalar(units, index);
    changeRange(codePoint, codePoint, change);
  }
}

void NSCharacterSet::unite(const NSCharacterSet& other) {
  for (std::size_t word = 0; word < basic_.size(); ++word) basic_[word] |= other.basic_[word];
  for (std::size_t index = 0; index < blockOf_.size(); ++index) {
    if (other.blockOf_[index] == emptyBlock) continue;
    Block& block = ownBlockAt(index);
    const Block& added = other.blockAt(index);
    for (std::size_t word = 0; word < block.size(); ++word) block[word] |= added[word];
  }
}

void NSCharacterSet::intersect(const NSCharacterSet& other) {
  for (std::size_t word = 0; word < basic_.size(); ++word) basic_[word] &= other.basic_[word];
  for (std::size_t index = 0; index < blockOf_.size(); ++index) {
    if (other.blockOf_[index] == fullBlock || blockOf_[index] == emptyBlock) continue;
    Block& block = ownBlockAt(index);
    const Block& kept = other.blockAt(index);
    for (std::size_t word = 0; word < block.size(); ++word) block[word] &= kept[word];
  }
}

void NSCharacterSet::invert() noexcept {
  for (std::uint64_t& word : basic_) word = ~word;
  for (std::uint16_t& index : blockOf_) {
    if (index <= fullBlock) index = index == emptyBlock ? fullBlock : emptyBlock;
  }
  for (std::size_t block = fullBlock + 1; block < blocks_.size(); ++block) {
    for (std::uint64_t& word : blocks_[block]) word = ~word;
  }
}

void NSCharacterSet::assign(const NSCharacterSet& other) {
  blocks_ = other.blocks_;
  basic_ = other.basic_;
  blockOf_ = other.blockOf_;
}

bool NSCharacterSet::isSupersetOfSet(const Ref<NSCharacterSet>& other) const noexcept {
  if (!other) return true;
  const auto contains = [](const auto& ours, const auto& theirs) {
    return std::equal(ours.begin(), ours.end(), theirs.begin(),
                      [](std::uint64_t our, std::uint64_t their) { return !(their & ~our); });
  };
  if (!contains(basic_, other->basic_)) return false;
  for (std::size_t index = 0; index < blockOf_.size(); ++index) {
    if (!contains(blockAt(index), other->blockAt(index))) return false;
  }
  return true;
}

bool NSCharacterSet::isEqual(const NSObject& other) const {
  const auto* set = dynamic_cast<const NSCharacterSet*>(&other);
  if (!set || basic_ != set->basic_) return false;
  for (std::size_t index = 0; index < blockOf_.size(); ++index) {
    if (blockAt(index) != set->blockAt(index)) return false;
  }
  return true;
}

std::size_t NSCharacterSet::hash() const noexcept {
  std::uint64_t hash = 0;
  for (const std::uint64_t word : basic_) hash = (hash ^ word) * 0x9E3779B97F4A7C15u;
  return static_cast<std::size_t>(hash ^ (hash >> 32));
}

Ref<NSCharacterSet> NSCharacterSet::copy() const {
  return Ref<NSCharacterSet>(const_cast<NSCharacterSet*>(this));
}

Ref<NSCharacterSet> NSCharacterSet::immutableCopy() const {
  Ref<NSCharacterSet> result = makeRef<NSCharacterSet>();
  result->assign(*this);
  return result;
}

Ref<NSMutableCharacterSet> NSCharacterSet::mutableCopy() const {
  Ref<NSMutableCharacterSet> result = NSMutableCharacterSet::characterSet();
  result->assign(*this);
  return result;
}

Ref<NSCharacterSet> NSCharacterSet::invertedSet() const {
  Ref<NSCharacterSet> result = immutableCopy();
  result->invert();
  return result;
}

Ref<NSCharacterSet> NSCharacterSet::characterSetWithCharactersInString(const NSString& string) {
  Ref<NSCharacterSet> result = makeRef<NSCharacterSet>();
  result->changeCharacters(string, Change::add);
  return result;
}

Ref<NSCharacterSet> NSCharacterSet::characterSetWithRange(NSRange range) {
  Ref<NSCharacterSet> result = makeRef<NSCharacterSet>();
  result->changeRange(range, Change::add);
  return result;
}

void NSMutableCharacterSet::formUnionWithCharacterSet(const Ref<NSCharacterSet>& other) {
  if (other) unite(*other);
}

void NSMutableCharacterSet::formIntersectionWithCharacterSet(const Ref<NSCharacterSet>& other) {
  if (other) {
    intersect(*other);
  } else {
    changeRange(0, maxCodePoint, Change::remove);
  }
}

Ref<NSCharacterSet> NSCharacterSet::setOfCategories(std::uint32_t categories,
                                                    std::u16string_view others) {
  struct Building {
    Ref<NSCharacterSet> set = makeRef<NSCharacterSet>();
    std::uint32_t categories;
  } building{.categories = categories};
  u_enumCharTypes(
      [](const void* context, UChar32 first, UChar32 end, UCharCategory category) -> UBool {
        const auto& [set, wanted] = *static_cast<const Building*>(context);
        if (wanted >> category & 1) {
          set->changeRange(static_cast<char32_t>(first), static_cast<char32_t>(end) - 1,
                           Change::add);
        }
        return true;
      },
      &building);
  for (const char16_t unit : others) building.set->changeRange(unit, unit, Change::add);
  return building.set;
}

namespace {
constexpr std::u16string_view lineEnds = u"\n\v\f\r\x85\u2028\u2029";
constexpr std::u16string_view tabAndLineEnds = u"\t\n\v\f\r\x85\u2028\u2029";
}  // namespace

const Ref<NSCharacterSet>& NSCharacterSet::whitespaceCharacterSet() {
  static detail::NeverDestroyed<Ref<NSCharacterSet>> set(setOfCategories(U_GC_ZS_MASK, u"\t"));
  return *set;
}

const Ref<NSCharacterSet>& NSCharacterSet::whitespaceAndNewlineCharacterSet() {
  static detail::NeverDestroyed<Ref<NSCharacterSet>> set(
      setOfCategories(U_GC_ZS_MASK, tabAndLineEnds));
  return *set;
}

const Ref<NSCharacterSet>& NSCharacterSet::newlineCharacterSet() {
  static detail::NeverDestroyed<Ref<NSCharacterSet>> set(setOfCategories(0, lineEnds));
  return *set;
}

const Ref<NSCharacterSet>& NSCharacterSet::decimalDigitCharacterSet() {
  static detail::NeverDestroyed<Ref<NSCharacterSet>> set(setOfCategories(U_GC_ND_MASK));
  return *set;
}

const Ref<NSCharacterSet>& NSCharacterSet::controlCharacterSet() {
  static detail::NeverDestroyed<Ref<NSCharacterSet>> set(
      setOfCategories(U_GC_CC_MASK | U_GC_CF_MASK));
  return *set;
}

const Ref<NSCharacterSet>& NSCharacterSet::illegalCharacterSet() {
  static detail::NeverDestroyed<Ref<NSCharacterSet>> set(setOfCategories(U_GC_CN_MASK));
  return *set;
}

const Ref<NSCharacterSet>& NSCharacterSet::letterCharacterSet() {
  static detail::NeverDestroyed<Ref<NSCharacterSet>> set(
      setOfCategories(U_GC_L_MASK | U_GC_M_MASK));
  return *set;
}

const Ref<NSCharacterSet>& NSCharacterSet::uppercaseLetterCharacterSet() {
  static detail::NeverDestroyed<Ref<NSCharacterSet>> set(
      setOfCategories(U_GC_LU_MASK | U_GC_LT_MASK));
  return *set;
}

const Ref<NSCharacterSet>& NSCharacterSet::lowercaseLetterCharacterSet() {
  static detail::NeverDestroyed<Ref<NSCharacterSet>> set(setOfCategories(U_GC_LL_MASK));
  return *set;
}

const Ref<NSCharacterSet>& NSCharacterSet::alphanumericCharacterSet() {
  static detail::NeverDestroyed<Ref<NSCharacterSet>> set(
      setOfCategories(U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK));
  return *set;
}

const Ref<NSCharacterSet>& NSCharacterSet::nonBaseCharacterSet() {
  static detail::NeverDestroyed<Ref<NSCharacterSet>> set(setOfCategories(U_GC_M_MASK));
  return *set;
}

const Ref<NSCharacterSet>& NSCharacterSet::punctuationCharacterSet() {
  static detail::NeverDestroyed<Ref<NSCharacterSet>> set(setOfCategories(U_GC_P_MASK));
  return *set;
}

const Ref<NSCharacterSet>& NSCharacterSet::symbolCharacterSet() {
  static detail::NeverDestroyed<Ref<NSCharacterSet>> set(setOfCategories(U_GC_S_MASK));
  return *set;
}

}  // namespace zeb
