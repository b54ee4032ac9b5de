#include "InOrder.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace vkcl::tool {
namespace {

using Work = std::function<Finish(std::size_t)>;
using Watch = std::function<void(std::size_t)>;

constexpr std::size_t kAheadOfEach = 16;
constexpr auto kPatience = std::chrono::milliseconds(100);

struct Made {
  bool ready = false;
  Finish finish;
  std::exception_ptr failure;
};

class Workers {
 public:
  Workers(std::size_t count, unsigned threads, const Work& work)
      : count_(count), work_(work), made_(kAheadOfEach * threads) {
    threads_.reserve(threads);
    try {
      for (unsigned i = 0; i < threads; ++i) threads_.emplace_back([this] { Run(); });
    } catch (const std::system_error&) {
      // The system gives no more; those that there are do the work.
    }
  }
  ~Workers() {
    {
      const std::lock_guard lock(mutex_);
      end_ = true;
    }
    roomIsMade_.notify_all();
    for (std::thread& thread : threads_) thread.join();
  }
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;

  bool none() const { return threads_.empty(); }

  // Waits for the result of an item; they are to be taken in order.
  Made Take(std::size_t item, const Watch& watch) {
    std::unique_lock lock(mutex_);
    Made& place = made_[item % made_.size()];
    while (!itemIsMade_.wait_for(lock, kPatience, [&] { return place.ready; })) {
      lock.unlock();
      watch(item);
      lock.lock();
    }
    Made made = std::exchange(place, {});
    taken_ = item + 1;
    lock.unlock();
    roomIsMade_.notify_all();
    return made;
  }

 private:
  void Run() {
    std::unique_lock lock(mutex_);
    for (;;) {
      roomIsMade_.wait(lock,
                       [&] { return end_ || next_ == count_ || next_ - taken_ < made_.size(); });
      if (end_ || next_ == count_) return;
      const std::size_t item = next_++;
      lock.unlock();
      Made made = Make(item);
      lock.lock();
      made_[item % made_.size()] = std::move(made);
      itemIsMade_.notify_one();
    }
  }

  Made Make(std::size_t item) const {
    Made made;
    made.ready = true;
    try {
      made.finish = work_(item);
    } catch (...) {
      made.failure = std::current_exception();
    }
    return made;
  }

  const std::size_t count_;
  const Work& work_;
  std::mutex mutex_;
  std::condition_variable itemIsMade_;
  std::condition_variable roomIsMade_;
  std::vector<Made> made_;
  std::size_t next_ = 0;
  std::size_t taken_ = 0;
  bool end_ = false;
  std::vector<std::thread> threads_;
};

void OneByOne(std::size_t count, const Work& work, const Watch& watch) {
  for (std::size_t i = 0; i < count; ++i) {
    work(i)();
    watch(i + 1);
  }
}

}  // namespace

void InOrder(std::size_t count, unsigned threads, const Work& work, const Watch& watch) {
  if (threads < 2 || count < 2) return OneByOne(count, work, watch);
  Workers workers(count, static_cast<unsigned>(std::min<std::size_t>(threads, count)), work);
  if (workers.none()) return OneByOne(count, work, watch);
  for (std::size_t i = 0; i < count; ++i) {
    const Made made = workers.Take(i, watch);
    if (made.failure) std::rethrow_exception(made.failure);
    made.finish();
    watch(i + 1);
  }
}

}  // namespace vkcl::tool
