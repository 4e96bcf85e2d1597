// Stands in for libFuzzer's main() in normal builds: runs every file below the given directories
// through the fuzz target, so that the kept corpus is part of the tests with every compiler.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

bool replay(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (!file) {
    std::fprintf(stderr, "cannot read %s\n", path.c_str());
    return false;
  }
  // A heap copy of the exact size lets a sanitizer see a read past the input's end.
  const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(input.data(), input.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) {
      std::fprintf(stderr, "no directory %s\n", argv[i]);
      return 1;
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i])) {
      if (!entry.is_regular_file()) continue;
      if (!replay(entry.path())) return 1;
      ++count;
    }
  }
  std::printf("%zu inputs replayed\n", count);
  return count > 0 ? 0 : 1;
}
