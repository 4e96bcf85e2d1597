#include "FeedReader.h"

#include <ZEBPlatform/Geometry/NSValue.h>
#include <ZEBUtilities/Collections/NSDictionary+ZEBAdditions.h>
#include <ZEBUtilities/Graphics/ZEBGeometryDictionaries.h>
#include <ZEBUtilities/Text/NSString+ZEBHTMLEntity.h>
#include <ZEBUtilities/URLs/NSURL+ZEBAdditions.h>

#include <chrono>
#include <cstdio>

namespace zeb::timeline {

namespace {

bool isEvent(const Value& element) {
  const NSDictionary event(element);
  return event["actor"].isDictionary() && event["payload"].isDictionary();
}

PostKind kindNamed(const NSString& name) {
  for (const auto& [kind, text] : ZEBRawValueEnumTraits<PostKind>::cases) {
    if (name == NSString(text)) return kind;
  }
  return PostKind::other;
}

PostKind kindOfEvent(const NSString& type) {
  if (type == "PushEvent"_ns) return PostKind::push;
  if (type == "WatchEvent"_ns) return PostKind::star;
  if (type == "ForkEvent"_ns) return PostKind::fork;
  if (type == "CreateEvent"_ns) return PostKind::create;
  if (type == "GollumEvent"_ns) return PostKind::wiki;
  if (type == "IssuesEvent"_ns) return PostKind::note;
  return type == "IssueCommentEvent"_ns ? PostKind::reply : PostKind::other;
}

/// "2013-01-10T07:58:30Z"; nil for everything else.
NSDate dateFromISO8601(const NSString& text) {
  int year = 0, hour = -1, minute = -1, second = -1;
  unsigned month = 0, day = 0;
  std::sscanf(text.utf8().c_str(), "%4d-%2u-%2uT%2d:%2d:%2dZ", &year, &month, &day, &hour, &minute,
              &second);
  using namespace std::chrono;
  const year_month_day date{std::chrono::year(year), std::chrono::month(month),
                            std::chrono::day(day)};
  if (!date.ok() || hour < 0 || minute < 0 || second < 0) return nullptr;
  const sys_seconds moment = sys_days(date) + hours(hour) + minutes(minute) + seconds(second);
  return NSDate::dateWithTimeIntervalSince1970(
      static_cast<NSTimeInterval>(moment.time_since_epoch().count()));
}

/// The part of the text in the boxed range; empty if the range reaches past the end.
NSString wordsIn(const NSString& text, const Value& boxedRange) {
  const NSRange range = *unboxed<NSRange>(boxedRange);
  if (range.location > text.length() || range.length > text.length() - range.location) return "";
  return text.substringWithRange(range);
}

/// Events keep their text in different places.
NSString textOfEvent(const NSDictionary& payload) {
  const NSArray commits = zeb_arrayOfDictionariesForKey(payload, "commits");
  const NSArray pages = zeb_arrayOfDictionariesForKey(payload, "pages");
  NSString text = zeb_stringForKey(NSDictionary(commits.lastObject()), "message");
  if (text.length() == 0) text = zeb_stringForKey(NSDictionary(pages.firstObject()), "title");
  for (const NSArray& path :
       {NSArray{"comment", "body"}, NSArray{"issue", "title"}, NSArray{"forkee", "description"},
        NSArray{"description"}, NSArray{"ref_type"}, NSArray{"action"}}) {
    if (text.length() == 0) text = NSString(zeb_objectForPathElementKeys(payload, path));
  }
  return text.isNil() ? NSString("") : NSString(text.detachedCopy());
}

}  // namespace

bool FeedReader::canRead(const Value& document) {
  return NSDictionary(document)["posts"].isArray() || isEvent(NSArray(document).firstObject());
}

Timeline FeedReader::timeline(const Value& document) {
  // A list of events is put into a dictionary, as in feeds of posts.
  const bool hasEvents = document.isArray();
  const NSDictionary feed =
      hasEvents ? NSDictionary{{"title", "Events"}, {"posts", document}} : NSDictionary(document);
  const Fields fields(feed, gaps_);
  Timeline timeline;
  timeline.title = fields.string("title", "Posts");
  for (const Value& element : fields.dictionaries("posts")) {
    const std::size_t gapsBefore = gaps_.total();
    const Fields postFields(element, gaps_);
    Post& added = timeline.posts.emplace_back(hasEvents ? event(postFields) : post(postFields));
    added.gaps = static_cast<std::int64_t>(gaps_.total() - gapsBefore);
  }
  return timeline;
}

Post FeedReader::post(const Fields& fields) {
  Post post;
  post.identifier = fields.integer("id");
  post.kind = kindNamed(fields.string("kind"));
  post.author = author(fields.fields("author"), "handle");
  post.date = fields.date("created_at");

  const Fields entities = fields.fields("entities");
  addTextAndLinks(post, fields, entities.dictionaries("links"));
  for (const Value& tag : entities.strings("tags")) post.tags.emplace_back(tag);

  const Fields counts = fields.fields("counts");
  post.likes = counts.integer("likes");
  post.shares = counts.integer("shares");
  post.replies = counts.integer("replies");

  const NSDictionary size = fields.fields("media").fields("size").dictionary();
  if (!size.isNil()) post.mediaSize = ZEBCGSizeFromDictionary(size);
  return post;
}

Post FeedReader::event(const Fields& fields) {
  Post post;
  post.identifier = fields.integer("id");
  post.kind = kindOfEvent(fields.string("type"));
  post.author = author(fields.fields("actor"), "login");
  post.date = dateFromISO8601(fields.string("created_at"));
  addLink(post, fields.fields("repo"), "name");

  const Fields payload = fields.fields("payload");
  post.text = textOfEvent(payload.dictionary());
  post.likes = payload.fields("forkee").integer("watchers");
  post.replies = payload.fields("issue").integer("comments");
  return post;
}

Ref<Author> FeedReader::author(const Fields& fields, const StringKey& handleKey) {
  const NSString handle = fields.string(handleKey, "somebody");
  return authors_->shared(
      makeRef<Author>(handle, fields.text("name", handle), fields.text("home")));
}

void FeedReader::addTextAndLinks(Post& post, const Fields& fields, const NSArray& links) {
  NSMutableArray ranges;
  for (const Value& link : links) ranges.addObject(boxed(Fields(link, gaps_).range("range")));
  NSMutableString text(fields.string("text"));
  const NSArray adjusted = zeb_unescapeHTMLEntitiesAdjustingTextRanges(text, ranges);
  post.text = text.copy();
  for (std::size_t index = 0; index < links.count(); ++index) {
    addLink(post, Fields(links[index], gaps_), "title", wordsIn(post.text, adjusted[index]));
  }
}

void FeedReader::addLink(Post& post, const Fields& fields, const StringKey& titleKey,
                         const NSString& words) {
  const NSURL url = zeb_URLWithString(fields.string("url"));
  if (url.isNil()) {
    ++gaps_.unusable;
  } else {
    post.links.emplace_back(fields.text(titleKey, words), url);
  }
}

}  // namespace zeb::timeline
