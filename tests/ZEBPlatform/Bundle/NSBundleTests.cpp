#include <ZEBPlatform/Bundle/NSBundle.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace zeb::test {

namespace fs = std::filesystem;

/// A folder that is deleted after the test.
struct ScratchFolder {
  const fs::path path = fs::temp_directory_path() / ("zeb-bundle-" + std::to_string(getpid()));
  ScratchFolder() { fs::create_directories(path); }
  ~ScratchFolder() { fs::remove_all(path); }

  void write(const std::string& name, const std::string& content) const {
    fs::create_directories((path / name).parent_path());
    std::ofstream(path / name) << content;
  }
  std::string operator/(const std::string& name) const { return (path / name).string(); }
};

std::string infoNamed(const std::string& name) {
  return "<plist><dict><key>CFBundleIdentifier</key><string>" + name +
         "</string><key>CFBundleExecutable</key><string>Run</string></dict></plist>";
}

TEST(NSBundle, FindsTheBundleOfAnExecutable) {
  const ScratchFolder scratch;
  scratch.write("bin/Info.plist", infoNamed("beside"));
  scratch.write("bin/flat.app/Info.plist", infoNamed("flat"));
  scratch.write("bin/deep.app/Contents/Info.plist", infoNamed("deep"));
  scratch.write("Own.app/Contents/Info.plist", infoNamed("own"));
  using Case = std::tuple<const char*, const char*, const char*, const char*>;
  const Case cases[] = {
      {"bin/plain", "beside", "bin", "bin/Frameworks"},
      {"bin/flat", "flat", "bin/flat.app", "bin/flat.app/Frameworks"},
      {"bin/deep", "deep", "bin/deep.app", "bin/deep.app/Contents/Frameworks"},
      {"Own.app/Contents/MacOS/Own", "own", "Own.app", "Own.app/Contents/Frameworks"},
      {"nothing/here", nullptr, "nothing", "nothing/Frameworks"}};
  for (const auto& [name, identifier, path, frameworks] : cases) {
    const std::string executable = scratch / name;
    const auto bundle = NSBundle::bundleForExecutable(executable);
    EXPECT_EQ(bundle->bundleIdentifier(), NSString(identifier)) << executable;
    EXPECT_EQ(bundle->bundlePath(), NSString(scratch / path));
    EXPECT_EQ(bundle->privateFrameworksPath(), NSString(scratch / frameworks));
    EXPECT_EQ(bundle->executablePath(), NSString(executable));
    EXPECT_TRUE(bundle->infoDictionary().isDictionary() && bundle->infoDictionaryError().isNil());
  }
  const auto deep = NSBundle::bundleWithPath(scratch / "bin/deep.app/");
  EXPECT_EQ(deep->executablePath(), NSString(scratch / "bin/deep.app/Contents/MacOS/Run"));
  EXPECT_EQ(deep->resourcePath(), NSString(scratch / "bin/deep.app/Contents/Resources"));
  EXPECT_FALSE(NSBundle::bundleWithPath(scratch / "none") || NSBundle::bundleWithPath(nullptr) ||
               NSBundle::bundleForExecutable(nullptr));
}

TEST(NSBundle, KeepsTheErrorOfAnUnreadableFile) {
  const ScratchFolder scratch;
  scratch.write("bad/Info.plist", "<plist><dict>");
  scratch.write("list/Info.plist", "<plist><array/></plist>");
  fs::create_directories(scratch.path / "folder/Info.plist");
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"bad", NSCocoaErrorDomain, "malformed"},
      {"list", NSCocoaErrorDomain, "holds no dictionary"},
      {"folder", NSPOSIXErrorDomain, "Is a directory"}};
  for (const auto& [folder, domain, reason] : cases) {
    const auto bundle = NSBundle::bundleWithPath(scratch / folder);
    const NSError error = bundle->infoDictionaryError();
    EXPECT_EQ(bundle->infoDictionary(), NSDictionary::dictionary());
    EXPECT_TRUE(error.domain() == domain && error.localizedDescription().containsString(reason))
        << error;
  }
}

TEST(NSBundle, TheHostCanSetTheMainBundleBeforeItsFirstUse) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";  // a process of its own
  const auto setAndAsk = [] {
    const auto hosts = NSBundle::bundleWithPath("/opt/app", {{"Key", "value"}});
    std::_Exit(!NSBundle::setMainBundle(nullptr) && NSBundle::setMainBundle(hosts) &&
               NSBundle::mainBundle() == hosts && !NSBundle::setMainBundle(hosts));
  };
  EXPECT_EXIT(setAndAsk(), testing::ExitedWithCode(true), "");
  EXPECT_EQ(NSBundle::mainBundle()->executablePath(),
            NSString(fs::read_symlink("/proc/self/exe").string()));
}

}  // namespace zeb::test
