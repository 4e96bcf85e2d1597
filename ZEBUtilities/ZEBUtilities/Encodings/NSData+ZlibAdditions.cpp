#include <ZEBPlatform/Foundation/detail/DataBuilder.h>
#include <ZEBPlatform/Logging/OLGLogging.h>
#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>
#include <ZEBUtilities/Encodings/NSData+ZlibAdditions.h>
#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <span>
#include <string_view>

namespace zeb {

namespace {

constexpr std::string_view sourceFile = "ZEBUtilities/ZEBUtilities/NSData+ZlibAdditions";
constexpr std::string_view compressFunction = "-[NSData(ZlibAdditions) zeb_gzipCompress:]";
constexpr std::string_view decompressFunction = "-[NSData(ZlibAdditions) zeb_gzipDecompress]";

constexpr int gzipWindowBits = 15 + 16;  // a window of 32 KiB, in a gzip wrapper
constexpr int memoryLevel = 8;
constexpr std::size_t maxWrapperBytes = 12;
constexpr std::size_t inflatedChunkBytes = 16384;

template <class... Arguments>
void log(std::int32_t level, std::string_view function, std::int32_t line, std::string_view format,
         const Arguments&... arguments) {
  const char* const channel = ZEBUtilitiesLoggingChannel_Performance;
  if (!OLGCanLog(nullptr, level, channel)) return;
  OLGLogEx(nullptr, level, channel, sourceFile, function, line, format, arguments...);
}

const char* messageOfCompression(int status) noexcept {
  switch (status) {
    case Z_VERSION_ERROR:
      return "The version of zlib.h and the version of the library linked do not match.";
    case Z_BUF_ERROR:
      return "Ran out of output buffer for writing compressed bytes.";
    case Z_MEM_ERROR:
      return "Memory could not be allocated for processing.";
    case Z_DATA_ERROR:
      return "The deflate data was invalid or incomplete.";
    case Z_STREAM_ERROR:
      return "The stream state was inconsistent (e.g., next_in or next_out was NULL).";
    case Z_ERRNO:
      return "Error occured while reading file.";
    case Z_OK:
      return "Unexpected: decode() result did not finish with Z_STREAM_END";
    default:
      return "Unknown error code.";
  }
}

Bytef* zlibBytes(const void* bytes) noexcept {
  // zlib's interface has no const pointers, but it only reads its input.
  return static_cast<Bytef*>(const_cast<void*>(bytes));
}

double expectedBytes(std::size_t length) noexcept {
  return std::ceil(static_cast<double>(length) * 1.002);
}

/// Compresses into a builder. `status` is what zlib answered last.
class Deflation {
 public:
  explicit Deflation(int level)
      : stream_(std::make_unique<z_stream>()),
        status_(deflateInit2(stream_.get(), level, Z_DEFLATED, gzipWindowBits, memoryLevel,
                             Z_DEFAULT_STRATEGY)),
        isInitialised_(status_ == Z_OK) {}
  Deflation(const Deflation&) = delete;
  Deflation& operator=(const Deflation&) = delete;
  ~Deflation() {
    if (isInitialised_) deflateEnd(stream_.get());
  }

  int status() const noexcept { return status_; }
  const char* zlibMessage() const noexcept { return stream_->msg; }

  void take(std::span<const std::byte> range) {
    const auto length = static_cast<uInt>(range.size());
    const auto room =
        static_cast<uInt>(static_cast<std::uint64_t>(expectedBytes(length)) + maxWrapperBytes);
    stream_->next_in = zlibBytes(range.data());
    stream_->avail_in = length;
    do {
      deflateInto(room, Z_NO_FLUSH);
      if (status_ == Z_OK) appendOutput();
    } while (status_ == Z_OK && stream_->avail_in != 0);
  }

  void finish(std::size_t totalLength) {
    const double room = static_cast<double>(maxWrapperBytes) - static_cast<double>(result_.size()) +
                        expectedBytes(totalLength);
    deflateInto(static_cast<uInt>(static_cast<std::uint64_t>(std::max(room, 0.0))), Z_FINISH);
    if (status_ == Z_STREAM_END) appendOutput();
  }

  NSData result() { return result_.finish(); }

 private:
  void deflateInto(uInt room, int flush) {
    result_.require(room);
    stream_->next_out = zlibBytes(result_.cursor());
    stream_->avail_out = room;
    status_ = deflate(stream_.get(), flush);
  }
  void appendOutput() noexcept { result_.setCursor(reinterpret_cast<char*>(stream_->next_out)); }

  std::unique_ptr<z_stream> stream_;
  int status_;
  const bool isInitialised_;
  detail::DataBuilder result_;
};

NSData logFailedCompression(int status, const char* zlibMessage) {
  log(OLGLevelError, compressFunction, 161,
      "%s: zlib error while attempting compression: \"%@\" Message: \"%s\"", compressFunction,
      NSString(messageOfCompression(status)), zlibMessage);
  return nullptr;
}

/// Inflates one member, range after range.
class Inflation {
 public:
  explicit Inflation(std::size_t maxLength) noexcept
      : maxLength_(maxLength),
        status_(inflateInit2(&stream_, gzipWindowBits)),
        isInitialised_(status_ == Z_OK) {}
  Inflation(const Inflation&) = delete;
  Inflation& operator=(const Inflation&) = delete;
  ~Inflation() {
    if (isInitialised_) inflateEnd(&stream_);
  }

  bool isReady() const noexcept { return isInitialised_; }
  bool isComplete() const noexcept { return status_ == Z_STREAM_END && !isTooLong_; }
  bool isTooLong() const noexcept { return isTooLong_; }

  /// Answers whether the next range is wanted.
  bool take(std::span<const std::byte> range) {
    char chunk[inflatedChunkBytes];
    stream_.avail_in = 0;
    do {
      if (stream_.avail_in == 0) range = range.subspan(setInput(range));
      stream_.next_out = zlibBytes(chunk);
      stream_.avail_out = sizeof chunk;
      status_ = inflate(&stream_, Z_NO_FLUSH);
      if (status_ != Z_OK && status_ != Z_STREAM_END) return false;
      if (!append({chunk, sizeof chunk - stream_.avail_out})) return false;
    } while (status_ == Z_OK && (stream_.avail_out == 0 || !range.empty()));
    return status_ == Z_OK;
  }

  NSData result() { return result_.finish(); }

 private:
  /// Passes on as much of the range as zlib can count, and answers how much.
  std::size_t setInput(std::span<const std::byte> range) noexcept {
    constexpr std::size_t maxInput = std::numeric_limits<uInt>::max();
    const std::size_t length = std::min(range.size(), maxInput);
    stream_.next_in = zlibBytes(range.data());
    stream_.avail_in = static_cast<uInt>(length);
    return length;
  }
  bool append(std::string_view inflated) {
    isTooLong_ = inflated.size() > maxLength_ - result_.size();
    if (isTooLong_ || inflated.empty()) return !isTooLong_;
    result_.require(inflated.size());
    result_.put(inflated);
    return true;
  }

  z_stream stream_{};
  const std::size_t maxLength_;
  int status_;
  const bool isInitialised_;
  bool isTooLong_ = false;
  detail::DataBuilder result_;
};

}  // namespace

NSData zeb_gzipCompress(const NSData& data, std::int32_t level) {
  if (data.isNil()) return nullptr;
  try {
    Deflation deflation(std::clamp(level, -1, 9));
    if (deflation.status() == Z_OK) {
      data.enumerateByteRanges([&](std::span<const std::byte> range, NSRange) {
        // An empty range is nothing to take in; some versions of zlib call it an error.
        if (!range.empty()) deflation.take(range);
        return deflation.status() != Z_OK;
      });
    }
    if (deflation.status() == Z_OK) deflation.finish(data.length());
    if (deflation.status() != Z_STREAM_END) {
      return logFailedCompression(deflation.status(), deflation.zlibMessage());
    }
    const NSData result = deflation.result();
    log(OLGLevelDebug, compressFunction, 130, "%s: Compressed data from %tu to %tu",
        compressFunction, data.length(), result.length());
    return result;
  } catch (const std::bad_alloc&) {
    return logFailedCompression(Z_MEM_ERROR, nullptr);
  }
}

NSData zeb_gzipDecompress(const NSData& data) {
  return zeb_gzipDecompress(data, std::numeric_limits<std::size_t>::max());
}

NSData zeb_gzipDecompress(const NSData& data, std::size_t maxLength) {
  if (data.isNil()) return nullptr;
  try {
    Inflation inflation(maxLength);
    if (inflation.isReady()) {
      data.enumerateByteRanges(
          [&](std::span<const std::byte> range, NSRange) { return inflation.take(range); });
    }
    if (inflation.isComplete()) return inflation.result();
    if (inflation.isTooLong()) {
      log(OLGLevelError, decompressFunction, __LINE__,
          "ZLib Decompress Error! The content is longer than the permitted %tu bytes.", maxLength);
      return nullptr;
    }
  } catch (const std::bad_alloc&) {
    // Reported below, like all other failures.
  }
  log(OLGLevelError, decompressFunction, 212, "ZLib Decompress Error!");
  return nullptr;
}

}  // namespace zeb
