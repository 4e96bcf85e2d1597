#include <Bundle/NSPropertyListSerialization.h>
#include <Bundle/PropertyListGuardPrivate.h>

#include <algorithm>
#include <cstddef>

namespace zeb::detail {

namespace {

/// Walks the tags. What parsers could take for different tags is a fault, so that the nesting found here
/// is the one that they find.
class Guard {
 public:
  explicit Guard(std::string_view document) noexcept : document_(document) {}

  const char* fault() noexcept {
    if (document_.find('\0') != document_.npos) fault_ = "it holds a zero byte";
    while (!fault_) {
      const std::size_t begin = document_.find('<');
      if (begin == std::string_view::npos) break;
      document_.remove_prefix(begin + 1);
      if (document_.starts_with("!--")) {
        skipSection(3, "-->");
      } else if (document_.starts_with("![CDATA[")) {
        skipSection(8, "]]>");
      } else {
        readTag();
      }
    }
    return fault_;
  }

 private:
  void skipSection(std::size_t begin, std::string_view end) noexcept {
    const std::size_t place = document_.find(end, begin);
    if (place == std::string_view::npos) {
      fault_ = "a comment or text section has no end";
    } else {
      document_.remove_prefix(place + end.size());
    }
  }

  void readTag() noexcept {
    const std::size_t end = document_.find('>');
    const std::string_view tag = document_.substr(0, end);
    if (end == std::string_view::npos || !isPlain(tag)) {
      fault_ = "a tag is malformed";
      return;
    }
    document_.remove_prefix(end + 1);
    if (tag.starts_with('?') || tag.starts_with('!')) return;
    if (tag.starts_with('/')) {
      if (isContainer(tag.substr(1)) && depth_ > 0) --depth_;
      return;
    }
    if (++elements_ > NSPropertyListMaximumObjectCount) fault_ = "it has too many elements";
    if (isContainer(tag) && !tag.ends_with('/') && ++depth_ > NSPropertyListMaximumDepth) {
      fault_ = "it is nested more than 512 levels deep";
    }
  }

  /// Whether the tag ends where it seems to: no quotation, instruction or inner document type goes on.
  static bool isPlain(std::string_view tag) noexcept {
    if (tag.starts_with('?') && (tag.size() < 2 || !tag.ends_with('?'))) return false;
    if (tag.starts_with('!') && tag.find('[') != tag.npos) return false;
    return tag.find('<') == tag.npos && std::ranges::count(tag, '"') % 2 == 0 &&
           std::ranges::count(tag, '\'') % 2 == 0;
  }

  static bool isContainer(std::string_view name) noexcept {
    return name.starts_with("array") || name.starts_with("dict");
  }

  std::string_view document_;  ///< what is left of it
  std::size_t depth_ = 0;
  std::size_t elements_ = 0;
  const char* fault_ = nullptr;
};

}  // namespace

const char* faultOfXMLPropertyList(std::string_view document) noexcept {
  return Guard(document).fault();
}

}  // namespace zeb::detail
