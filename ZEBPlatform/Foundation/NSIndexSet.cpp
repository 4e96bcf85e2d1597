#include <ZEBPlatform/Foundation/KeyedHash.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/NSIndexSet.h>

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

namespace zeb {

class NSIndexSet::Contents final : public NSObject {
 public:
  explicit Contents(std::vector<NSRange> contentRanges) : ranges(std::move(contentRanges)) {
    for (const NSRange& range : ranges) count += range.length;
  }

  bool isEqual(const NSObject& other) const override {
    const auto* contents = dynamic_cast<const Contents*>(&other);
    return contents && contents->ranges == ranges;
  }
  std::size_t hash() const noexcept override {
    detail::KeyedHasher hasher;
    for (const NSRange& range : ranges) {
      hasher.absorb(range.location);
      hasher.absorb(range.length);
    }
    return hasher.finish();
  }
  std::string className() const override { return "NSIndexSet"; }
  std::string description() const override {
    std::string text = "[";
    for (const NSRange& range : ranges) {
      if (text.size() > 1) text += ", ";
      text += std::to_string(range.location);
      if (range.length > 1) text += "-" + std::to_string(range.location + range.length - 1);
    }
    return text + "]";
  }

  const std::vector<NSRange> ranges;
  std::size_t count = 0;
};

NSIndexSet::NSIndexSet(Ref<NSObject> contents) noexcept : contents_(std::move(contents)) {}

const NSIndexSet::Contents* NSIndexSet::contents() const noexcept {
  return static_cast<const Contents*>(contents_.get());
}

NSIndexSet NSIndexSet::indexSetWithIndexesInRange(NSRange range) {
  if (range.length == 0) return NSIndexSet(makeRef<Contents>(std::vector<NSRange>()));
  requireRange(range, NSNotFound);
  return NSIndexSet(makeRef<Contents>(std::vector<NSRange>{range}));
}

NSIndexSet NSIndexSet::indexSetWithIndexes(std::span<const std::size_t> indexes) {
  std::vector<std::size_t> sorted;
  if (!std::is_sorted(indexes.begin(), indexes.end())) {
    sorted.assign(indexes.begin(), indexes.end());
    std::sort(sorted.begin(), sorted.end());
    indexes = sorted;
  }
  std::vector<NSRange> ranges;
  for (const std::size_t index : indexes) {
    if (index >= NSNotFound) raiseRange(index, NSNotFound);
    const std::size_t end = ranges.empty() ? 0 : ranges.back().location + ranges.back().length;
    if (!ranges.empty() && index < end) continue;  // given twice
    if (!ranges.empty() && index == end) {
      ++ranges.back().length;
    } else {
      ranges.push_back({index, 1});
    }
  }
  return NSIndexSet(makeRef<Contents>(std::move(ranges)));
}

std::size_t NSIndexSet::count() const noexcept { return isNil() ? 0 : contents()->count; }

bool NSIndexSet::containsIndex(std::size_t index) const noexcept {
  const auto all = ranges();
  const auto after = std::ranges::upper_bound(all, index, std::less<>(), &NSRange::location);
  return after != all.begin() && index - after[-1].location < after[-1].length;
}

std::size_t NSIndexSet::firstIndex() const noexcept {
  return ranges().empty() ? NSNotFound : ranges().front().location;
}

std::size_t NSIndexSet::lastIndex() const noexcept {
  return ranges().empty() ? NSNotFound : ranges().back().location + ranges().back().length - 1;
}

std::span<const NSRange> NSIndexSet::ranges() const noexcept {
  return isNil() ? std::span<const NSRange>() : std::span<const NSRange>(contents()->ranges);
}

NSIndexSet::operator Value() const { return Value(contents_); }

NSIndexSet NSIndexSet::from(const Value& value) noexcept {
  return NSIndexSet(value.object<Contents>());
}

bool operator==(const NSIndexSet& left, const NSIndexSet& right) noexcept {
  return left.isNil() == right.isNil() && std::ranges::equal(left.ranges(), right.ranges());
}

}  // namespace zeb
