#include "Model.h"

#include <ZEBUtilities/Coding/ZEBDecodedValue.h>
#include <ZEBUtilities/Coding/ZEBUnarchiverError.h>
#include <ZEBUtilities/URLs/NSURL+UnicodeURL.h>
#include <ZEBUtilities/URLs/NSURL+ZEBAdditions.h>

namespace zeb::timeline {

using ArchivedKind = ZEBRawValueEnumCodable<PostKind>;

Author::Author(ZEBDecoder& decoder)
    : handle(decoder.decodeStringForKey("handle")),
      name(decoder.decodeStringForKey("name")),
      home(decoder.decodeStringForKey("home")) {}

void Author::encodeWithEncoder(ZEBEncoder& encoder) const {
  encoder.encodeString(handle, "handle");
  encoder.encodeString(name, "name");
  encoder.encodeString(home, "home");
}

bool Author::isEqual(const NSObject& other) const noexcept {
  const auto* author = dynamic_cast<const Author*>(&other);
  return author && author->handle == handle && author->name == name && author->home == home;
}

// An archive is input from outside, so a text that is not a URL is refused.
Link::Link(ZEBDecoder& decoder)
    : title(decoder.decodeStringForKey("title")),
      url(zeb_URLWithString(decoder.decodeStringForKey("url"))) {
  if (url.isNil()) throw ZEBUnarchiverError::unexpectedContent("url");
}

void Link::encode(ZEBEncoder& encoder) const {
  encoder.encodeString(title, "title");
  encoder.encodeString(url.absoluteString(), "url");
}

NSString Link::host() const {
  const NSString host = unicodeHost(url);
  return host.isNil() ? NSString("") : host;
}

Post::Post(ZEBDecoder& decoder)
    : identifier(decoder.decodeInt64ForKey("identifier")),
      kind(decoder.decodeObjectForKey<ArchivedKind>("kind")),
      author(decoder.decodeObjectForKey<Ref<Author>>("author")),
      date(decoder.decodeObjectForKey<std::optional<NSDate>>("date").value_or(nullptr)),
      text(decoder.decodeStringForKey("text")),
      links(decoder.decodeObjectForKey<std::vector<Link>>("links")),
      tags(decoder.decodeObjectForKey<std::vector<NSString>>("tags")),
      mediaSize(decoder.decodeObjectForKey<std::optional<CGSize>>("mediaSize")),
      likes(decoder.decodeInt64ForKey("likes")),
      shares(decoder.decodeInt64ForKey("shares")),
      replies(decoder.decodeInt64ForKey("replies")),
      gaps(decoder.decodeInt64ForKey("gaps", 0)) {}

void Post::encode(ZEBEncoder& encoder) const {
  encoder.encodeInt64(identifier, "identifier");
  encoder.encodeObject(ArchivedKind(kind), "kind");
  encoder.encodeObject(author, "author");
  encoder.encodeObject(date, "date");
  encoder.encodeString(text, "text");
  encoder.encodeObject(links, "links");
  encoder.encodeObject(tags, "tags");
  encoder.encodeObject(mediaSize, "mediaSize");
  encoder.encodeInt64(likes, "likes");
  encoder.encodeInt64(shares, "shares");
  encoder.encodeInt64(replies, "replies");
  encoder.encodeInt64(gaps, "gaps");
}

// Written out, because references are equal only if they refer to the same object, but posts with
// equal authors are equal.
bool Post::operator==(const Post& other) const {
  return author->isEqual(*other.author) && identifier == other.identifier && kind == other.kind &&
         date == other.date && text == other.text && links == other.links && tags == other.tags &&
         mediaSize == other.mediaSize && likes == other.likes && shares == other.shares &&
         replies == other.replies && gaps == other.gaps;
}

Timeline::Timeline(ZEBDecoder& decoder)
    : title(decoder.decodeStringForKey("title")),
      posts(decoder.decodeObjectForKey<std::vector<Post>>("posts")) {}

void Timeline::encode(ZEBEncoder& encoder) const {
  encoder.encodeString(title, "title");
  encoder.encodeObject(posts, "posts");
}

}  // namespace zeb::timeline
