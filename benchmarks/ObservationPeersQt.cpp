#include "ObservationPeers.h"

#include <QCoreApplication>
#include <QObject>
#include <QSemaphore>
#include <QThread>
#include <QVariant>
#include <vector>

namespace zeb::bench {

namespace {

class Subject : public QObject {
  Q_OBJECT
  Q_PROPERTY(qint64 value READ value WRITE setValue NOTIFY valueChanged)

 public:
  qint64 value() const { return value_; }
  void setValue(qint64 value) {
    if (value == value_) return;
    value_ = value;
    Q_EMIT valueChanged(value);
  }

 Q_SIGNALS:
  void valueChanged(qint64 value);
  void pushed(qint64 value);

 private:
  qint64 value_ = 0;
};

class Qt final : public QtObservation {
 public:
  explicit Qt(std::size_t receivers) {
    if (!QCoreApplication::instance()) {
      static int count = 0;
      static QCoreApplication application(count, nullptr);
    }
    QObject::connect(&subject_, &Subject::valueChanged, &subject_,
                     [this](qint64 value) { sum_ += value; });
    thread_.start();
    for (std::size_t number = 0; number < receivers; ++number) {
      receivers_.push_back(std::make_unique<QObject>());
      receivers_.back()->moveToThread(&thread_);
      QObject::connect(
          &subject_, &Subject::pushed, receivers_.back().get(),
          [this](qint64) {
            if (++called_ == expected_) done_.release();
          },
          ::Qt::QueuedConnection);
    }
  }
  ~Qt() override {
    thread_.quit();
    thread_.wait();
  }

  void setValue(std::int64_t value) override { subject_.setValue(value); }
  void setValueByName(std::int64_t value) override {
    subject_.setProperty("value", static_cast<qint64>(value));
  }
  std::int64_t sum() const override { return sum_; }

  void emitQueued(std::size_t count) override {
    called_ = 0;
    expected_ = count * receivers_.size();
    for (std::size_t number = 0; number < count; ++number) {
      Q_EMIT subject_.pushed(static_cast<qint64>(number));
    }
    done_.acquire();
  }

 private:
  Subject subject_;
  qint64 sum_ = 0;
  QThread thread_;
  std::vector<std::unique_ptr<QObject>> receivers_;
  std::size_t called_ = 0;
  std::size_t expected_ = 0;
  QSemaphore done_;
};

}  // namespace

std::unique_ptr<QtObservation> makeQtObservation(std::size_t receivers) {
  return std::make_unique<Qt>(receivers);
}

}  // namespace zeb::bench

#include "ObservationPeersQt.moc"
