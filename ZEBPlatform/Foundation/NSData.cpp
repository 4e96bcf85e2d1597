#include <ZEBPlatform/Foundation/DataStoragePrivate.h>
#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSException.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>

namespace zeb {

namespace detail {

const std::byte* JoinedDataStorage::joined() {
  std::call_once(joining, [this] {
    buffer.clear();  // of what an earlier call appended before it ran out of memory
    buffer.reserve(length);
    for (const NSData& part : parts) {
      part.enumerateByteRanges([this](std::span<const std::byte> piece, NSRange) {
        buffer.insert(buffer.end(), piece.begin(), piece.end());
        return true;
      });
    }
  });
  return buffer.data();
}

void destroyData(DataStorage* data) noexcept {
  if (data->flags & StorageIndirect) {
    delete static_cast<IndirectDataStorage*>(data);
  } else {
    std::free(data);
  }
}

}  // namespace detail

namespace {

using detail::DataStorage;
using detail::JoinedDataStorage;

JoinedDataStorage* joinedStorage(const DataStorage* data) noexcept {
  if (!(data->flags & detail::StorageIndirect)) return nullptr;
  return dynamic_cast<JoinedDataStorage*>(const_cast<detail::IndirectDataStorage*>(
      static_cast<const detail::IndirectDataStorage*>(data)));
}

}  // namespace

NSData NSData::dataWithBytes(std::span<const std::byte> bytes) {
  void* memory = std::malloc(sizeof(DataStorage) + bytes.size());
  if (!memory) throw std::bad_alloc();
  auto* data = new (memory) DataStorage(0, bytes.size());
  auto* content = reinterpret_cast<std::byte*>(data + 1);
  if (!bytes.empty()) std::memcpy(content, bytes.data(), bytes.size());
  data->bytes = content;
  return NSData(static_cast<detail::Storage*>(data));
}

NSData NSData::dataWithBytesNoCopy(std::span<const std::byte> bytes, Block<void()> release) {
  return NSData(
      static_cast<detail::Storage*>(new detail::ForeignDataStorage(bytes, std::move(release))));
}

NSData NSData::dataByJoining(std::span<const NSData> parts) {
  std::vector<NSData> pieces;
  std::size_t length = 0;
  for (const NSData& part : parts) {
    if (part.isEmpty()) continue;
    length += part.length();
    pieces.push_back(part.copy());
  }
  if (pieces.empty()) return data();
  if (pieces.size() == 1) return pieces.front();
  return NSData(static_cast<detail::Storage*>(new JoinedDataStorage(std::move(pieces), length)));
}

std::size_t NSData::length() const noexcept {
  return isNil() ? 0 : storageAs<DataStorage>()->length;
}

std::span<const std::byte> NSData::bytes() const {
  if (isNil()) return {};
  const DataStorage* data = storageAs<DataStorage>();
  if (JoinedDataStorage* joined = joinedStorage(data)) return {joined->joined(), joined->length};
  return {data->bytes, data->length};
}

std::string_view NSData::view() const {
  const std::span<const std::byte> all = bytes();
  return {reinterpret_cast<const char*>(all.data()), all.size()};
}

void NSData::enumerateByteRanges(
    FunctionView<bool(std::span<const std::byte> bytes, NSRange range)> visit) const {
  if (isNil() || !visit) return;
  const DataStorage* const data = storageAs<DataStorage>();
  if (!joinedStorage(data)) {
    visit({data->bytes, data->length}, {0, data->length});
    return;
  }
  // Joined data may consist of joined data: the parts still to visit wait here, next one last.
  std::vector<NSData> waiting{*this};
  std::size_t location = 0;
  while (!waiting.empty()) {
    const NSData part = waiting.back();
    waiting.pop_back();
    if (JoinedDataStorage* joined = joinedStorage(part.storageAs<DataStorage>())) {
      waiting.insert(waiting.end(), joined->parts.rbegin(), joined->parts.rend());
      continue;
    }
    const std::span<const std::byte> piece = part.bytes();
    if (!visit(piece, {location, piece.size()})) return;
    location += piece.size();
  }
}

NSData NSData::subdataWithRange(NSRange range) const {
  if (isNil()) return nullptr;
  if (range.location > length()) raiseRange(range.location, length());
  if (range.length > length() - range.location) raiseRange(range.location + range.length, length());
  return dataWithBytes(bytes().subspan(range.location, range.length));
}

NSMutableData NSData::mutableCopy() const {
  NSMutableData result(nullptr);
  if (isNil()) return result;
  result = NSMutableData();
  result.appendData(*this);
  return result;
}

NSMutableData::NSMutableData()
    : NSData(static_cast<detail::Storage*>(new detail::MutableDataStorage)) {}

NSMutableData NSMutableData::from(const Value& value) noexcept {
  NSMutableData result(nullptr);
  if (value.isData() && value.isMutable()) static_cast<Value&>(result) = value;
  return result;
}

void NSMutableData::appendBytes(std::span<const std::byte> bytes) {
  if (isNil()) return;
  auto& data = *storageAs<detail::MutableDataStorage>();
  const std::byte* const start = data.buffer.data();
  const bool isOwn = !std::less<>()(bytes.data(), start) &&
                     std::less<>()(bytes.data(), start + data.buffer.size());
  if (isOwn) {  // appended to itself: the source would move
    const std::vector<std::byte> own(bytes.begin(), bytes.end());
    data.buffer.insert(data.buffer.end(), own.begin(), own.end());
  } else {
    data.buffer.insert(data.buffer.end(), bytes.begin(), bytes.end());
  }
  data.contentsChanged();
}

void NSMutableData::appendData(const NSData& other) { appendBytes(other.bytes()); }

void NSMutableData::setLength(std::size_t length) {
  if (isNil()) return;
  auto& data = *storageAs<detail::MutableDataStorage>();
  data.buffer.resize(length);
  data.contentsChanged();
}

std::span<std::byte> NSMutableData::mutableBytes() noexcept {
  if (isNil()) return {};
  return storageAs<detail::MutableDataStorage>()->buffer;
}

}  // namespace zeb
