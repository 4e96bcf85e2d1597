#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <span>
#include <type_traits>

namespace zeb::detail {

/// Stable merge sort of plain records. Unlike the standard library's, it stays within its memory
/// and keeps every record even if `precedes` contradicts itself, because user code decides about
/// the order. If `precedes` throws, the records are in an unspecified order and possibly repeated.
template <class Record, class Precedes>
void stableSort(std::span<Record> records, const Precedes& precedes) {
  static_assert(std::is_trivially_copyable_v<Record>);
  constexpr std::size_t runLength = 8;
  const std::size_t count = records.size();
  for (std::size_t start = 0; start < count; start += runLength) {
    const std::size_t end = std::min(start + runLength, count);
    for (std::size_t next = start + 1; next < end; ++next) {
      const Record record = records[next];
      std::size_t place = next;
      for (; place > start && precedes(record, records[place - 1]); --place) {
        records[place] = records[place - 1];
      }
      records[place] = record;
    }
  }
  if (count <= runLength) return;

  const auto memory = std::make_unique_for_overwrite<Record[]>(count);
  Record* from = records.data();
  Record* to = memory.get();
  for (std::size_t length = runLength; length < count; length *= 2) {
    for (std::size_t start = 0; start < count; start += 2 * length) {
      const Record* left = from + start;
      const Record* const leftEnd = from + std::min(start + length, count);
      const Record* right = leftEnd;
      const Record* const rightEnd = from + std::min(start + 2 * length, count);
      Record* out = to + start;
      const bool isMerged = right == rightEnd || !precedes(*right, leftEnd[-1]);
      while (!isMerged && left != leftEnd && right != rightEnd) {
        const bool takesRight = precedes(*right, *left);
        *out++ = takesRight ? *right : *left;
        right += takesRight;
        left += !takesRight;
      }
      out = std::copy(left, leftEnd, out);
      std::copy(right, rightEnd, out);
    }
    std::swap(from, to);
  }
  if (from != records.data()) std::copy_n(from, count, records.data());
}

}  // namespace zeb::detail
