#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

// A part of a solver that has the library among its dependencies can be unloaded, and the library and its search tree
// leave the process with it.

namespace {

/// Whether a file of this name is mapped into the process.
bool IsMapped(std::string const& name) {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);)
    if (line.find(name) != std::string::npos) return true;
  return false;
}

struct Folder {
  Folder() {
    char pattern[] = "/tmp/unload_test_XXXXXX";
    path = mkdtemp(pattern);
  }
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
  std::filesystem::path path;
};

TEST(Unloading, TakesTheLibraryAndItsSearchTreeAlong) {
  Folder const folder;
  ASSERT_FALSE(IsMapped("libZyn3dGradOp")) << "this program is linked without it";
  for (int round = 1; round <= 2; ++round) {
    void* const part = dlopen(ZYN_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(nullptr, part) << dlerror();
    auto* const use = reinterpret_cast<int (*)(char const*)>(dlsym(part, "UseEveryOperator"));
    ASSERT_NE(nullptr, use);
    testing::internal::CaptureStdout();
    int const used = use(folder.path.c_str());
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(1, used);
    EXPECT_TRUE(IsMapped("libZyn3dGradOp.so"));
    EXPECT_TRUE(IsMapped("libZyn3dGradOpSearchTree.so"));
    EXPECT_EQ(0, dlclose(part));
    EXPECT_FALSE(IsMapped("libZyn3dGradOp.so")) << "round " << round;
    EXPECT_FALSE(IsMapped("libZyn3dGradOpSearchTree.so")) << "round " << round;
  }
}

}  // namespace
