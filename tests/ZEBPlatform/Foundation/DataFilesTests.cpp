#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>

#include "Support/Support.h"

namespace zeb::test {

namespace {

namespace fs = std::filesystem;

/// A folder that is removed at the end of the test.
struct DataFiles : testing::Test {
  DataFiles() {
    std::string name = (fs::temp_directory_path() / "zeb-test-XXXXXX").string();
    folder = mkdtemp(name.data());
  }
  ~DataFiles() override { fs::remove_all(folder); }

  NSString path(const char* name) const { return (folder / name).string(); }
  std::size_t fileCount() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}));
  }
  mode_t modeOf(const char* name) const {
    struct stat facts;
    return stat((folder / name).c_str(), &facts) == 0 ? facts.st_mode & 07777 : 0;
  }

  fs::path folder;
  NSError error;
};

const NSData oldContent = NSData::dataWithBytes(std::string(3'000'000, 'o'));
const NSData newContent = NSData::dataWithBytes(std::string(3'000'001, 'n'));

}  // namespace

TEST_F(DataFiles, ReturnWhatWasWritten) {
  const NSData parts[] = {oldContent, NSData::dataWithBytes("middle"), newContent};
  for (const NSData& data : {NSData::data(), NSData::dataByJoining(parts)}) {
    for (const std::uint64_t way : {0, int{NSDataWritingAtomic}}) {
      ASSERT_TRUE(data.writeToFile(path("file"), way, &error)) << error;
      EXPECT_EQ(NSData::dataWithContentsOfFile(path("file"), 0, &error), data) << error;
      EXPECT_EQ(NSData::dataWithContentsOfFile(path("file"), NSDataReadingMappedIfSafe), data);
    }
  }
  const NSData mapped = NSData::dataWithContentsOfFile(path("file"), NSDataReadingMappedIfSafe);
  ASSERT_TRUE(newContent.writeToFile(path("file"), NSDataWritingAtomic));
  EXPECT_EQ(mapped, NSData::dataByJoining(parts)) << "a replaced file stays mapped";
  // Files of the kernel state no size.
  EXPECT_GT(NSData::dataWithContentsOfFile("/proc/self/status").length(), 100u);
}

TEST_F(DataFiles, AtomicWritingKeepsModeAndLink) {
  ASSERT_TRUE(oldContent.writeToFile(path("file"), NSDataWritingAtomic));
  EXPECT_EQ(modeOf("file"), mode_t{0600});
  fs::permissions(folder / "file", fs::perms(0640));
  fs::create_symlink("file", folder / "link");
  ASSERT_TRUE(newContent.writeToFile(path("link"), NSDataWritingAtomic, &error)) << error;
  EXPECT_EQ(modeOf("file"), mode_t{0640});
  EXPECT_TRUE(fs::is_symlink(folder / "link"));
  EXPECT_EQ(NSData::dataWithContentsOfFile(path("file")), newContent);
  EXPECT_EQ(fileCount(), 2u) << "temporary files are left over";
}

TEST_F(DataFiles, FailWithTheSystemsCodeAndThePath) {
  ASSERT_TRUE(oldContent.writeToFile(path("file"), 0));
  const auto expectCode = [&](bool hasSucceeded, int code, const NSString& which) {
    EXPECT_FALSE(hasSucceeded) << which;
    EXPECT_EQ(error.domain(), NSPOSIXErrorDomain) << which;
    EXPECT_EQ(error.code(), code) << which;
    EXPECT_EQ(error.userInfo()[NSFilePathErrorKey], which ? which : NSString(""));
  };
  const auto read = [&](const NSString& which, std::size_t maxLength = SIZE_MAX) {
    return !NSData::dataWithContentsOfFile(which, 0, maxLength, &error).isNil();
  };
  expectCode(read(path("missing")), ENOENT, path("missing"));
  EXPECT_EQ(error.localizedDescription(),
            "The file \"" + path("missing") + "\" could not be read: No such file or directory.");
  expectCode(read(path("")), EISDIR, path(""));
  expectCode(read("/dev/zero"), EINVAL, "/dev/zero");
  expectCode(read(path("file/below")), ENOTDIR, path("file/below"));
  const NSString withZero(std::u16string_view(u"/dev/null\0x", 11));
  expectCode(read(withZero), ENOENT, withZero);
  expectCode(read(nullptr), ENOENT, nullptr);
  expectCode(read(path("file"), 2'999'999), EFBIG, path("file"));
  EXPECT_TRUE(read(path("file"), 3'000'000));

  for (const int way : {0, int{NSDataWritingAtomic}}) {
    const auto write = [&](const NSString& which, int options = 0) {
      return newContent.writeToFile(which, static_cast<std::uint64_t>(way | options), &error);
    };
    expectCode(write(path("no/file")), ENOENT, path("no/file"));
    expectCode(write(path(".")), EISDIR, path("."));
    expectCode(write(path("file"), NSDataWritingWithoutOverwriting), EEXIST, path("file"));
    expectCode(write("/dev/full"), way ? EINVAL : ENOSPC, "/dev/full");
    EXPECT_TRUE(write(path(way ? "a" : "b"), NSDataWritingWithoutOverwriting)) << error;
  }
  expectCode(NSData().writeToFile(path("file"), 0, &error), EINVAL, path("file"));
  EXPECT_EQ(NSData::dataWithContentsOfFile(path("file")), oldContent);
  EXPECT_EQ(fileCount(), 3u) << "temporary files are left over";
}

TEST_F(DataFiles, AFullDiskKeepsTheOldContent) {
  ASSERT_TRUE(oldContent.writeToFile(path("file"), NSDataWritingAtomic));
  testing::GTEST_FLAG(death_test_style) = "fast";
  const auto writeTooMuch = [&] {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{1'000'000, 1'000'000};
    setrlimit(RLIMIT_FSIZE, &limit);
    const bool isWritten = newContent.writeToFile(path("file"), NSDataWritingAtomic, &error);
    std::_Exit(isWritten ? 1 : static_cast<int>(error.code()));
  };
  EXPECT_EXIT(writeTooMuch(), testing::ExitedWithCode(EFBIG), "");
  EXPECT_EQ(NSData::dataWithContentsOfFile(path("file")), oldContent);
  EXPECT_EQ(fileCount(), 1u);
}

TEST_F(DataFiles, AKilledWriterLeavesTheOldOrTheNewContent) {
  ASSERT_TRUE(oldContent.writeToFile(path("file"), NSDataWritingAtomic));
  std::mt19937 random(1);
  for (int round = 0; round < 20; ++round) {
    const pid_t writer = fork();
    if (writer == 0) {
      for (;;) {
        newContent.writeToFile(path("file"), NSDataWritingAtomic);
        oldContent.writeToFile(path("file"), NSDataWritingAtomic);
      }
    }
    usleep(static_cast<useconds_t>(random() % 20'000));
    kill(writer, SIGKILL);
    waitpid(writer, nullptr, 0);
    const NSData content = NSData::dataWithContentsOfFile(path("file"), 0, &error);
    EXPECT_TRUE(content == oldContent || content == newContent) << error;
  }
}

}  // namespace zeb::test
