#include "CollectionsPeers.h"

#include <QString>
#include <QVariant>
#include <algorithm>
#include <iterator>

#include "Bench.h"

namespace zeb::bench {

namespace {

bool precedes(const QVariant& left, const QVariant& right) {
  return QVariant::compare(left, right) == QPartialOrdering::Less;
}

/// Operations on a `QVariantList` by the algorithms of the standard library.
template <class Map, class Test>
class QtList final : public ListPeer {
 public:
  QtList(QVariantList list, Map map, Test test) : list_(std::move(list)), map_(map), test_(test) {}

  std::size_t map() const override {
    QVariantList results;
    results.reserve(list_.size());
    std::transform(list_.begin(), list_.end(), std::back_inserter(results), map_);
    return static_cast<std::size_t>(results.size());
  }
  std::size_t filter() const override {
    QVariantList results;
    std::copy_if(list_.begin(), list_.end(), std::back_inserter(results), test_);
    return static_cast<std::size_t>(results.size());
  }
  std::size_t sort() const override {
    QVariantList results = list_;
    std::stable_sort(results.begin(), results.end(), precedes);
    return static_cast<std::size_t>(results.size());
  }

 private:
  QVariantList list_;
  Map map_;
  Test test_;
};

}  // namespace

std::unique_ptr<ListPeer> makeQtIntegers(std::span<const std::int64_t> integers) {
  QVariantList list;
  for (const std::int64_t integer : integers) list.append(QVariant(qlonglong{integer}));
  const auto map = [](const QVariant& value) { return QVariant(value.toLongLong() + 1); };
  const auto test = [](const QVariant& value) { return value.toLongLong() % 2 == 0; };
  return std::make_unique<QtList<decltype(map), decltype(test)>>(list, map, test);
}

std::unique_ptr<ListPeer> makeQtStrings(std::span<const std::string> strings) {
  QVariantList list;
  for (const std::string& string : strings) list.append(QString::fromStdString(string));
  const auto map = [](const QVariant& value) { return QVariant(value.toString().size()); };
  const auto test = [](const QVariant& value) { return value.toString().size() % 2 == 0; };
  return std::make_unique<QtList<decltype(map), decltype(test)>>(list, map, test);
}

}  // namespace zeb::bench
