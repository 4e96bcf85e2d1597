#include <ZEBPlatform/AddressBook/VCardLinesPrivate.h>

#include <algorithm>
#include <cstring>

namespace zeb::detail {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

bool isFoldingSpace(char c) noexcept { return c == ' ' || c == '\t'; }

char lowered(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }

VCardProperty propertyNamed(std::string_view name) noexcept {
  struct Named {
    std::string_view name;
    VCardProperty property;
  };
  // The last one is how cards of version 3.0, which has no KIND, mark groups.
  static constexpr Named all[] = {
      {"begin", VCardProperty::begin},      {"end", VCardProperty::end},
      {"version", VCardProperty::version},  {"uid", VCardProperty::uid},
      {"kind", VCardProperty::kind},        {"fn", VCardProperty::formattedName},
      {"n", VCardProperty::name},           {"nickname", VCardProperty::nickname},
      {"org", VCardProperty::organization}, {"email", VCardProperty::email},
      {"tel", VCardProperty::telephone},    {"x-addressbookserver-kind", VCardProperty::kind},
  };
  for (const Named& known : all)
    if (name.size() == known.name.size() && equalIgnoringCase(name, known.name))
      return known.property;
  return VCardProperty::other;
}

std::string_view trimmed(std::string_view text) noexcept {
  constexpr std::string_view space = " \t\r";
  const std::size_t begin = text.find_first_not_of(space);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(space) - begin + 1);
}

/// The length of the property's name, or of what is before a fold in it.
std::size_t endOfName(std::string_view line) noexcept {
  // Names are short, so that a loop takes less time than searches for single characters.
  std::size_t end = 0;
  while (end < line.size() && line[end] != ':' && line[end] != ';' && line[end] != '\n') ++end;
  return end;
}

void readParameter(std::string_view parameter, VCardLine& line) noexcept {
  const std::size_t equals = parameter.find('=');
  if (equals == std::string_view::npos) return;
  const std::string_view name = parameter.substr(0, equals);
  std::string_view value = parameter.substr(equals + 1);
  if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
    value = value.substr(1, value.size() - 2);
  if (equalIgnoringCase(name, "value")) line.isURI = equalIgnoringCase(value, "uri");
  if (equalIgnoringCase(name, "charset")) line.isLatin1 = equalIgnoringCase(value, "iso-8859-1");
}

/// Reads what follows the property's name: ";parameter;parameter:value". A quote that is not closed
/// is taken as a plain character. False without a colon.
bool readParametersAndValue(std::string_view rest, VCardLine& line) noexcept {
  for (const bool hasQuotes : {true, false}) {
    bool isQuoted = false;
    std::size_t begin = 0;
    for (std::size_t place = 0; place < rest.size(); ++place) {
      const char c = rest[place];
      if (c == '"' && hasQuotes) isQuoted = !isQuoted;
      if (isQuoted || (c != ';' && c != ':')) continue;
      readParameter(rest.substr(begin, place - begin), line);
      begin = place + 1;
      if (c == ';') continue;
      line.value = trimmed(rest.substr(begin));
      return true;
    }
  }
  return false;
}

}  // namespace

bool equalIgnoringCase(std::string_view left, std::string_view right) noexcept {
  return std::ranges::equal(left, right,
                            [](char one, char other) { return lowered(one) == lowered(other); });
}

VCardLines::VCardLines(std::string_view text) noexcept : text_(text) {
  if (text_.starts_with(byteOrderMark)) place_ = byteOrderMark.size();
}

/// The next line with the line breaks that fold it, without the one that ends it.
std::string_view VCardLines::nextFoldedLine(bool& isFolded) noexcept {
  const std::size_t begin = place_;
  isFolded = false;
  for (;;) {
    const std::size_t end = text_.find('\n', place_);
    if (end == std::string_view::npos) {
      place_ = text_.size();
      return text_.substr(begin);
    }
    place_ = end + 1;
    if (place_ == text_.size() || !isFoldingSpace(text_[place_])) {
      const std::string_view line = text_.substr(begin, end - begin);
      return line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
    }
    isFolded = true;
  }
}

std::string_view VCardLines::unfolded(std::string_view line) {
  unfolded_.clear();
  for (;;) {
    const std::size_t end = line.find('\n');
    std::string_view part = line.substr(0, end);
    if (end != std::string_view::npos && part.ends_with('\r')) part.remove_suffix(1);
    unfolded_ += part;
    if (end == std::string_view::npos) return unfolded_;
    line.remove_prefix(end + 2);  // and the space
  }
}

bool VCardLines::next(VCardLine& line) {
  while (place_ < text_.size()) {
    const std::size_t place = place_;
    bool isFolded;
    std::string_view content = nextFoldedLine(isFolded);
    // Long properties that are not used, such as photos, are not unfolded, unless the fold is in
    // the name.
    std::size_t nameEnd = endOfName(content);
    if (nameEnd < content.size() && content[nameEnd] == '\n') {
      content = unfolded(content);
      isFolded = false;
      nameEnd = endOfName(content);
    }
    if (nameEnd == content.size()) continue;
    std::string_view name = content.substr(0, nameEnd);
    name.remove_prefix(name.rfind('.') + 1);  // the group
    const VCardProperty property = propertyNamed(name);
    if (property == VCardProperty::other) continue;
    if (isFolded) content = unfolded(content);
    line = VCardLine();
    line.property = property;
    line.place = place;
    if (readParametersAndValue(content.substr(nameEnd), line)) return true;
  }
  return false;
}

}  // namespace zeb::detail
