#include <ZEBPlatform/Text/TimeZoneRulesPrivate.h>

#include <algorithm>
#include <functional>
#include <utility>

namespace zeb::detail {

namespace {

/// RFC 8536 limits offsets to these.
constexpr std::int32_t minOffset = -89999;
constexpr std::int32_t maxOffset = 93599;
/// Files begin with a change at the supposed begin of time; nothing needs one before year -30000.
constexpr std::int64_t maxMoment = 1'000'000'000'000;
constexpr std::int32_t usualSaving = 3600;
/// The limit of the reference implementation; real files have at most some hundred.
constexpr std::uint32_t maxChanges = 2000;

/// Reads big-endian numbers; a read past the end makes it invalid and gives zeros.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : rest_(bytes) {}

  bool isValid() const noexcept { return isValid_; }
  std::string_view rest() const noexcept { return rest_; }

  std::string_view bytes(std::size_t count) noexcept {
    if (count > rest_.size()) {
      isValid_ = false;
      rest_ = {};
      return {};
    }
    const std::string_view result = rest_.substr(0, count);
    rest_.remove_prefix(count);
    return result;
  }

  std::uint64_t number(std::size_t size) noexcept {
    std::uint64_t value = 0;
    for (const char byte : bytes(size)) value = value << 8 | static_cast<unsigned char>(byte);
    return value;
  }
  std::int32_t signed32() noexcept { return static_cast<std::int32_t>(number(4)); }
  std::int64_t moment(std::size_t size) noexcept {
    return size == 4 ? signed32() : static_cast<std::int64_t>(number(8));
  }

 private:
  std::string_view rest_;
  bool isValid_ = true;
};

struct Header {
  char version;
  std::uint32_t utcFlagCount, standardFlagCount, leapSecondCount, changeCount, typeCount, textSize;

  /// The bytes of the data block behind the header.
  std::uint64_t dataSize(std::size_t momentSize) const noexcept {
    return std::uint64_t{changeCount} * (momentSize + 1) + std::uint64_t{typeCount} * 6 + textSize +
           std::uint64_t{leapSecondCount} * (momentSize + 4) + standardFlagCount + utcFlagCount;
  }
};

std::optional<Header> readHeader(Reader& reader) noexcept {
  if (reader.bytes(4) != "TZif") return std::nullopt;
  Header header{};
  for (const char version : reader.bytes(1)) header.version = version;
  reader.bytes(15);
  for (std::uint32_t* count :
       {&header.utcFlagCount, &header.standardFlagCount, &header.leapSecondCount,
        &header.changeCount, &header.typeCount, &header.textSize})
    *count = static_cast<std::uint32_t>(reader.number(4));
  if (!reader.isValid()) return std::nullopt;
  return header;
}

/// A type as the file has it: whether it is daylight-saving time, but not how much that adds.
struct FileType {
  std::int32_t offset;
  bool isDaylight;
  std::string abbreviation;
};

struct FileContent {
  std::vector<FileType> types;
  std::vector<TimeZoneRules::Change> changes;
};

std::optional<FileContent> readData(Reader& reader, const Header& header, std::size_t momentSize) {
  if (header.dataSize(momentSize) > reader.rest().size() || header.typeCount == 0 ||
      header.changeCount > maxChanges || header.leapSecondCount != 0)
    return std::nullopt;
  FileContent content;
  std::vector<std::int64_t> moments(header.changeCount);
  for (std::int64_t& moment : moments) moment = reader.moment(momentSize);
  for (const std::int64_t moment : moments) {
    const auto type = static_cast<std::size_t>(reader.number(1));
    if (type >= header.typeCount) return std::nullopt;
    content.changes.push_back({std::clamp(moment, -maxMoment, maxMoment), type});
  }
  if (std::ranges::adjacent_find(moments, std::greater_equal()) != moments.end())
    return std::nullopt;

  std::vector<std::size_t> textPlaces;
  for (std::uint32_t i = 0; i < header.typeCount; ++i) {
    const std::int32_t offset = reader.signed32();
    const bool isDaylight = reader.number(1) != 0;
    textPlaces.push_back(static_cast<std::size_t>(reader.number(1)));
    if (offset < minOffset || offset > maxOffset) return std::nullopt;
    content.types.push_back({offset, isDaylight, {}});
  }
  const std::string_view texts = reader.bytes(header.textSize);
  for (std::size_t i = 0; i < content.types.size(); ++i) {
    const std::size_t end = texts.find('\0', textPlaces[i]);
    if (end == std::string_view::npos) return std::nullopt;
    content.types[i].abbreviation = texts.substr(textPlaces[i], end - textPlaces[i]);
  }
  // Which changes were meant as standard time or UTC does not matter to readers.
  reader.bytes(std::size_t{header.standardFlagCount} + header.utcFlagCount);
  return content;
}

/// Derives how much daylight-saving time adds, which files do not state: the difference to the
/// standard time before or after it. Ireland and Morocco
/// write their winter or Ramadan as a time with a negative addition; there, this time counts as
/// standard time and its neighbours of up to a year as daylight-saving time, because the words for
/// these times are made for that.
class SavingsDerivation {
 public:
  explicit SavingsDerivation(const FileContent& content) : content_(content) {
    const FileType& first = content.types.front();
    types_.push_back({first.offset, 0, first.abbreviation});
  }

  TimeZoneRules rules(std::optional<YearlyRules> future) && {
    const bool endsWithFuture = future && future->daylight;
    std::size_t previous = 0;
    for (std::size_t i = 0; i < content_.changes.size(); ++i) {
      const std::size_t type = indexOf(derivedType(i));
      // A change without effect is left out, except where yearly changes begin.
      const bool beginsFuture = endsWithFuture && i + 1 == content_.changes.size();
      if (type != previous || beginsFuture) changes_.push_back({content_.changes[i].moment, type});
      previous = type;
    }
    return TimeZoneRules(std::move(types_), std::move(changes_), std::move(future));
  }

 private:
  const FileType& fileType(std::size_t change) const {
    return content_.types[content_.changes[change].type];
  }

  /// The offset of the nearest standard time before or after the change.
  std::optional<std::int32_t> standardBefore(std::size_t change) const {
    while (change-- > 0)
      if (!fileType(change).isDaylight) return fileType(change).offset;
    return content_.types.front().isDaylight ? std::nullopt
                                             : std::optional(content_.types.front().offset);
  }
  std::optional<std::int32_t> standardAfter(std::size_t change) const {
    while (++change < content_.changes.size())
      if (!fileType(change).isDaylight) return fileType(change).offset;
    return std::nullopt;
  }

  bool isNegative(std::size_t change) const {
    const FileType& type = fileType(change);
    if (!type.isDaylight) return false;
    const std::optional<std::int32_t> before = standardBefore(change);
    const std::optional<std::int32_t> after = standardAfter(change);
    return (before || after) && before.value_or(maxOffset) > type.offset &&
           after.value_or(maxOffset) > type.offset;
  }

  /// Some months: neither a change of standard time nor one of the few short experiments.
  bool isSeason(std::size_t change) const {
    constexpr std::int64_t day = 86400;
    if (change + 1 >= content_.changes.size()) return true;
    const std::int64_t length =
        content_.changes[change + 1].moment - content_.changes[change].moment;
    return length > 90 * day && length < 370 * day;
  }

  /// Of the standard times before and after: the one that is an hour less, else the one before,
  /// else the one after. If neither is less, daylight-saving time is taken to add an hour.
  static std::int32_t standardBelow(std::int32_t offset, std::optional<std::int32_t> before,
                                    std::optional<std::int32_t> after) noexcept {
    const std::int32_t usual = offset - usualSaving;
    if (before == usual || after == usual) return usual;
    if (before && *before < offset) return *before;
    return after && *after < offset ? *after : usual;
  }

  LocalTimeType derivedType(std::size_t change) const {
    const FileType& type = fileType(change);
    std::int32_t standard = type.offset;
    if (type.isDaylight) {
      const std::optional<std::int32_t> before = standardBefore(change);
      const std::optional<std::int32_t> after = standardAfter(change);
      if (!isNegative(change)) standard = standardBelow(type.offset, before, after);
    } else if (isSeason(change)) {
      for (const std::size_t neighbour : {change - 1, change + 1}) {
        if (neighbour < content_.changes.size() && isNegative(neighbour) &&
            fileType(neighbour).offset < type.offset)
          standard = fileType(neighbour).offset;
      }
    }
    return {standard, type.offset - standard, type.abbreviation};
  }

  std::size_t indexOf(LocalTimeType type) {
    const auto known = std::ranges::find(types_, type);
    if (known != types_.end()) return static_cast<std::size_t>(known - types_.begin());
    types_.push_back(std::move(type));
    return types_.size() - 1;
  }

  const FileContent& content_;
  std::vector<LocalTimeType> types_;
  std::vector<TimeZoneRules::Change> changes_;
};

}  // namespace

std::optional<TimeZoneRules> timeZoneRulesFromFile(std::string_view content) {
  Reader reader(content);
  std::optional<Header> header = readHeader(reader);
  if (!header) return std::nullopt;
  std::size_t momentSize = 4;
  if (header->version >= '2') {
    // The same again with larger numbers follows the part for old readers.
    const std::uint64_t oldSize = header->dataSize(momentSize);
    if (oldSize > reader.rest().size()) return std::nullopt;
    reader.bytes(static_cast<std::size_t>(oldSize));
    header = readHeader(reader);
    if (!header) return std::nullopt;
    momentSize = 8;
  }
  std::optional<FileContent> data = readData(reader, *header, momentSize);
  if (!data) return std::nullopt;

  std::optional<YearlyRules> future;
  if (header->version >= '2') {
    const std::string_view footer = reader.rest();
    const std::size_t end = footer.find('\n', 1);
    if (!footer.starts_with('\n') || end == std::string_view::npos) return std::nullopt;
    const std::string_view text = footer.substr(1, end - 1);
    if (!text.empty()) {
      future = yearlyRulesFromText(text);
      if (!future) return std::nullopt;
    }
  }
  return SavingsDerivation(*data).rules(std::move(future));
}

}  // namespace zeb::detail
