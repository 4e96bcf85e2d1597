#include <ZEBPlatform/Linux/detail/Console.h>
#include <ZEBPlatform/Security/MessageDigest.h>
#include <nettle/md2.h>
#include <nettle/nettle-meta.h>
#include <nettle/sha2.h>
#include <openssl/evp.h>

#include <algorithm>
#include <array>

namespace zeb {

namespace detail {

struct DigestSource {
  const nettle_hash* nettle;
  const char* opensslName;  ///< null where OpenSSL does not offer the algorithm
  /// Up to here nettle's lack of a set-up cost outweighs OpenSSL's higher speed.
  std::size_t maxShortLength;
};

}  // namespace detail

namespace {

using detail::DigestSource;

// In the enumeration's order. The lengths are those at which both libraries took equally long.
const std::array<DigestSource, 6> sources = {{
    {&nettle_md2, nullptr, 0},
    {&nettle_md4, nullptr, 0},
    {&nettle_md5, "MD5", 512},
    {&nettle_sha1, "SHA1", 1024},
    {&nettle_sha256, "SHA256", 512},
    {&nettle_sha512, "SHA512", 111},  // one block with its padding
}};

const DigestSource& sourceOf(DigestAlgorithm algorithm) noexcept {
  return sources[static_cast<std::size_t>(algorithm)];
}

/// OpenSSL's algorithm, or null if it does not offer it. Looking one up by name takes longer than
/// the digest of a short message, so each one is looked up once.
const EVP_MD* fetchedAlgorithm(const DigestSource& source) noexcept {
  using Fetched = std::array<EVP_MD*, sources.size()>;
  static const Fetched fetched = [] {
    Fetched all{};
    for (std::size_t i = 0; i < all.size(); ++i) {
      const char* const name = sources[i].opensslName;
      if (name) all[i] = EVP_MD_fetch(nullptr, name, nullptr);
    }
    return all;
  }();
  return fetched[static_cast<std::size_t>(&source - sources.data())];
}

/// A context in which the digest was started; null if OpenSSL can't compute it, for example because
/// the host permits approved algorithms only.
EVP_MD_CTX* startedContext(const DigestSource& source) noexcept {
  const EVP_MD* const algorithm = fetchedAlgorithm(source);
  if (!algorithm) return nullptr;
  EVP_MD_CTX* const context = EVP_MD_CTX_new();
  if (context && EVP_DigestInit_ex2(context, algorithm, nullptr) == 1) return context;
  EVP_MD_CTX_free(context);
  return nullptr;
}

EVP_MD_CTX* opensslContext(void* context) noexcept { return static_cast<EVP_MD_CTX*>(context); }

std::uint8_t* octets(std::byte* bytes) noexcept { return reinterpret_cast<std::uint8_t*>(bytes); }

void requireComputed(int result) noexcept {
  if (result != 1) fatal("The cryptographic library stopped computing a message digest.");
}

}  // namespace

std::size_t digestLength(DigestAlgorithm algorithm) noexcept {
  return sourceOf(algorithm).nettle->digest_size;
}

MessageDigest::MessageDigest(DigestAlgorithm algorithm, std::size_t expectedLength) noexcept
    : source_(sourceOf(algorithm)) {
  static_assert(sizeof(sha512_ctx) <= stateBytes && sizeof(md2_ctx) <= stateBytes);
  if (source_.opensslName && expectedLength > source_.maxShortLength) {
    context_ = startedContext(source_);
  }
  if (!context_) source_.nettle->init(state_);
}

MessageDigest::~MessageDigest() {
  if (context_) EVP_MD_CTX_free(opensslContext(context_));
}

void MessageDigest::update(std::span<const std::byte> bytes) noexcept {
  if (context_) {
    requireComputed(EVP_DigestUpdate(opensslContext(context_), bytes.data(), bytes.size()));
  } else {
    source_.nettle->update(state_, bytes.size(),
                           reinterpret_cast<const std::uint8_t*>(bytes.data()));
  }
}

void MessageDigest::finish(std::span<std::byte> digest) noexcept {
  const std::size_t length = source_.nettle->digest_size;
  if (digest.size() > length) fatal("The buffer for a message digest is longer than the digest.");
  if (!context_) {
    source_.nettle->digest(state_, digest.size(), octets(digest.data()));
    return;
  }
  std::array<std::byte, EVP_MAX_MD_SIZE> whole;
  requireComputed(EVP_DigestFinal_ex(opensslContext(context_), octets(whole.data()), nullptr));
  std::copy_n(whole.begin(), digest.size(), digest.begin());
}

}  // namespace zeb
