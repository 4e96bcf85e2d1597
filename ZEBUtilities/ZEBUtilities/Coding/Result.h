#pragma once

#include <utility>
#include <variant>

namespace zeb {

/// Either a value or an error.
template <class SuccessValue, class Failure>
class Result {
 public:
  static Result success(SuccessValue value) {
    return Result(std::in_place_index<0>, std::move(value));
  }
  static Result failure(Failure error) { return Result(std::in_place_index<1>, std::move(error)); }

  bool isSuccess() const noexcept { return content_.index() == 0; }
  bool isFailure() const noexcept { return !isSuccess(); }
  /// Null in the other case.
  const SuccessValue* value() const noexcept { return std::get_if<0>(&content_); }
  const Failure* error() const noexcept { return std::get_if<1>(&content_); }

 private:
  template <std::size_t Index, class Content>
  Result(std::in_place_index_t<Index> index, Content content)
      : content_(index, std::move(content)) {}

  std::variant<SuccessValue, Failure> content_;
};

}  // namespace zeb
