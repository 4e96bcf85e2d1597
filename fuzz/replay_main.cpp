// Replaces libFuzzer's main() in normal builds: passes every file below the given directories to
// the fuzz target, so that the corpus is part of the tests with every compiler.

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
    std::fprintf(stderr, "replay: %s can't be read\n", path.c_str());
    return false;
  }
  // With a heap copy of the exact size a sanitizer detects a read past the input's end.
  const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(input.data(), input.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) {
      std::fprintf(stderr, "replay: %s is not a directory\n", argv[i]);
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
