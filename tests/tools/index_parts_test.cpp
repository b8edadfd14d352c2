// The pieces of parcelvane index: SHA-256, ISO 8601 dates and the ordered
// pipeline that runs the work on several threads.
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tools/mail_text.h"
#include "tools/ordered_pipeline.h"
#include "tools/sha256.h"

namespace pvtool {
namespace {

TEST(Sha256, MatchesTheStandardTestVectors) {
  EXPECT_EQ(Sha256Hex(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(Sha256Hex("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(Sha256Hex("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  EXPECT_EQ(Sha256Hex(std::string(1000000, 'a')),
            "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Sha256, EveryTailLengthAroundABlock) {
  // 55, 56 and 64 bytes put the length into the first or a second block.
  EXPECT_EQ(Sha256Hex(std::string(55, 'a')),
            "9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318");
  EXPECT_EQ(Sha256Hex(std::string(56, 'a')),
            "b35439a4ac6f0948b6d6f9e3c6af0f5f590ce20f1bde7090ef7970686ec6738a");
  EXPECT_EQ(Sha256Hex(std::string(64, 'a')),
            "ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb");
}

TEST(IsoDate, GivesTheDateWithItsOffset) {
  EXPECT_EQ(IsoDate("Tue, 1 Jul 2025 10:52:37 +0200"), "2025-07-01T10:52:37+02:00");
  EXPECT_EQ(IsoDate("1 Jul 2025 10:52 -0430"), "2025-07-01T10:52:00-04:30");
  EXPECT_EQ(IsoDate("Wed, 02 Jul 25 09:15:00 GMT"), "2025-07-02T09:15:00+00:00");
  EXPECT_EQ(IsoDate(" Thu, 3 Jul 1999\r\n 14:00:00 +0000"), "1999-07-03T14:00:00+00:00");
}

TEST(IsoDate, LeavesOutAnUnknownZoneAndKeepsTextThatIsNoDate) {
  EXPECT_EQ(IsoDate("Tue, 1 Jul 2025 10:52:37 EST"), "2025-07-01T10:52:37");
  EXPECT_EQ(IsoDate("Tue, 1 Jul 2025 10:52:37"), "2025-07-01T10:52:37");
  EXPECT_EQ(IsoDate("  yesterday, after lunch "), "yesterday, after lunch");
  EXPECT_EQ(IsoDate("Tue, 1 Jul 2025 25:00:00 +0000"), "Tue, 1 Jul 2025 25:00:00 +0000");
  EXPECT_EQ(IsoDate(""), "");
}

// Runs `count` tasks whose work takes longer for early tasks, so that they
// finish out of order, and returns the numbers in the order emitted.
std::vector<int> RunOrdered(unsigned threads, size_t window, int count, int* most_alive) {
  std::atomic<int> alive{0};
  std::atomic<int> peak{0};
  std::vector<int> emitted;
  OrderedPipeline<int, int> pipeline(
      threads, window,
      [&](int& task) {
        std::this_thread::sleep_for(std::chrono::microseconds((count - task) % 7 * 50));
        return task;
      },
      [&](int& result) {
        emitted.push_back(result);
        --alive;
      });
  for (int i = 0; i < count; ++i) {
    ++alive;
    pipeline.Push(i);
    // Emitting runs on this thread: what is alive now is queued, in work
    // or waiting to be emitted.
    if (alive > peak) peak = alive.load();
  }
  pipeline.Finish();
  *most_alive = peak;
  return emitted;
}

TEST(OrderedPipeline, EmitsInInputOrderWhateverTheThreads) {
  for (const unsigned threads : {1u, 2u, 4u, 8u}) {
    int most_alive = 0;
    const std::vector<int> emitted = RunOrdered(threads, 6, 500, &most_alive);
    ASSERT_EQ(emitted.size(), 500u);
    for (int i = 0; i < 500; ++i) ASSERT_EQ(emitted[static_cast<size_t>(i)], i) << threads << " threads";
  }
}

TEST(OrderedPipeline, KeepsAtMostTheWindowAlive) {
  int most_alive = 0;
  RunOrdered(4, 6, 300, &most_alive);
  EXPECT_LE(most_alive, 6);
}

TEST(OrderedPipeline, AFailedTaskIsRethrownOnTheCallersThread) {
  std::vector<int> emitted;
  OrderedPipeline<int, int> pipeline(
      2, 4,
      [](int& task) {
        if (task == 5) throw std::runtime_error("task 5 failed");
        return task;
      },
      [&](int& result) { emitted.push_back(result); });
  EXPECT_THROW(
      {
        for (int i = 0; i < 50; ++i) pipeline.Push(i);
        pipeline.Finish();
      },
      std::runtime_error);
  EXPECT_LE(emitted.size(), 5u);
}

}  // namespace
}  // namespace pvtool

#endif
