#include <Bundle/NSPropertyListSerialization.h>
#include <Bundle/PropertyListGuardPrivate.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zeb::detail {

namespace {

constexpr std::size_t headerSize = 8;    // "bplist00"
constexpr std::size_t trailerSize = 32;  // the last bytes: widths, counts, places

constexpr const char* damaged = "its tables are damaged";
constexpr const char* unknown = "it holds an object of unknown kind";

/// Walks the objects from the root as a parser would that writes shared ones out each time.
class Guard {
 public:
  explicit Guard(std::string_view document) noexcept
      : document_(document),
        maximumVisits_(std::min(document.size(), NSPropertyListMaximumObjectCount)),
        maximumPayload_(document.size() * NSPropertyListMaximumExpansion) {}

  const char* fault() {
    readTrailer();
    if (!fault_) visit(root_, false);
    while (!fault_ && !open_.empty()) {
      Container& container = open_.back();
      if (container.left == 0) {
        open_.pop_back();
        continue;
      }
      --container.left;
      const bool isKey = container.keysLeft > 0;
      if (isKey) --container.keysLeft;
      const std::uint64_t object = number(container.place, referenceWidth_);
      container.place += referenceWidth_;
      visit(object, isKey);
    }
    return fault_;
  }

 private:
  struct Container {
    std::uint64_t place;  ///< of the next reference
    std::uint64_t left;   ///< references
    std::uint64_t keysLeft;
  };

  std::uint8_t byteAt(std::uint64_t place) const noexcept {
    return static_cast<std::uint8_t>(document_[place]);
  }
  std::uint64_t number(std::uint64_t place, std::uint64_t width) const noexcept {
    std::uint64_t value = 0;
    for (std::uint64_t i = 0; i < width; ++i) value = value << 8 | byteAt(place + i);
    return value;
  }
  bool hasZero(std::uint64_t begin, std::uint64_t length, std::uint64_t unitWidth) const noexcept {
    for (std::uint64_t place = begin; place < begin + length; place += unitWidth) {
      if (number(place, unitWidth) == 0) return true;
    }
    return false;
  }
  void fail(const char* fault) noexcept { fault_ = fault; }

  void readTrailer() noexcept {
    if (document_.size() < headerSize + trailerSize) return fail("it is cut short");
    const std::uint64_t trailer = document_.size() - trailerSize;
    offsetWidth_ = byteAt(trailer + 6);
    referenceWidth_ = byteAt(trailer + 7);
    count_ = number(trailer + 8, 8);
    root_ = number(trailer + 16, 8);
    offsets_ = number(trailer + 24, 8);
    const bool isSound = offsetWidth_ >= 1 && offsetWidth_ <= 8 && referenceWidth_ >= 1 &&
                         referenceWidth_ <= 8 && offsets_ > headerSize && offsets_ <= trailer &&
                         count_ <= (trailer - offsets_) / offsetWidth_;
    if (!isSound) fail(damaged);
  }

  void visit(std::uint64_t object, bool isKey) {
    if (++visits_ > maximumVisits_) return fail("it comes to too many objects");
    if (object >= count_) return fail(damaged);
    const std::uint64_t place = number(offsets_ + object * offsetWidth_, offsetWidth_);
    if (place < headerSize || place >= offsets_) return fail(damaged);
    const unsigned kind = byteAt(place) >> 4;
    const unsigned size = byteAt(place) & 0xF;
    if (isKey && kind != 0x5 && kind != 0x6) return fail("it has a key that is no string");
    switch (kind) {
      case 0x0:  // boolean
        return size == 8 || size == 9 ? take(place + 1, 0) : fail(unknown);
      case 0x1:  // integer
        return size <= 4 ? take(place + 1, 1u << size) : fail(unknown);
      case 0x2:  // real
        return size == 2 || size == 3 ? take(place + 1, 1u << size) : fail(unknown);
      case 0x3:  // date
        return size == 3 ? take(place + 1, 8) : fail(unknown);
      case 0x8:  // reference of an archive
        return size <= 7 ? take(place + 1, size + 1) : fail(unknown);
      case 0x4:  // data, ASCII, UTF-16
      case 0x5:
      case 0x6:
        return visitSized(place, size, kind == 0x6 ? 2 : 1, [&](auto begin, auto length) {
          take(begin, length);
          // Parsers that read keys as C strings stop the process over it.
          if (isKey && hasZero(begin, length, kind == 0x6 ? 2 : 1))
            fail("it has a key with a zero");
        });
      case 0xA:  // array
        return visitSized(place, size, referenceWidth_,
                          [&](auto begin, auto length) { enter(begin, length, 0); });
      case 0xD:  // dictionary: all keys, then all values
        return visitSized(place, size, 2 * referenceWidth_, [&](auto begin, auto length) {
          enter(begin, length, length / (2 * referenceWidth_));
        });
      default:
        fail(unknown);
    }
  }

  /// Hands over place and byte length of so many parts, a number that may stand in an integer of its own.
  template <class Use>
  void visitSized(std::uint64_t place, std::uint64_t size, std::uint64_t partWidth, Use use) {
    std::uint64_t begin = place + 1;
    if (size == 0xF) {
      const unsigned marker = begin < offsets_ ? byteAt(begin) : 0;
      const std::uint64_t width = std::uint64_t{1} << (marker & 0xF);
      if (marker >> 4 != 0x1 || width > 8 || offsets_ - begin <= width) return fail(damaged);
      size = number(begin + 1, width);
      begin += 1 + width;
    }
    if (size > (offsets_ - begin) / partWidth) return fail(damaged);
    use(begin, size * partWidth);
  }

  void take(std::uint64_t begin, std::uint64_t length) noexcept {
    if (length > offsets_ - begin) return fail(damaged);
    payload_ += length;
    if (payload_ > maximumPayload_) fail("it comes to too much text or data");
  }

  void enter(std::uint64_t begin, std::uint64_t length, std::uint64_t keys) {
    if (open_.size() == NSPropertyListMaximumDepth) {
      return fail("it is nested more than 512 levels deep, or in a circle");
    }
    open_.push_back({begin, length / referenceWidth_, keys});
  }

  std::string_view document_;
  std::uint64_t maximumVisits_;
  std::uint64_t maximumPayload_;
  std::uint64_t offsetWidth_ = 0;
  std::uint64_t referenceWidth_ = 0;
  std::uint64_t count_ = 0;
  std::uint64_t root_ = 0;
  std::uint64_t offsets_ = 0;  ///< where the table of objects' places begins, and the objects end
  std::uint64_t visits_ = 0;
  std::uint64_t payload_ = 0;
  std::vector<Container> open_;
  const char* fault_ = nullptr;
};

}  // namespace

const char* faultOfBinaryPropertyList(std::string_view document) { return Guard(document).fault(); }

}  // namespace zeb::detail
