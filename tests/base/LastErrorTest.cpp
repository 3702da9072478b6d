// The calling thread's last error.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>

#include <cstdio>
#include <string>
#include <thread>

#include "OxBase/OxBase.h"
#include "Probe.h"

extern "C" int32_t setLastErrorFromC(uint32_t code, const char* text);

namespace {

uint32_t code() {
  uint32_t value = 0;
  OxGetLastError(&value, nullptr, nullptr);
  return value;
}

std::string text() {
  size_t size = 0;
  OxGetLastError(nullptr, nullptr, &size);
  std::string value(size, '#');
  OxGetLastError(nullptr, value.data(), &size);
  EXPECT_EQ(value.back(), '\0');
  value.pop_back();
  return value;
}

TEST(LastError, EveryTextComesBackWhole) {
  for (const size_t length : {0u, 1u, 254u, 255u, 256u, 1000u, 100000u, 300u, 3u}) {
    const std::string set(length, 'x');
    EXPECT_EQ(OxSetLastError(0x80000003, set.c_str()), OX_OK);
    EXPECT_EQ(text(), set);
    EXPECT_EQ(code(), 0x80000003);
  }
  EXPECT_EQ(OxSetLastError(7, nullptr), OX_OK);
  EXPECT_EQ(text(), "");
  EXPECT_EQ(code(), 7u);
  EXPECT_EQ(setLastErrorFromC(8, "from C"), OX_OK);
  EXPECT_EQ(text(), "from C");
}

TEST(LastError, BuffersAreFilledByTheSizeProtocol) {
  OxSetLastError(1, "abcdef");
  struct Case {
    size_t size;
    const char* left;  // what the buffer of dots begins with afterwards
    size_t bytes;
  };
  for (const Case& c : {Case{0, "....", 4}, Case{1, "\0...", 4}, Case{4, "abc\0.", 5}, Case{7, "abcdef\0.", 8},
                        Case{12, "abcdef\0.....", 12}}) {
    std::string buffer(12, '.');
    size_t size = c.size;
    EXPECT_EQ(OxGetLastError(nullptr, buffer.data(), &size), OX_OK);
    EXPECT_EQ(size, c.size) << "a given size is not changed";
    EXPECT_EQ(buffer.substr(0, c.bytes), std::string(c.left, c.bytes)) << c.size;
  }
  char untouched = '.';
  uint32_t untouchedCode = 99;
  EXPECT_EQ(OxGetLastError(&untouchedCode, &untouched, nullptr), OX_E_INVALID_ARGUMENT);
  EXPECT_EQ(untouched, '.');
  EXPECT_EQ(untouchedCode, 99u);
}

TEST(LastError, BelongsToItsThread) {
  OxSetLastError(5, "mine");
  std::thread([] {
    EXPECT_EQ(code(), 0u);
    EXPECT_EQ(text(), "");
    OxSetLastError(6, std::string(5000, 'y').c_str());
    EXPECT_EQ(text().size(), 5000u);
  }).join();
  EXPECT_EQ(code(), 5u);
  EXPECT_EQ(text(), "mine");
}

// Runs after the thread's own objects are gone; the leak check of the address sanitizer watches the long text.
void setWhileThreadEnds(void*) {
  OxSetLastError(9, std::string(700, 'z').c_str());
  EXPECT_EQ(text().size(), 700u);
}

TEST(LastError, WorksWhileTheThreadEnds) {
  pthread_key_t key;
  ASSERT_EQ(pthread_key_create(&key, setWhileThreadEnds), 0);
  std::thread([key] {
    OxSetLastError(1, std::string(400, 'a').c_str());
    pthread_setspecific(key, "anything");
  }).join();
  pthread_key_delete(key);
}

TEST(LastError, LongTextKeepsItsBeginningWhenThereIsNoMemory) {
  if (OX_UNDER_SANITIZER) GTEST_SKIP() << "a sanitizer needs the address space itself";
  const std::string large(64 << 20, 'm');
  unsigned long pages = 0;
  std::FILE* statm = std::fopen("/proc/self/statm", "r");
  ASSERT_NE(statm, nullptr);
  ASSERT_EQ(std::fscanf(statm, "%lu", &pages), 1);
  std::fclose(statm);
  rlimit before{};
  getrlimit(RLIMIT_AS, &before);
  const rlimit scarce{pages * 4096 + (8u << 20), before.rlim_max};
  setrlimit(RLIMIT_AS, &scarce);
  OxSetLastError(0x80000005, large.c_str());
  setrlimit(RLIMIT_AS, &before);
  EXPECT_EQ(code(), 0x80000005);
  EXPECT_EQ(text(), large.substr(0, 255));
}

}  // namespace
