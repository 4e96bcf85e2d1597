#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <csignal>
#include <filesystem>

#include "Support/Support.h"

namespace zeb::test {

namespace fs = std::filesystem;

const NSData oldContent = NSData::dataWithBytes(std::string(3'000'000, 'o'));
const NSData newContent = NSData::dataWithBytes(std::string(3'000'001, 'n'));

/// A folder that contains a file and is removed at the end of the test.
struct DataFiles : testing::Test {
  DataFiles() {
    std::string name = (fs::temp_directory_path() / "zeb-test-XXXXXX").string();
    folder = mkdtemp(name.data());
    EXPECT_TRUE(oldContent.writeToFile(path("file"), NSDataWritingAtomic, &error)) << error;
  }
  ~DataFiles() override { fs::remove_all(folder); }

  NSString path(const char* name) const { return (folder / name).string(); }
  auto fileCount() const { return std::distance(fs::directory_iterator(folder), {}); }
  unsigned mode() const { return static_cast<unsigned>(fs::status(folder / "file").permissions()); }

  fs::path folder;
  NSError error;
};

TEST_F(DataFiles, ReturnWhatWasWritten) {
  const NSData parts[] = {oldContent, NSData::dataWithBytes("middle"), newContent};
  for (const NSData& data : {NSData::data(), NSData::dataByJoining(parts)}) {
    for (const auto way : {NSDataWritingOptions(), NSDataWritingAtomic}) {
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
  EXPECT_EQ(mode(), 0600u);
  fs::permissions(folder / "file", fs::perms(0640));
  fs::create_symlink("file", folder / "link");
  ASSERT_TRUE(newContent.writeToFile(path("link"), NSDataWritingAtomic, &error)) << error;
  EXPECT_EQ(mode(), 0640u);
  EXPECT_TRUE(fs::is_symlink(folder / "link"));
  EXPECT_EQ(NSData::dataWithContentsOfFile(path("file")), newContent);
  EXPECT_EQ(fileCount(), 2) << "temporary files are left over";
}

TEST_F(DataFiles, FailWithTheSystemsCodeAndThePath) {
  const auto expectError = [&](int code, const NSString& which) {
    EXPECT_EQ(error, NSError(NSPOSIXErrorDomain, code, error.userInfo())) << which;
    EXPECT_EQ(error.userInfo()[NSFilePathErrorKey], which ? which : NSString(""));
    error = nullptr;
  };
  const NSString withZero(std::u16string_view(u"/dev/null\0x", 11));
  const std::tuple<NSString, std::size_t, int> unreadable[] = {
      {path(""), SIZE_MAX, EISDIR},
      {"/dev/zero", SIZE_MAX, EINVAL},
      {path("file/below"), SIZE_MAX, ENOTDIR},
      {withZero, SIZE_MAX, ENOENT},
      {nullptr, SIZE_MAX, ENOENT},
      {path("file"), 2'999'999, EFBIG}};
  for (const auto& [which, maxLength, code] : unreadable) {
    EXPECT_TRUE(NSData::dataWithContentsOfFile(which, 0, maxLength, &error).isNil());
    expectError(code, which);
  }
  EXPECT_EQ(NSData::dataWithContentsOfFile(path("file"), 0, 3'000'000), oldContent);
  EXPECT_TRUE(NSData::dataWithContentsOfFile(path("missing"), 0, &error).isNil());
  EXPECT_EQ(error.localizedDescription(),
            "The file \"" + path("missing") + "\" could not be read: No such file or directory.");

  ASSERT_EQ(mkfifo(path("pipe").utf8().c_str(), 0600), 0);
  for (const auto way : {NSDataWritingOptions(), NSDataWritingAtomic}) {
    const std::tuple<NSString, std::uint64_t, int> unwritable[] = {
        {path("no/file"), way, ENOENT},
        {path("."), way, EISDIR},
        {path("file"), way | NSDataWritingWithoutOverwriting, EEXIST},
        {nullptr, way, ENOENT},
        {path("pipe"), way, way ? EINVAL : ENXIO},
        {"/dev/full", way, way ? EINVAL : ENOSPC}};
    for (const auto& [which, options, code] : unwritable) {
      EXPECT_FALSE(newContent.writeToFile(which, options, &error));
      expectError(code, which);
    }
    EXPECT_TRUE(
        newContent.writeToFile(path(way ? "a" : "b"), way | NSDataWritingWithoutOverwriting));
  }
  EXPECT_FALSE(NSData().writeToFile(path("file"), 0, &error));
  expectError(EINVAL, path("file"));
  EXPECT_EQ(NSData::dataWithContentsOfFile(path("file")), oldContent);
  EXPECT_EQ(fileCount(), 4) << "temporary files are left over";
  // Writing in place reads a mapping of the same file, and cuts the file at the new end.
  const NSData mapped = NSData::dataWithContentsOfFile(path("file"), NSDataReadingMappedIfSafe);
  EXPECT_TRUE(mapped.writeToFile(path("file"), 0) && mapped == oldContent);
  EXPECT_TRUE(NSData::dataWithBytes("short").writeToFile(path("file"), 0));
  EXPECT_EQ(NSData::dataWithContentsOfFile(path("file")).view(), "short");
}

TEST_F(DataFiles, AFullDiskKeepsTheOldContent) {
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
  EXPECT_EQ(fileCount(), 1);
}

TEST_F(DataFiles, AKilledWriterLeavesTheOldOrTheNewContent) {
  std::mt19937 random(1);
  for (int round = 0; round < 20; ++round) {
    const pid_t writer = fork();
    while (writer == 0)
      for (const NSData& content : {newContent, oldContent})
        content.writeToFile(path("file"), NSDataWritingAtomic);
    usleep(static_cast<useconds_t>(random() % 20'000));
    kill(writer, SIGKILL);
    waitpid(writer, nullptr, 0);
    const NSData content = NSData::dataWithContentsOfFile(path("file"), 0, &error);
    EXPECT_TRUE(content == oldContent || content == newContent) << error;
  }
}

}  // namespace zeb::test
