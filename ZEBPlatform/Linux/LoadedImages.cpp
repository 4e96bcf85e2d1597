#include <ZEBPlatform/Linux/detail/LoadedImages.h>
#include <ZEBPlatform/Linux/detail/ProcessFacts.h>

#include <elf.h>
#include <link.h>

#include <algorithm>
#include <limits>

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

  LoadedImage facts() const {
    // The program's own name is empty here.
    return {*name_ ? name_ : executablePath(), end_ ? begin_ : base_};
  }

  /// Calls `visit` with the address and name of each function that the image exports.
  template <class Visit>
  void forEachFunction(const Visit& visit) const {
    Tables tables;
    for (const Phdr& header : headers_) {
      if (header.p_type == PT_DYNAMIC) tables = findTables(header);
    }
    if (!tables.symbols || !tables.names) return;
    const auto [first, last] =
        tables.gnuHash ? rangeOfGnuHash(tables.gnuHash) : rangeOfHash(tables.hash);
    for (std::size_t index = first; index < last; ++index) {
      const Sym& symbol = tables.symbols[index];
      const unsigned type = symbol.st_info & 0xF;
      if ((type != STT_FUNC && type != STT_GNU_IFUNC) || symbol.st_shndx == SHN_UNDEF) continue;
      visit(base_ + symbol.st_value, symbol.st_size, tables.names + symbol.st_name);
    }
  }

 private:
  struct Tables {
    const Sym* symbols = nullptr;
    const char* names = nullptr;
    const std::uint32_t* gnuHash = nullptr;
    const std::uint32_t* hash = nullptr;
  };
  struct SymbolRange {
    std::size_t first = 0;
    std::size_t last = 0;
  };

  Tables findTables(const Phdr& dynamic) const {
    Tables tables;
    for (auto* entry = reinterpret_cast<const Dyn*>(base_ + dynamic.p_vaddr);
         entry->d_tag != DT_NULL; ++entry) {
      if (entry->d_tag == DT_SYMTAB) tables.symbols = table<Sym>(*entry);
      if (entry->d_tag == DT_STRTAB) tables.names = table<char>(*entry);
      if (entry->d_tag == DT_GNU_HASH) tables.gnuHash = table<std::uint32_t>(*entry);
      if (entry->d_tag == DT_HASH) tables.hash = table<std::uint32_t>(*entry);
    }
    return tables;
  }

  /// The loader replaces offsets by addresses, except in images that it cannot write to.
  template <class T>
  const T* table(const Dyn& entry) const {
    std::uintptr_t address = entry.d_un.d_ptr;
    if (!contains(address)) address += base_;
    return contains(address) ? reinterpret_cast<const T*>(address) : nullptr;
  }

  /// Only the exported symbols are in this table; they come last in the table of symbols.
  static SymbolRange rangeOfGnuHash(const std::uint32_t* hash) {
    const std::uint32_t bucketCount = hash[0];
    const std::uint32_t first = hash[1];
    const std::uint32_t filterWords = hash[2];
    const std::uint32_t* const buckets =
        hash + 4 + filterWords * (sizeof(ElfW(Addr)) / sizeof(std::uint32_t));
    const std::uint32_t* const chains = buckets + bucketCount;
    if (bucketCount == 0) return {};
    std::uint32_t last = *std::max_element(buckets, buckets + bucketCount);
    if (last < first) return {};
    while (!(chains[last - first] & 1)) ++last;  // the lowest bit marks a chain's end
    return {first, std::size_t{last} + 1};
  }

  static SymbolRange rangeOfHash(const std::uint32_t* hash) {
    return hash ? SymbolRange{1, hash[1]} : SymbolRange{};
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
  bool isInside = false;  ///< of the symbol's function, and not right behind it
};

/// Finds the functions of addresses that all lie within the image, and that are sorted.
void findFunctions(const Image& image, std::span<Wanted> wanted) {
  const std::uintptr_t lowest = wanted.front().address;
  const std::uintptr_t highest = wanted.back().address;
  const auto visit = [&](std::uintptr_t start, std::size_t size, const char* name) {
    if (start > highest || start + size < lowest) return;
    const auto first = std::ranges::lower_bound(wanted, start, {}, &Wanted::address);
    for (auto one = first; one != wanted.end() && one->address <= start + size; ++one) {
      // The return address of a call that never returns may lie right behind the function.
      const bool isInside = one->address < start + size;
      if (one->symbol && (one->isInside || !isInside)) continue;
      one->symbol = name;
      one->isInside = isInside;
      one->location->symbolAddress = start;
    }
  };
  image.forEachFunction(visit);
  // Copied, because the names are part of the image.
  for (const Wanted& one : wanted) {
    if (one.symbol) one.location->symbol = one.symbol;
  }
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
  for (std::size_t i = 0; i < locations.size(); ++i) {
    wanted.push_back({reinterpret_cast<std::uintptr_t>(returnAddresses[i]), &locations[i]});
  }
  std::ranges::sort(wanted, {}, &Wanted::address);
  forEachImage([&](const Image& image) {
    const auto begin = std::ranges::find_if(
        wanted, [&](const Wanted& one) { return image.contains(one.address); });
    const auto end = std::find_if_not(
        begin, wanted.end(), [&](const Wanted& one) { return image.contains(one.address); });
    if (begin == end) return;
    const LoadedImage facts = image.facts();
    for (auto one = begin; one != end; ++one) one->location->image = facts;
    findFunctions(image, {begin, end});
  });
  return locations;
}

}  // namespace zeb
