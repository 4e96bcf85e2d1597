#include <ZEBPlatform/Linux/SystemControl.h>
#include <ZEBPlatform/Linux/detail/FileReading.h>
#include <ZEBPlatform/Linux/detail/ProcessFacts.h>
#include <ZEBPlatform/Linux/detail/RegularFile.h>
#include <sys/stat.h>
#include <sys/utsname.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

#include "Support/Support.h"

namespace zeb::test {

TEST(SystemControl, NumbersNamesAndPathsGiveTheSystemsValues) {
  utsname system;
  ASSERT_EQ(uname(&system), 0);
  std::string byNumber, byName, byPath;
  EXPECT_EQ(readSystemControl(1, 65, byNumber), 0);
  EXPECT_EQ(readSystemControl("kern.osversion", byName), 0);
  EXPECT_EQ(readSystemControl("kernel.version", byPath), 0);
  EXPECT_EQ(byNumber, system.version);
  EXPECT_TRUE(byName == byNumber && byPath == byNumber) << byName << byPath;
  EXPECT_TRUE(readSystemControl(6, 1, byNumber) == 0 && !byNumber.empty());

  std::int32_t number = 0, pages = 0;
  EXPECT_TRUE(readSystemControl(6, 7, pages) == 0 && pages == sysconf(_SC_PAGESIZE));
  EXPECT_EQ(readSystemControl("vm.swappiness", number), 0);
  EXPECT_TRUE(number >= 0 && number <= 200) << number;
  EXPECT_EQ(readSystemControl("kern.ostype", number), EINVAL);
  EXPECT_EQ(readSystemControl("kernel.random.uuid", number), EINVAL);  // begins with digits
  EXPECT_EQ(physicalMemorySize() > INT32_MAX ? readSystemControl(6, 24, number) : ENOMEM, ENOMEM);
}

TEST(SystemControl, NamesThatDoNotNameAControlAreRefused) {
  const std::string deep = [] {
    std::string name = "kernel";
    for (int i = 0; i < 5000; ++i) name += ".a";
    return name;
  }();
  const struct {
    std::string name;
    int failure;
  } cases[] = {
      {"", ENOENT},
      {".", ENOENT},
      {"kernel.", ENOENT},
      {".kernel.osrelease", ENOENT},
      {"kernel..osrelease", ENOENT},
      {"kernel.nothing", ENOENT},
      {"/.kernel.osrelease", ENOENT},
      {"//.version", ENOENT},  // "../version"
      {"kernel.//.//.version", ENOENT},
      {"/proc/version", ENOENT},
      {{"kernel.osrelease\0x", 18}, ENOENT},
      {"kernel.osrelease.more", ENOTDIR},
      {"kernel", EISDIR},
      {"kernel." + std::string(4000, 'a'), ENOENT},
      {deep, ENAMETOOLONG},
  };
  for (const auto& [name, failure] : cases) {
    std::string value = "kept";
    EXPECT_EQ(readSystemControl(name, value), failure) << name;
    EXPECT_EQ(value, "kept");
  }
  std::string value;
  EXPECT_EQ(readSystemControl(1, 9999, value), ENOENT);
  EXPECT_EQ(readSystemControl(0, 1, value), ENOENT);
}

TEST(RegularFile, OpensNothingOutsideTheFolder) {
  namespace fs = std::filesystem;
  const fs::path folder = fs::temp_directory_path() / ("zeb-below-" + std::to_string(getpid()));
  fs::create_directories(folder / "inside");
  std::ofstream(folder / "inside" / "file") << "content";
  fs::create_symlink("inside/file", folder / "link");
  fs::create_directory_symlink("inside", folder / "linked");
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
  const struct {
    std::vector<std::string> entries;
    int failure;
  } cases[] = {{{"inside", "file"}, 0}, {{"link"}, ELOOP},  {{"linked", "file"}, ENOTDIR},
               {{"inside"}, EISDIR},    {{"pipe"}, EINVAL}, {{}, EISDIR}};
  for (const auto& [entries, failure] : cases) {
    RegularFile file;
    EXPECT_EQ(file.openBelow(folder, entries), failure) << testing::PrintToString(entries);
    std::string content;
    if (failure == 0) {
      EXPECT_TRUE(readToEnd(file, 7, content) == 0 && content == "content");
    }
  }
  fs::remove_all(folder);
  RegularFile file;
  EXPECT_EQ(file.openBelow(folder, cases[0].entries), ENOENT);
}

TEST(ProcessFacts, MemoryIsInBytesAndFollowsItsUse) {
  const auto before = taskMemory();
  ASSERT_TRUE(before);
  {
    constexpr std::size_t size = 64 << 20;
    const std::vector<char> block(size, 1);
    const auto now = taskMemory();
    ASSERT_TRUE(now && !block.empty());
    EXPECT_GE(now->residentSize, before->residentSize + size / 2);
    EXPECT_TRUE(now->virtualSize >= now->residentSize && now->maxResidentSize >= now->residentSize);
  }
  EXPECT_GE(taskMemory()->maxResidentSize, before->residentSize + (32 << 20));
  EXPECT_TRUE(freePhysicalMemorySize() > 0 && freePhysicalMemorySize() < physicalMemorySize());
}

}  // namespace zeb::test
