#pragma once

#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/NSURL.h>
#include <ZEBPlatform/Geometry/CGGeometry.h>
#include <ZEBUtilities/Coding/ZEBEncodable.h>
#include <ZEBUtilities/Coding/ZEBRawValueEnumCodable.h>

#include <array>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace zeb::timeline {

/// The author of a post. Many posts share one author, so authors are shared objects. Immutable.
class Author final : public ZEBObjCEncodable {
 public:
  Author(const NSString& authorHandle, const NSString& authorName, const NSString& place)
      : handle(authorHandle), name(authorName), home(place) {}
  explicit Author(ZEBDecoder& decoder);

  NSString encodableName() const override { return "Author"; }
  void encodeWithEncoder(ZEBEncoder& encoder) const override;
  bool isEqual(const NSObject& other) const noexcept override;
  std::size_t hash() const noexcept override { return handle.hash(); }

  const NSString handle, name, home;
};

/// A link in a post.
struct Link {
  Link(const NSString& linkTitle, const NSURL& linkURL) : title(linkTitle), url(linkURL) {}
  explicit Link(ZEBDecoder& decoder);
  static const char* encodableName() { return "Link"; }
  void encode(ZEBEncoder& encoder) const;
  bool operator==(const Link&) const = default;

  /// The host in Unicode, for people; empty if there is none.
  NSString host() const;

  NSString title;
  NSURL url;  ///< never nil; its host is in ASCII
};

enum class PostKind {
  other,
  note,
  reply,
  photo,
  video,
  event,
  poll,
  push,
  star,
  fork,
  create,
  wiki
};

struct Post {
  Post() = default;
  explicit Post(ZEBDecoder& decoder);
  static const char* encodableName() { return "Post"; }
  void encode(ZEBEncoder& encoder) const;
  bool operator==(const Post& other) const;

  std::int64_t identifier = 0;
  PostKind kind = PostKind::other;
  Ref<Author> author;  ///< never nil
  NSDate date;         ///< nil when unknown
  NSString text;
  std::vector<Link> links;
  std::vector<NSString> tags;
  std::optional<CGSize> mediaSize;  ///< in pixels
  std::int64_t likes = 0, shares = 0, replies = 0;
  std::int64_t gaps = 0;  ///< fields of the feed that were not usable
};

struct Timeline {
  Timeline() = default;
  explicit Timeline(ZEBDecoder& decoder);
  static const char* encodableName() { return "Timeline"; }
  void encode(ZEBEncoder& encoder) const;
  bool operator==(const Timeline&) const = default;

  NSString title;
  std::vector<Post> posts;
};

}  // namespace zeb::timeline

/// The texts for the kinds of posts, in archives and in feeds.
template <>
struct zeb::ZEBRawValueEnumTraits<zeb::timeline::PostKind> {
  using Kind = timeline::PostKind;
  static const char* encodableName() { return "PostKind"; }
  static constexpr std::array cases{
      std::pair{Kind::other, "other"},   std::pair{Kind::note, "note"},
      std::pair{Kind::reply, "reply"},   std::pair{Kind::photo, "photo"},
      std::pair{Kind::video, "video"},   std::pair{Kind::event, "event"},
      std::pair{Kind::poll, "poll"},     std::pair{Kind::push, "push"},
      std::pair{Kind::star, "star"},     std::pair{Kind::fork, "fork"},
      std::pair{Kind::create, "create"}, std::pair{Kind::wiki, "wiki"}};
};
