#include <ZEBPlatform/Foundation/ASCIICharacterSet.h>
#include <ZEBPlatform/Foundation/detail/URLParts.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace zeb::detail {

namespace {

/// Bits for the parts in which a character may occur.
enum CharacterClass : std::uint8_t {
  inScheme = 1,
  inAuthority = 2,  ///< everything but "@" and the brackets
  inPath = 4,
  inQuery = 8,  ///< in fragments, too
  isDigit = 16,
  isHex = 32,
  isLetter = 64,
};

constexpr std::array<std::uint8_t, 256> classes = [] {
  constexpr ASCIICharacterSet digits("0123456789");
  constexpr ASCIICharacterSet letters("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
  const std::pair<CharacterClass, ASCIICharacterSet> members[] = {
      {inScheme, letters | digits | ASCIICharacterSet("+-.")},
      {inAuthority, ASCIICharacterSet::URLPasswordAllowedCharacterSet()},
      {inPath, ASCIICharacterSet::URLPathAllowedCharacterSet()},
      {inQuery, ASCIICharacterSet::URLQueryAllowedCharacterSet()},
      {isDigit, digits},
      {isHex, digits | ASCIICharacterSet("ABCDEFabcdef")},
      {isLetter, letters}};
  std::array<std::uint8_t, 256> result{};
  for (unsigned character = 0; character < 128; ++character)
    for (const auto& [bit, set] : members)
      if (set.contains(character)) result[character] |= bit;
  return result;
}();

std::uint8_t classesOf(char character) noexcept {
  return classes[static_cast<unsigned char>(character)];
}

/// The first place at which the text has no character of the class.
const char* skip(const char* place, const char* end, CharacterClass wanted) noexcept {
  // Four at a time, because the loads do not wait for each other.
  while (end - place >= 4 && (classesOf(place[0]) & classesOf(place[1]) & classesOf(place[2]) &
                              classesOf(place[3]) & wanted)) {
    place += 4;
  }
  while (place != end && classesOf(*place) & wanted) ++place;
  return place;
}

/// As `skip`, and past percent escapes. Stops at a "%" that begins none.
const char* skipEncoded(const char* place, const char* end, CharacterClass wanted) noexcept {
  for (;;) {
    place = skip(place, end, wanted);
    if (end - place < 3 || *place != '%' || !(classesOf(place[1]) & classesOf(place[2]) & isHex)) {
      return place;
    }
    place += 3;
  }
}

bool consistsOf(std::string_view text, CharacterClass wanted) noexcept {
  const char* const end = text.data() + text.size();
  return skip(text.data(), end, wanted) == end;
}

/// The first place of the character, or `end`.
const char* find(const char* place, const char* end, char character) noexcept {
  const void* found = std::memchr(place, character, static_cast<std::size_t>(end - place));
  return found ? static_cast<const char*>(found) : end;
}

/// Four decimal numbers up to 255, without leading zeros.
bool isIPv4(std::string_view text) noexcept {
  for (int number = 0; number < 4; ++number) {
    if (number > 0) {
      if (text.empty() || text[0] != '.') return false;
      text.remove_prefix(1);
    }
    int value = 0;
    std::size_t length = 0;
    for (; length < (std::min)(text.size(), std::size_t{3}) && classesOf(text[length]) & isDigit;
         ++length) {
      value = value * 10 + (text[length] - '0');
    }
    if (length == 0 || value > 255 || (length > 1 && text[0] == '0')) return false;
    text.remove_prefix(length);
  }
  return text.empty();
}

/// Eight groups of one to four hexadecimal digits. The last two may be an IPv4 address, and "::"
/// stands for one or more groups.
bool isIPv6(std::string_view text) noexcept {
  int groups = 0;
  bool isShortened = text.starts_with("::");
  if (isShortened) text.remove_prefix(2);
  while (!text.empty()) {
    std::size_t length = 0;
    while (length < text.size() && classesOf(text[length]) & isHex) ++length;
    if (length < text.size() && text[length] == '.') {
      if (!isIPv4(text)) return false;
      groups += 2;
      break;
    }
    if (length == 0 || length > 4) return false;
    ++groups;
    text.remove_prefix(length);
    if (text.empty()) break;
    if (text[0] != ':' || text.size() == 1) return false;
    text.remove_prefix(1);
    if (text[0] == ':') {
      if (isShortened) return false;
      isShortened = true;
      text.remove_prefix(1);
    }
  }
  return isShortened ? groups < 8 : groups == 8;
}

/// An address of a later version: "v", its number, ".", its text.
bool isIPvFuture(std::string_view text) noexcept {
  if (text.empty() || (text[0] != 'v' && text[0] != 'V')) return false;
  const std::size_t point = text.find('.');
  if (point == std::string_view::npos || point < 2 || point + 1 == text.size()) return false;
  return consistsOf(text.substr(1, point - 1), isHex) &&
         consistsOf(text.substr(point + 1), inAuthority);
}

class Parser {
 public:
  explicit Parser(std::string_view text) noexcept
      : start_(text.data()), place_(start_), end_(start_ + text.size()) {}

  bool parse() noexcept {
    readScheme();
    const bool hasAuthority = end_ - place_ >= 2 && place_[0] == '/' && place_[1] == '/';
    if (hasAuthority && !readAuthority()) return false;
    parts_.path = readPart(place_, inPath);
    if (hasAuthority && parts_.path.start != parts_.path.end && *pathStart() != '/') return false;
    // Section 4.2: what comes before such a colon would be a scheme.
    if (!hasAuthority && !parts_.scheme.exists() && firstSegmentHasColon()) return false;
    if (isAt('?')) parts_.query = readPart(place_ + 1, inQuery);
    if (isAt('#')) parts_.fragment = readPart(place_ + 1, inQuery);
    return place_ == end_;
  }

  const URLParts& parts() const noexcept { return parts_; }

 private:
  bool isAt(char character) const noexcept { return place_ != end_ && *place_ == character; }
  const char* pathStart() const noexcept { return start_ + parts_.path.start; }

  URLPart part(const char* from, const char* to) const noexcept {
    return {static_cast<std::uint32_t>(from - start_), static_cast<std::uint32_t>(to - start_)};
  }
  URLPart readPart(const char* from, CharacterClass wanted) noexcept {
    place_ = skipEncoded(from, end_, wanted);
    return part(from, place_);
  }

  void readScheme() noexcept {
    if (place_ == end_ || !(classesOf(*place_) & isLetter)) return;
    const char* const end = skip(place_, end_, inScheme);
    if (end == end_ || *end != ':') return;
    parts_.scheme = part(start_, end);
    place_ = end + 1;
  }

  bool readAuthority() noexcept {
    const char* hostStart = place_ + 2;
    place_ = skipEncoded(hostStart, end_, inAuthority);
    if (isAt('@')) {
      const char* const userEnd = find(hostStart, place_, ':');
      parts_.user = part(hostStart, userEnd);
      if (userEnd != place_) parts_.password = part(userEnd + 1, place_);
      hostStart = place_ + 1;
      place_ = skipEncoded(hostStart, end_, inAuthority);
    }
    const char* hostEnd = nullptr;
    if (place_ == hostStart && isAt('[')) {
      hostEnd = find(hostStart, end_, ']');
      if (hostEnd == end_) return false;
      ++hostEnd;
      if (!isIPLiteral({hostStart, hostEnd})) return false;
      place_ = skip(hostEnd, end_, inAuthority);
    } else {
      hostEnd = find(hostStart, place_, ':');
    }
    parts_.host = part(hostStart, hostEnd);
    if (hostEnd == place_) return true;
    if (*hostEnd != ':' || !consistsOf({hostEnd + 1, place_}, isDigit)) return false;
    parts_.port = part(hostEnd + 1, place_);
    return true;
  }

  bool firstSegmentHasColon() const noexcept {
    const char* const segmentEnd = find(pathStart(), place_, '/');
    return find(pathStart(), segmentEnd, ':') != segmentEnd;
  }

  const char* const start_;
  const char* place_;
  const char* const end_;
  URLParts parts_;
};

}  // namespace

std::optional<URLParts> parsedURL(std::string_view text) noexcept {
  Parser parser(text);
  if (!parser.parse()) return std::nullopt;
  return parser.parts();
}

bool isIPLiteral(std::string_view text) noexcept {
  if (text.size() < 2 || text.front() != '[' || text.back() != ']') return false;
  const std::string_view address = text.substr(1, text.size() - 2);
  return isIPv6(address) || isIPvFuture(address);
}

std::optional<std::uint16_t> portNumber(std::string_view text) noexcept {
  constexpr std::uint32_t maxPort = 65535;
  std::uint32_t port = 0;
  for (const char digit : text) {
    if (!(classesOf(digit) & isDigit)) return std::nullopt;
    port = (std::min)(port * 10 + static_cast<std::uint32_t>(digit - '0'), maxPort + 1);
  }
  if (text.empty() || port > maxPort) return std::nullopt;
  return static_cast<std::uint16_t>(port);
}

bool isURLScheme(std::string_view text) noexcept {
  return !text.empty() && classesOf(text[0]) & isLetter && consistsOf(text, inScheme);
}

}  // namespace zeb::detail
