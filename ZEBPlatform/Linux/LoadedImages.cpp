#include <ZEBPlatform/Linux/detail/LoadedImages.h>
#include <ZEBPlatform/Linux/detail/ProcessFacts.h>

#include <elf.h>
#include <link.h>

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

namespace zeb {

namespace {

using Phdr = ElfW(Phdr);
using Dyn = ElfW(Dyn);
using Sym = ElfW(Sym);

/// A view of an image. Must be used only within a call of `dl_iterate_phdr`, because the image may
/// be unloaded afterwards.
class Image {
 public:
  explicit Image(const dl_phdr_info& info)
      : headers_(info.dlpi_phdr, info.dlpi_phnum), base_(info.dlpi_addr), name_(info.dlpi_name) {
    for (const Phdr& header : headers_) {
      if (header.p_type != PT_LOAD) continue;
      begin_ = std::min<std::uintptr_t>(begin_, base_ + header.p_vaddr);
      end_ = std::max<std::uintptr_t>(end_, base_ + header.p_vaddr + header.p_memsz);
    }
  }

  bool contains(std::uintptr_t address) const { return address >= begin_ && address < end_; }

  /// Whether the address is that of the code to which signal handlers return: the instructions
  /// "mov $15, %rax; syscall" of x86-64. On other processors the answer is false.
  bool isSignalReturn(std::uintptr_t address) const {
    constexpr std::string_view code("\x48\xC7\xC0\x0F\0\0\0\x0F\x05", 9);
    const std::span<const char> here = restOfSegment<char>(address);
    return std::string_view(here.data(), here.size()).starts_with(code);
  }

  LoadedImage facts() const {
    // The program's own name is empty here.
    return {*name_ ? name_ : executablePath(), end_ ? begin_ : base_};
  }

  /// Calls `visit` with the address and name of each function that the image exports.
  template <class Visit>
  void forEachFunction(const Visit& visit) const {
    const Tables tables = findTables();
    const SymbolRange range =
        tables.gnuHash.empty() ? rangeOfHash(tables.hash) : rangeOfGnuHash(tables.gnuHash);
    const std::size_t last = std::min(range.last, tables.symbols.size());
    for (std::size_t index = range.first; index < last; ++index) {
      const Sym& symbol = tables.symbols[index];
      const unsigned type = symbol.st_info & 0xF;
      if ((type != STT_FUNC && type != STT_GNU_IFUNC) || symbol.st_shndx == SHN_UNDEF) continue;
      if (symbol.st_name >= tables.names.size()) continue;
      visit(base_ + symbol.st_value, symbol.st_size, &tables.names[symbol.st_name]);
    }
  }

 private:
  /// Views of the image's tables. What the image states about their sizes is not relied on.
  struct Tables {
    std::span<const Sym> symbols;
    std::span<const char> names;  ///< ends with a zero byte
    std::span<const std::uint32_t> gnuHash;
    std::span<const std::uint32_t> hash;
  };
  struct SymbolRange {
    std::size_t first = 0;
    std::size_t last = 0;
  };

  Tables findTables() const {
    Tables tables;
    std::size_t sizeOfNames = 0;
    for (const Phdr& header : headers_) {
      if (header.p_type != PT_DYNAMIC) continue;
      for (const Dyn& entry : restOfSegment<Dyn>(base_ + header.p_vaddr)) {
        if (entry.d_tag == DT_NULL) break;
        if (entry.d_tag == DT_SYMTAB) tables.symbols = table<Sym>(entry);
        if (entry.d_tag == DT_STRTAB) tables.names = table<char>(entry);
        if (entry.d_tag == DT_STRSZ) sizeOfNames = entry.d_un.d_val;
        if (entry.d_tag == DT_GNU_HASH) tables.gnuHash = table<std::uint32_t>(entry);
        if (entry.d_tag == DT_HASH) tables.hash = table<std::uint32_t>(entry);
      }
    }
    tables.names = tables.names.first(std::min(tables.names.size(), sizeOfNames));
    if (!tables.names.empty() && tables.names.back() != 0) tables.names = {};
    return tables;
  }

  /// The loader replaces offsets by addresses, except in images that it cannot write to.
  template <class T>
  std::span<const T> table(const Dyn& entry) const {
    const std::uintptr_t address = entry.d_un.d_ptr;
    return restOfSegment<T>(contains(address) ? address : base_ + address);
  }

  /// The objects from an address to the end of the loaded segment that contains it.
  template <class T>
  std::span<const T> restOfSegment(std::uintptr_t address) const {
    for (const Phdr& header : headers_) {
      const std::uintptr_t offset = address - (base_ + header.p_vaddr);
      if (header.p_type != PT_LOAD || !(header.p_flags & PF_R) || offset >= header.p_memsz)
        continue;
      return {reinterpret_cast<const T*>(address), (header.p_memsz - offset) / sizeof(T)};
    }
    return {};
  }

  /// Only the exported symbols are in this table; they come last in the table of symbols.
  static SymbolRange rangeOfGnuHash(std::span<const std::uint32_t> hash) {
    if (hash.size() < 4) return {};
    const std::uint32_t bucketCount = hash[0];
    const std::uint32_t first = hash[1];
    const std::uint64_t filterWords = hash[2];
    const std::uint64_t buckets = 4 + filterWords * (sizeof(ElfW(Addr)) / sizeof(std::uint32_t));
    if (bucketCount == 0 || buckets + bucketCount > hash.size()) return {};
    const auto chains = hash.subspan(buckets + bucketCount);
    std::size_t last = std::ranges::max(hash.subspan(buckets, bucketCount));
    if (last < first) return {};
    // The lowest bit marks a chain's end.
    while (last - first < chains.size() && !(chains[last - first] & 1)) ++last;
    return {first, last + 1};
  }

  static SymbolRange rangeOfHash(std::span<const std::uint32_t> hash) {
    return hash.size() < 2 ? SymbolRange{} : SymbolRange{1, hash[1]};
  }

  std::span<const Phdr> headers_;
  std::uintptr_t base_;
  const char* name_;
  std::uintptr_t begin_ = std::numeric_limits<std::uintptr_t>::max();
  std::uintptr_t end_ = 0;
};

/// Calls `visit` with each image while the loader is locked.
template <class Visit>
void forEachImage(Visit visit) {
  const auto call = [](dl_phdr_info* info, std::size_t, void* visit_) {
    (*static_cast<Visit*>(visit_))(Image(*info));
    return 0;
  };
  dl_iterate_phdr(call, &visit);
}

/// An address whose location is looked for.
struct Wanted {
  std::uintptr_t address;
  CodeLocation* location;
  const char* symbol = nullptr;
};

/// Finds the functions of addresses that all lie within the image, and that are sorted.
void findFunctions(const Image& image, std::span<Wanted> wanted) {
  const std::uintptr_t lowest = wanted.front().address;
  const std::uintptr_t highest = wanted.back().address;
  const auto visit = [&](std::uintptr_t start, std::size_t size, const char* name) {
    if (start > highest || start + size <= lowest) return;
    const auto first = std::ranges::lower_bound(wanted, start, {}, &Wanted::address);
    for (auto one = first; one != wanted.end() && one->address < start + size; ++one) {
      if (one->symbol) continue;
      one->symbol = name;
      one->location->symbolAddress = start;
    }
  };
  image.forEachFunction(visit);
  // Copied, because the names are part of the image.
  for (const Wanted& one : wanted) {
    if (one.symbol) one.location->symbol = one.symbol;
  }
}

/// Fills in the locations of addresses that have none yet.
void locate(std::vector<Wanted> wanted) {
  std::ranges::sort(wanted, {}, &Wanted::address);
  forEachImage([&](const Image& image) {
    const auto begin = std::ranges::find_if(
        wanted, [&](const Wanted& one) { return image.contains(one.address); });
    const auto end = std::find_if_not(
        begin, wanted.end(), [&](const Wanted& one) { return image.contains(one.address); });
    if (begin == end) return;
    const LoadedImage facts = image.facts();
    for (auto one = begin; one != end; ++one) {
      one->location->image = facts;
      one->location->isSignalReturn = image.isSignalReturn(one->address + 1);
    }
    findFunctions(image, {begin, end});
  });
}

}  // namespace

std::vector<LoadedImage> loadedImages() {
  std::vector<LoadedImage> images;
  forEachImage([&](const Image& image) { images.push_back(image.facts()); });
  return images;
}

std::vector<CodeLocation> locationsOfCode(std::span<void* const> returnAddresses) {
  std::vector<CodeLocation> locations(returnAddresses.size());
  std::vector<Wanted> wanted;
  // A return address may lie behind the end of its function if the call never returns, so the byte
  // before it, which belongs to the call, is looked for.
  for (std::size_t i = 0; i < locations.size(); ++i) {
    wanted.push_back({reinterpret_cast<std::uintptr_t>(returnAddresses[i]) - 1, &locations[i]});
  }
  locate(std::move(wanted));
  // What follows the frame of a signal is no return address but the interrupted instruction.
  wanted.clear();
  for (std::size_t i = 1; i < locations.size(); ++i) {
    if (!locations[i - 1].isSignalReturn) continue;
    locations[i] = {};
    wanted.push_back({reinterpret_cast<std::uintptr_t>(returnAddresses[i]), &locations[i]});
  }
  if (!wanted.empty()) locate(std::move(wanted));
  return locations;
}

}  // namespace zeb
