#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

#include "JsonBench.h"

namespace zeb::bench {

namespace {

struct Qt {
  struct Text : QByteArray {
    explicit Text(std::string_view text)
        : QByteArray(text.data(), static_cast<qsizetype>(text.size())) {}
  };
  using Tree = QJsonDocument;
  Tree parse(const Text& text) { return Tree::fromJson(text); }
  std::size_t count(const Tree& tree) {
    if (tree.isNull()) return 0;
    return count(tree.isArray() ? QJsonValue(tree.array()) : QJsonValue(tree.object()));
  }
  std::size_t count(const QJsonValue& value) {
    std::size_t result = 1;
    if (value.isArray()) {
      for (const QJsonValue& element : value.toArray()) result += count(element);
    } else if (value.isObject()) {
      for (const QJsonValue& member : value.toObject()) result += count(member);
    }
    return result;
  }
  QByteArray write(const Tree& tree) { return tree.toJson(Tree::Compact); }
  std::string copy(const QByteArray& written) { return written.toStdString(); }
};

}  // namespace

std::unique_ptr<JsonLibrary> makeQtJson(std::string_view text) {
  return makeJsonLibrary<JsonAdapter<Qt>>(text);
}

}  // namespace zeb::bench
