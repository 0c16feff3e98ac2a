#include "tarvolink/base/cMessQueue.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

using tQueue = kavTBX::cMessQueue<int>;

/// What the one worker does.
int take(tQueue& queue) {
  boost::mutex::scoped_lock lock(queue.mutex);
  while (queue.queue.empty()) queue.cond.wait(lock);
  const int item = queue.queue.front();
  queue.queue.pop_front();
  return item;
}

// Would catch a lost or reordered request, and a taker that misses a wake-up and sleeps on.
TEST(MessQueue, keepsTheOrderOfEachPoster) {
  constexpr int POSTERS = 4;
  constexpr int ITEMS = 1000;
  tQueue queue;
  std::vector<std::thread> posters;
  for (int poster = 0; poster < POSTERS; ++poster) {
    posters.emplace_back([&queue, poster] {
      for (int i = 0; i < ITEMS; ++i) queue.post(poster * ITEMS + i);
    });
  }
  std::vector<int> next(POSTERS, 0);
  for (int i = 0; i < POSTERS * ITEMS; ++i) {
    const int item = take(queue);
    EXPECT_EQ(item % ITEMS, next[static_cast<std::size_t>(item / ITEMS)]++);
  }
  for (auto& poster : posters) poster.join();
}

}  // namespace
