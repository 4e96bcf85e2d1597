#pragma once

#include <ZEBPlatform/Foundation/NSData.h>

#include <cstddef>
#include <cstdint>

namespace zeb {

// gzip (RFC 1952) through zlib. They return nil on nil data, and on failure after writing one
// error line to the channel "ZEBUtilitiesPerformance". They throw nothing, except std::bad_alloc if
// there is no memory even for the error line. Any thread.

/// One gzip member. `level` is 0 (stored) to 9 (smallest); a negative one means zlib's default, and
/// one above 9 means 9.
///
/// Three limits are deliberate, because other implementations of this function have them, too:
/// - Only the first range of bytes of joined data is compressed. Pass data of one range.
/// - The member must fit into 12 bytes more than 1.002 times the length of all data; otherwise the
///   result is nil. This always fails for empty data and often for short or incompressible data.
/// - Of a range of 4 GiB or more only the length modulo 4 GiB is compressed.
[[nodiscard]] NSData zeb_gzipCompress(const NSData& data, std::int32_t level);

/// The content of the first gzip member; what follows it is ignored. Nil for anything that does not
/// begin with a complete, undamaged member: empty data, a zlib or raw deflate stream, a truncated
/// member, a wrong checksum.
///
/// The ranges of joined data are read in order, without joining them. Deliberately, as in other
/// implementations, data fails if one of its ranges ends before the end of the member, and what was
/// inflated from this range has a length of exactly a multiple of 16 KiB. Data of one range never
/// fails for this reason.
///
/// The result's buffer is never larger than twice the content so far, and working memory is below
/// 64 KiB. But the content may have up to 1030 times the length of `data`, so use the overload
/// below for data from outside.
[[nodiscard]] NSData zeb_gzipDecompress(const NSData& data);

/// The same, but also nil, with an error line of its own, if the content is longer than
/// `maxLength` bytes. Not more than that and 16 KiB are inflated.
[[nodiscard]] NSData zeb_gzipDecompress(const NSData& data, std::size_t maxLength);

}  // namespace zeb
