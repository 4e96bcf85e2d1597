#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Runtime.h>

#include <mutex>

namespace zeb::test {

/// A registered class with properties of several types.
class Track : public NSObject {
 public:
  static Class* runtimeClass() {
    static Class* const cls = registerClass(
        "Track",
        {
            classMethod("trackWithTitle:", &Track::trackWithTitle),
            property("title", &Track::title, &Track::setTitle),
            property("plays", &Track::plays, &Track::setPlays),
            property("next", &Track::next, &Track::setNext),
            property(
                "rank", [](const Track& self) { return self.rank_; }, &Track::setRank,
                KeyValueNotification::manual),
            property("capitals", [](const Track& self) { return self.title_.length() > 0; }),
            method("titleWithPrefix:times:",
                   [](const Track& self, const std::string& prefix, std::uint8_t times) {
                     std::string text = self.title().utf8();
                     for (int i = 0; i < times; ++i) text = prefix + text;
                     return NSString(text);
                   }),
            method("isBefore:",
                   [](const Track& self, const Track& other) { return self.rank_ < other.rank_; }),
        });
    return cls;
  }
  Class* classObject() const override { return runtimeClass(); }

  static Ref<Track> trackWithTitle(const NSString& title) {
    auto track = makeRef<Track>();
    track->title_ = title;
    return track;
  }
  NSString title() const { return title_; }
  void setTitle(const NSString& title) { title_ = title; }
  std::int64_t plays() const { return plays_; }
  void setPlays(std::int64_t plays) { plays_ = plays; }
  Ref<Track> next() const {
    std::lock_guard guard(mutex_);
    return next_;
  }
  void setNext(Ref<Track> next) {
    std::lock_guard guard(mutex_);
    std::swap(next_, next);
  }
  void setRank(double rank) {
    const KeyValueChangeScope change(*this, "rank");
    rank_ = rank;
  }

 private:
  NSString title_;
  std::atomic<std::int64_t> plays_{0};
  mutable std::mutex mutex_;  ///< storms change `next` from everywhere
  Ref<Track> next_;
  double rank_ = 0;
};

inline void exchangeMethods(Class* cls, SEL one, SEL other) {
  method_exchangeImplementations(class_getInstanceMethod(cls, one),
                                 class_getInstanceMethod(cls, other));
}

}  // namespace zeb::test
