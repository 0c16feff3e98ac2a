#include "tarvolink/base/cMessQueue.h"

#include <gtest/gtest.h>

// Would catch a request that overtakes another, and one that is left waiting in a closed queue.
// That a taker is woken, the tests of the threads that take see.
TEST(MessQueue, keepsTheOrderUntilItIsClosed) {
  using tItems = std::deque<int>;
  kavTBX::cMessQueue<int> requests;
  requests.post(1);
  EXPECT_TRUE(requests.postIfOpen(2));
  EXPECT_TRUE(requests.postIfOpen(3));
  requests.post(4);
  EXPECT_EQ(requests.queue, (tItems{1, 2, 3, 4}));
  tItems disposed;
  requests.close([&disposed](int item) { disposed.push_back(item); });
  EXPECT_EQ(disposed, (tItems{1, 2, 3, 4}));
  EXPECT_FALSE(requests.postIfOpen(5));
  EXPECT_TRUE(requests.queue.empty());
}
