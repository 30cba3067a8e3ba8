#include <BaseSDK/ALogger.h>
#include <BaseSDK/ASingleton.h>

#include <gtest/gtest.h>

#include <dlfcn.h>

namespace BaseSDK {
namespace {

struct Something {
  int m_Value = 7;
};

TEST(ASingleton, IsTheSameObjectEverywhere) {
  EXPECT_EQ(ASingleton<Something>::Instance().m_Value, 7);
  EXPECT_EQ(&ASingleton<Something>::Instance(), &ASingleton<Something>::Instance());
}

TEST(ASingleton, GoesWithItsLibraryAndComesBackWithIt) {
  for (int round = 0; round < 2; ++round) {
    int destroyed = 0;
    void* const module = dlopen(SINGLETON_MODULE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << dlerror();
    const auto use = reinterpret_cast<int (*)(int*)>(dlsym(module, "UseSingleton"));
    ASSERT_NE(use, nullptr);
    EXPECT_EQ(use(&destroyed), 1);
    EXPECT_EQ(use(&destroyed), 1);
    EXPECT_EQ(destroyed, 0);
    ASSERT_EQ(dlclose(module), 0);
    EXPECT_EQ(destroyed, 1);
  }
}

TEST(ALogger, OutlivesTheLibraryThatAskedForIt) {
  void* const module = dlopen(SINGLETON_MODULE, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(module, nullptr) << dlerror();
  int destroyed = 0;
  (void)reinterpret_cast<int (*)(int*)>(dlsym(module, "UseSingleton"))(&destroyed);
  ASSERT_EQ(dlclose(module), 0);
  EXPECT_EQ(ALogger::GetLogger("Test::SingletonModule").Channel(), "Test::SingletonModule");
}

}  // namespace
}  // namespace BaseSDK
