#include <ZEBPlatform/Linux/SystemControl.h>
#include <ZEBPlatform/Linux/detail/FileReading.h>
#include <ZEBPlatform/Linux/detail/ProcessFacts.h>
#include <ZEBPlatform/Linux/detail/RegularFile.h>
#include <sys/stat.h>
#include <sys/utsname.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>

#include "Support/Support.h"

namespace zeb::test {

TEST(SystemControl, NumbersNamesAndPathsGiveTheSystemsValues) {
  utsname system;
  ASSERT_EQ(uname(&system), 0);
  std::string byNumber, byName, byPath;
  EXPECT_TRUE(readSystemControl(1, 65, byNumber) == 0 && byNumber == system.version) << byNumber;
  EXPECT_TRUE(readSystemControl("kern.osversion", byName) == 0 && byName == byNumber) << byName;
  EXPECT_TRUE(readSystemControl("kernel.version", byPath) == 0 && byPath == byNumber) << byPath;
  std::int32_t number = 0, pages = 0;
  EXPECT_TRUE(readSystemControl(6, 7, pages) == 0 && pages == sysconf(_SC_PAGESIZE));
  EXPECT_TRUE(readSystemControl("vm.swappiness", number) == 0 && number <= 200) << number;
  EXPECT_EQ(readSystemControl("kern.ostype", number), EINVAL);
  EXPECT_EQ(readSystemControl("kernel.random.uuid", number), EINVAL);  // begins with digits
  EXPECT_EQ(physicalMemorySize() > UINT32_MAX ? readSystemControl(6, 24, number) : ENOMEM, ENOMEM);
  std::string text;
  ASSERT_EQ(readSystemControl("net.ipv4.tcp_notsent_lowat", text), 0);  // 4294967295 by default
  EXPECT_EQ(readSystemControl("net.ipv4.tcp_notsent_lowat", number), 0);
  EXPECT_EQ(std::to_string(static_cast<std::uint32_t>(number)), text);
}

TEST(SystemControl, NamesThatDoNotNameAControlAreRefused) {
  const struct {
    std::string name;
    int failure;
  } cases[] = {{"", ENOENT},
               {".", ENOENT},
               {"kernel.", ENOENT},
               {".kernel.osrelease", ENOENT},
               {"kernel..osrelease", ENOENT},
               {"kernel.nothing", ENOENT},
               {"//.version", ENOENT},
               {"kernel.//.//.version", ENOENT},  // "../version"
               {"/.kernel.osrelease", ENOENT},
               {"/proc/version", ENOENT},
               {{"kernel.osrelease\0x", 18}, ENOENT},
               {"kernel.osrelease.more", ENOTDIR},
               {"kernel", EISDIR},
               {"kernel." + std::string(4000, 'a'), ENOENT},
               {std::string(5000, 'a'), ENAMETOOLONG}};
  for (const auto& [name, failure] : cases) {
    std::string value = "kept";
    EXPECT_EQ(readSystemControl(name, value), failure) << name;
    EXPECT_EQ(value, "kept");
  }
  std::string value;
  EXPECT_EQ(readSystemControl(1, 9999, value), ENOENT);
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
    EXPECT_TRUE(failure || (readToEnd(file, 7, content) == 0 && content == "content"));
  }
  fs::remove_all(folder);
  RegularFile file;
  EXPECT_EQ(file.openBelow(folder, cases[0].entries), ENOENT);
}

TEST(ProcessFacts, ADeletedProgramKeepsItsPath) {
  namespace fs = std::filesystem;
  const std::string path = executablePath();
  if (path.find("/zeb-deleted-") != path.npos) {  // in the process that is started below
    fs::remove(path);
    ASSERT_EQ(executablePath(), path);
  } else {
    const fs::path copy = fs::temp_directory_path() / ("zeb-deleted-" + std::to_string(getpid()));
    fs::copy_file(path, copy);
    EXPECT_EQ(std::system((copy.string() + " --gtest_filter=*.ADeletedProgram*").c_str()), 0);
    EXPECT_FALSE(fs::remove(copy)) << "the other process has removed itself";
  }
}

TEST(ProcessFacts, MemoryIsInBytesAndFollowsItsUse) {
  const auto before = taskMemory();
  ASSERT_TRUE(before);
  constexpr std::size_t size = 64 << 20;
  // Volatile, so that no compiler leaves the memory out.
  std::unique_ptr<volatile char[]> block(new volatile char[size]);
  std::fill_n(block.get(), size, char{1});
  const auto during = taskMemory();
  EXPECT_GE(during->residentSize, before->residentSize + size / 2);
  EXPECT_TRUE(during->virtualSize >= during->residentSize);
  block.reset();
  EXPECT_GE(taskMemory()->maxResidentSize, before->residentSize + size / 2);
  EXPECT_TRUE(freePhysicalMemorySize() > 0 && freePhysicalMemorySize() < physicalMemorySize());
}

}  // namespace zeb::test
