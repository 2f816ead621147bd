#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace orvane {

/// Shares the memory that a run may use among its files. Any number of threads.
///
/// Threads that wait are served in the order in which they came, so that nobody waits for ever. A
/// share that never fits is given when nobody else is at work.
class MemoryBudget {
 public:
  /// `total` bytes.
  explicit MemoryBudget(std::uint64_t total) : total_(total) {}

  std::uint64_t total() const { return total_; }

  /// Shares that wait now.
  std::uint64_t waiting();

  /// Bytes of the budget, given back by the destructor. One thread's.
  class Share {
   public:
    /// Waits until `bytes` are free.
    Share(MemoryBudget& budget, std::uint64_t bytes);
    ~Share();
    Share(const Share&) = delete;
    Share& operator=(const Share&) = delete;

    /// Gives back all but `kept` bytes, and waits until there are `bytes` in all.
    void exchange(std::uint64_t kept, std::uint64_t bytes);

    std::uint64_t bytes() const { return bytes_; }

   private:
    MemoryBudget& budget_;
    std::uint64_t bytes_ = 0;
  };

 private:
  const std::uint64_t total_;
  std::mutex mutex_;  ///< guards what follows
  std::condition_variable changed_;
  std::uint64_t taken_ = 0;       ///< bytes of all shares
  std::size_t atWork_ = 0;        ///< shares that do not wait
  std::uint64_t nextTicket_ = 0;  ///< of the next to wait
  std::uint64_t served_ = 0;      ///< tickets that wait no more
};

}  // namespace orvane
