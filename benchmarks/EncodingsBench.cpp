#include <ZEBUtilities/Encodings.h>
#include <nettle/nettle-meta.h>
#include <openssl/evp.h>
#include <zlib.h>

#include <array>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "Bench.h"

#if ZEB_BENCH_HAVE_BOTAN
#include <botan/hex.h>
#endif
#if ZEB_BENCH_HAVE_CRYPTOPP
#include <cryptopp/base32.h>
#include <cryptopp/filters.h>
#endif

namespace zeb::bench {

namespace {

using Bytes = std::vector<unsigned char>;

const unsigned char* octets(std::string_view bytes) {
  return reinterpret_cast<const unsigned char*>(bytes.data());
}

std::string randomBytes(std::size_t length) {
  std::mt19937 random(1);
  std::string bytes(length, ' ');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

/// A body as servers send it: records with numbers and words.
std::string makeDocument(std::size_t length) {
  std::mt19937 random(1);
  std::string text = "[";
  while (text.size() < length) {
    text += "{\"id\":" + std::to_string(random()) +
            ",\"score\":" + std::to_string(random() % 1000) + ",\"name\":\"user " +
            std::to_string(random() % 5000) + "\",\"active\":true},";
  }
  text.back() = ']';
  return text;
}

struct Work {
  std::function<void()> ours;
  std::function<void()> peer;
};

/// The MB/s of both, if one call takes in or gives `length` bytes.
void addSample(Comparison& comparison, const std::string& input, std::size_t length,
               const Work& work) {
  const Seconds seconds = measureInTurns(work.ours, work.peer);
  const double megabytes = static_cast<double>(length) / 1e6;
  comparison.samples.push_back({input, megabytes / seconds.ours, megabytes / seconds.peer});
}

// gzip

constexpr int gzipWindowBits = 31;
constexpr int memoryLevel = 8;

/// One call of deflate into a buffer of the size that zlib computes.
Bytes deflated(std::string_view text, int level) {
  z_stream stream{};
  deflateInit2(&stream, level, Z_DEFLATED, gzipWindowBits, memoryLevel, Z_DEFAULT_STRATEGY);
  Bytes member(deflateBound(&stream, text.size()));
  stream.next_in = const_cast<Bytef*>(octets(text));
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = member.data();
  stream.avail_out = static_cast<uInt>(member.size());
  deflate(&stream, Z_FINISH);
  member.resize(stream.total_out);
  deflateEnd(&stream);
  return member;
}

/// In chunks of 16 KiB, which are appended to the result.
Bytes inflated(const NSData& member) {
  z_stream stream{};
  inflateInit2(&stream, gzipWindowBits);
  Bytes result;
  unsigned char chunk[16384];
  stream.next_in = const_cast<Bytef*>(octets(member.view()));
  stream.avail_in = static_cast<uInt>(member.length());
  int status = Z_OK;
  while (status == Z_OK) {
    stream.next_out = chunk;
    stream.avail_out = sizeof chunk;
    status = inflate(&stream, Z_NO_FLUSH);
    result.insert(result.end(), chunk, stream.next_out);
  }
  inflateEnd(&stream);
  return result;
}

const std::size_t gzipLengths[] = {4 << 10, 64 << 10, 1 << 20};

std::string nameOf(std::size_t length) {
  if (length >= 1 << 20) return std::to_string(length >> 20) + " MiB";
  return length >= 1 << 10 ? std::to_string(length >> 10) + " KiB" : std::to_string(length) + " B";
}

const Case compress("gzip.compress", [](Report& report) {
  for (const int level : {1, 6}) {
    Comparison comparison{megabytesPerSecond, "level " + std::to_string(level), "zlib", {}};
    for (const std::size_t length : gzipLengths) {
      const std::string text = makeDocument(length);
      const NSData data = NSData::dataWithBytes(text);
      require(zeb_gzipCompress(data, level) == NSData::dataWithBytes(deflated(text, level)),
              "different gzip members");
      addSample(comparison, nameOf(length), text.size(),
                {[&] { consume(zeb_gzipCompress(data, level)); },
                 [&] { consume(deflated(text, level)); }});
    }
    report.add(std::move(comparison));
  }
});

const Case decompress("gzip.decompress", [](Report& report) {
  Comparison comparison{megabytesPerSecond, "zeb_gzipDecompress", "zlib, chunks of 16 KiB", {}};
  for (const std::size_t length : gzipLengths) {
    const std::string text = makeDocument(length);
    const NSData member = zeb_gzipCompress(NSData::dataWithBytes(text), 6);
    require(NSData::dataWithBytes(inflated(member)) == zeb_gzipDecompress(member),
            "different content");
    addSample(comparison, nameOf(length), text.size(),
              {[&] { consume(zeb_gzipDecompress(member)); }, [&] { consume(inflated(member)); }});
  }
  report.add(std::move(comparison));
});

// Digests: all sides give their result in memory of its own.

struct Digest {
  const char* name;
  NSData (*ours)(const NSData&);
  const nettle_hash* nettle;
  const char* opensslName;
};
const Digest digests[] = {
    {"md2", zeb_MD2Hash, &nettle_md2, nullptr},
    {"md4", zeb_MD4Hash, &nettle_md4, nullptr},
    {"md5", zeb_MD5Hash, &nettle_md5, "MD5"},
    {"sha1", zeb_SHA1Hash, &nettle_sha1, "SHA1"},
    {"sha256", zeb_SHA256Hash, &nettle_sha256, "SHA256"},
    {"sha512", zeb_SHA512Hash, &nettle_sha512, "SHA512"},
};

Bytes nettleDigest(const nettle_hash& hash, std::string_view message) {
  alignas(16) char context[512];
  Bytes result(hash.digest_size);
  hash.init(context);
  hash.update(context, message.size(), octets(message));
  hash.digest(context, result.size(), result.data());
  return result;
}

/// The context is kept from the previous digest.
Bytes opensslDigest(const EVP_MD* algorithm, EVP_MD_CTX* context, std::string_view message) {
  Bytes result(static_cast<std::size_t>(EVP_MD_get_size(algorithm)));
  EVP_DigestInit_ex2(context, algorithm, nullptr);
  EVP_DigestUpdate(context, message.data(), message.size());
  EVP_DigestFinal_ex(context, result.data(), nullptr);
  return result;
}

void measureDigest(Report& report, const Digest& digest, std::size_t length) {
  const std::string message = randomBytes(length);
  const NSData data = NSData::dataWithBytes(message);
  const auto add = [&](const char* peer, const std::function<Bytes()>& theirs) {
    require(NSData::dataWithBytes(theirs()) == digest.ours(data), "different digests");
    Comparison comparison{megabytesPerSecond, nameOf(length), peer, {}};
    addSample(comparison, "", length,
              {[&] { consume(digest.ours(data)); }, [&] { consume(theirs()); }});
    report.add(std::move(comparison));
  };
  add("nettle", [&] { return nettleDigest(*digest.nettle, message); });
  if (!digest.opensslName) return;
  EVP_MD* const algorithm = EVP_MD_fetch(nullptr, digest.opensslName, nullptr);
  EVP_MD_CTX* const context = EVP_MD_CTX_new();
  add("OpenSSL, context kept", [&] { return opensslDigest(algorithm, context, message); });
  EVP_MD_CTX_free(context);
  EVP_MD_free(algorithm);
}

const std::array<Case, std::size(digests)> digestCases = [] {
  const auto makeCase = [](const Digest& digest) {
    return Case(std::string("digest.") + digest.name, [&digest](Report& report) {
      for (const std::size_t length :
           {std::size_t{64}, std::size_t{16} << 10, std::size_t{1} << 20})
        measureDigest(report, digest, length);
    });
  };
  return std::array<Case, std::size(digests)>{makeCase(digests[0]), makeCase(digests[1]),
                                              makeCase(digests[2]), makeCase(digests[3]),
                                              makeCase(digests[4]), makeCase(digests[5])};
}();

// Text

const std::size_t textLengths[] = {32, 1 << 10, 64 << 10};

/// Measures `ours` and `peer` with each length; both get its number and answer what they made.
template <class Prepare>
void measureText(Report& report, const char* ours, const char* peer, const Prepare& prepare) {
  Comparison comparison{megabytesPerSecond, ours, peer, {}};
  for (const std::size_t length : textLengths)
    addSample(comparison, nameOf(length), length, prepare(randomBytes(length)));
  report.add(std::move(comparison));
}

#if ZEB_BENCH_HAVE_BOTAN

const Case hexEncode("hex.encode", [](Report& report) {
  measureText(report, "zeb_hexStringValue", "Botan", [](const std::string& bytes) -> Work {
    const NSData data = NSData::dataWithBytes(bytes);
    const auto theirs = [bytes] { return Botan::hex_encode(octets(bytes), bytes.size(), false); };
    require(zeb_hexStringValue(data) == NSString(theirs()), "different digits");
    return {[data] { consume(zeb_hexStringValue(data)); }, [theirs] { consume(theirs()); }};
  });
});

const Case hexDecode("hex.decode", [](Report& report) {
  measureText(report, "zeb_dataWithHexString", "Botan", [](const std::string& bytes) -> Work {
    const std::string digits = Botan::hex_encode(octets(bytes), bytes.size(), false);
    const NSString text(digits);
    const auto theirs = [digits] { return Botan::hex_decode(digits); };
    require(zeb_dataWithHexString(text) == NSData::dataWithBytes(theirs()), "different bytes");
    return {[text] { consume(zeb_dataWithHexString(text)); }, [theirs] { consume(theirs()); }};
  });
});

#else

const Case hexEncode("hex.encode", [](Report& report) { report.skip("Botan"); });
const Case hexDecode("hex.decode", [](Report& report) { report.skip("Botan"); });

#endif

#if ZEB_BENCH_HAVE_CRYPTOPP

/// Both decoders know the letters A to Z. Their digits differ: we take RFC 4648's "2" to "7".
const CryptoPP::byte cryptoppAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZ234567";

std::string cryptoppEncoded(const std::string& bytes, const CryptoPP::byte* alphabet) {
  std::string text;
  CryptoPP::Base32Encoder encoder(new CryptoPP::StringSink(text), true);
  encoder.IsolatedInitialize(
      CryptoPP::MakeParameters(CryptoPP::Name::EncodingLookupArray(), alphabet, false));
  encoder.Put(octets(bytes), bytes.size());
  encoder.MessageEnd();
  return text;
}

std::string cryptoppDecoded(const std::string& text) {
  static const std::vector<int> lookup = [] {
    std::vector<int> all(256);
    CryptoPP::BaseN_Decoder::InitializeDecodingLookupArray(all.data(), cryptoppAlphabet, 32, false);
    return all;
  }();
  std::string bytes;
  CryptoPP::Base32Decoder decoder(new CryptoPP::StringSink(bytes));
  decoder.IsolatedInitialize(
      CryptoPP::MakeParameters(CryptoPP::Name::DecodingLookupArray(), lookup.data(), false));
  decoder.Put(octets(text), text.size());
  decoder.MessageEnd();
  return bytes;
}

const Case base32Encode("base32.encode", [](Report& report) {
  measureText(report, "Base32Codec", "Crypto++", [](const std::string& bytes) -> Work {
    static const CryptoPP::byte alphabet[] = "abcdefghijkmnpqrstuvwxyz23456789";
    const NSData data = NSData::dataWithBytes(bytes);
    const std::string ours = Base32Codec::base32StringWithData(data).utf8();
    require(ours.substr(0, ours.find('=')) == cryptoppEncoded(bytes, alphabet),
            "different characters");
    return {[data] { consume(Base32Codec::base32StringWithData(data)); },
            [bytes] { consume(cryptoppEncoded(bytes, alphabet)); }};
  });
});

const Case base32Decode("base32.decode", [](Report& report) {
  measureText(report, "Base32Codec", "Crypto++", [](const std::string& bytes) -> Work {
    const std::string characters = cryptoppEncoded(bytes, cryptoppAlphabet);
    const NSString text(characters);
    require(Base32Codec::dataWithBase32String(text).view() == cryptoppDecoded(characters),
            "different bytes");
    return {[text] { consume(Base32Codec::dataWithBase32String(text)); },
            [characters] { consume(cryptoppDecoded(characters)); }};
  });
});

#else

const Case base32Encode("base32.encode", [](Report& report) { report.skip("Crypto++"); });
const Case base32Decode("base32.decode", [](Report& report) { report.skip("Crypto++"); });

#endif

}  // namespace

}  // namespace zeb::bench
