#include "Report.h"

#include <ZEBPlatform/Foundation/Format.h>

#include <ZEBPlatform/Text/NSLocale.h>
#include <ZEBPlatform/Text/NSTimeZone.h>
#include <ZEBUtilities/LocalizedDates/NSDate+ZEBLocalizedAdditions.h>
#include <ZEBUtilities/Text/NSString+ZEBEmoji.h>

#include <algorithm>
#include <map>

#include "Text.h"

namespace zeb::timeline {

namespace {

constexpr std::ptrdiff_t maxRows = 40;
constexpr std::size_t widthBesideTexts = 59;

const char* nameOf(PostKind kind) {
  const auto& cases = ZEBRawValueEnumTraits<PostKind>::cases;
  return std::ranges::find(cases, kind, &std::pair<PostKind, const char*>::first)->second;
}

/// In the words of the user's locale.
Cell dateCell(const NSDate& date) {
  if (date.isNil()) return {{"no date", faint}};
  return {{zeb_mediumDateStringNoTime(date)}, {zeb_shortTimeString(date), faint}};
}

Cell kindCell(const Post& post) {
  Cell cell{{nameOf(post.kind)}};
  if (!post.text.empty() && zeb_containsOnlyEmoji(post.text)) cell.push_back({"emoji", faint});
  return cell;
}

Cell textCell(const Post& post) {
  Cell cell{{post.text, plain, 3}};
  for (const Link& link : post.links) {
    const char* separator = link.title.length() > 0 ? " · " : "";
    cell.push_back(
        {NSString::stringWithFormat("→ %@%s%@", link.title, separator, link.host()), faint});
  }
  NSMutableArray details;
  if (post.mediaSize) {
    details.addObject(
        NSString::stringWithFormat("▣ %.0f × %.0f", post.mediaSize->width, post.mediaSize->height));
  }
  for (const NSString& tag : post.tags) details.addObject("#"_ns.stringByAppendingString(tag));
  cell.push_back({details.componentsJoinedByString("  "), faint});
  return cell;
}

Cell responseCell(const Post& post) {
  Cell cell;
  if (post.likes) cell.push_back({NSString::stringWithFormat("%lld ♥", post.likes)});
  if (post.shares) cell.push_back({NSString::stringWithFormat("%lld ⇄", post.shares)});
  if (post.replies) cell.push_back({NSString::stringWithFormat("%lld ↩", post.replies)});
  return cell;
}

const char* nameOfKind(const Value& value) {
  if (value.isArray()) return "arrays";
  if (value.isDictionary()) return "dictionaries";
  if (value.isString()) return "strings";
  if (value.isBoolean()) return "booleans";
  if (value.isNull()) return "nulls";
  return NSNumber(value).objCType() == 'd' ? "fractions" : "integers";
}

}  // namespace

void printTimeline(std::ostream& out, const Screen& screen, const Timeline& timeline,
                   const Gaps& gaps) {
  const NSString title = printable(timeline.title);
  out << title << '\n' << std::string(displayWidth(title), '=') << "\n\n";
  Table table({{"WHEN", 14},
               {"WHO", 18},
               {"WHAT", 7},
               {"TEXT", screen.width - widthBesideTexts},
               {"", 9, true},
               {"GAPS", 4, true}});
  for (const Post& post : timeline.posts) {
    if (&post - timeline.posts.data() == maxRows) break;
    const Author& author = *post.author;
    table.addRow({dateCell(post.date),
                  {{author.name, strong},
                   {NSString::stringWithFormat("@%@", author.handle), faint},
                   {author.home, faint}},
                  kindCell(post),
                  textCell(post),
                  responseCell(post),
                  {{post.gaps ? NSNumber(post.gaps).stringValue() : "", warning}}});
  }
  table.print(out, screen);
  const std::ptrdiff_t notShown = std::ssize(timeline.posts) - maxRows;
  if (notShown > 0) out << "… and " << notShown << " more\n";
  if (gaps.total() > 0) {
    out << "\nGaps filled with defaults: " << gaps.nulls << " null, " << gaps.unusable
        << " of a wrong kind or without sense, " << gaps.dropped << " elements dropped.\n";
  }
  out << "Dates as in " << NSLocale::currentLocale()->localeIdentifier() << ", time zone "
      << NSTimeZone::defaultTimeZone()->name() << ".\n";
  if (gaps.numbersAsText > 0) out << "Numbers that came as text: " << gaps.numbersAsText << ".\n";
}

void printFriends(std::ostream& out, const Screen& screen, const std::vector<Friend>& friends) {
  if (friends.empty()) return;
  out << '\n';
  Table table({{"IN YOUR ADDRESS BOOK", 26}, {"AS", 20}, {"REACHED AT", 40}, {"POSTS", 5, true}});
  for (const Friend& each : friends) {
    Cell addresses;
    for (const NSArray& texts : {each.contact->phoneNumbers(), each.contact->emailAddresses()}) {
      for (const Value& text : texts) addresses.push_back({NSString(text)});
    }
    table.addRow({{{each.contact->fullName(), strong}},
                  {{NSString::stringWithFormat("@%@", each.author->handle), faint}},
                  addresses,
                  {{NSNumber(each.posts).stringValue()}}});
  }
  table.print(out, screen);
}

void printOverview(std::ostream& out, const Screen& screen, const Value& document) {
  std::map<std::string, std::size_t> counts;
  std::size_t values = 0, deepest = 0, largestArray = 0;
  NSString longestString("");
  std::vector<std::pair<const Value*, std::size_t>> ahead{{&document, 0}};
  while (!ahead.empty()) {
    const auto [value, depth] = ahead.back();
    ahead.pop_back();
    ++counts[nameOfKind(*value)];
    ++values;
    const NSArray array(*value);
    const NSDictionary dictionary(*value);
    if (!array.isNil() || !dictionary.isNil()) deepest = std::max(deepest, depth + 1);
    largestArray = std::max(largestArray, array.count());
    for (const Value& element : array) ahead.emplace_back(&element, depth + 1);
    for (const auto& [key, object] : dictionary) ahead.emplace_back(&object, depth + 1);
    if (NSString(*value).length() > longestString.length()) longestString = NSString(*value);
  }

  Table table({{"DOCUMENT"}, {"", 12, true}, {"", screen.width - 40}});
  const auto add = [&table](const NSString& name, std::size_t count, const NSString& remark = "") {
    table.addRow({{{name}}, {{NSNumber(count).stringValue()}}, {{remark, faint}}});
  };
  add("values", values,
      NSString::stringWithFormat("the root is one of the %s", nameOfKind(document)));
  for (const auto& [kind, count] : counts) add("- " + kind, count);
  add("levels of nesting", deepest);
  add("largest array", largestArray, "elements");
  add("longest string", longestString.length(), longestString);
  table.print(out, screen);
}

}  // namespace zeb::timeline
