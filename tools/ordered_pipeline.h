// Work on several threads with the results taken in input order: the
// caller pushes tasks one after another, `work` runs on the worker threads,
// and `emit` runs on the caller's thread, once per task, in the order the
// tasks were pushed. At most `window` tasks are queued, in work or waiting
// to be emitted, so memory stays bounded whatever the input's size.
#ifndef PARCELVANE_TOOLS_ORDERED_PIPELINE_H
#define PARCELVANE_TOOLS_ORDERED_PIPELINE_H

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace pvtool {

template <class Task, class Result>
class OrderedPipeline {
 public:
  using Work = std::function<Result(Task&)>;
  using Emit = std::function<void(Result&)>;

  // With one thread the work runs on the caller's thread, in Push.
  OrderedPipeline(unsigned threads, size_t window, Work work, Emit emit)
      : window_(window < 1 ? 1 : window), work_(std::move(work)), emit_(std::move(emit)), slots_(window_) {
    if (threads <= 1) return;
    for (unsigned i = 0; i < threads; ++i) workers_.emplace_back([this] { RunWorker(); });
  }
  OrderedPipeline(const OrderedPipeline&) = delete;
  OrderedPipeline& operator=(const OrderedPipeline&) = delete;
  ~OrderedPipeline() { Stop(); }

  // Queues a task, first emitting what is ready, and waiting while the
  // window is full.
  void Push(Task task) {
    if (workers_.empty()) {
      Result result = work_(task);
      emit_(result);
      return;
    }
    EmitReady(pushed_ + 1 > window_ ? pushed_ + 1 - window_ : 0);
    {
      std::lock_guard<std::mutex> lock(mutex_);
      queue_.emplace_back(pushed_++, std::move(task));
    }
    task_ready_.notify_one();
  }

  // Emits every remaining result; rethrows the first exception of a task.
  void Finish() {
    if (!workers_.empty()) EmitReady(pushed_);
    Stop();
  }

 private:
  // Emits results in order until `until` tasks have been emitted (waiting
  // for them), then whatever else is ready.
  void EmitReady(uint64_t until) {
    for (;;) {
      std::optional<Result> result;
      {
        std::unique_lock<std::mutex> lock(mutex_);
        auto ready = [&] { return slots_[emitted_ % window_].has_value() || error_; };
        if (emitted_ < until && emitted_ < pushed_) {
          result_ready_.wait(lock, ready);
        } else if (emitted_ >= pushed_ || !ready()) {
          return;
        }
        if (error_) std::rethrow_exception(error_);
        result = std::move(slots_[emitted_ % window_]);
        slots_[emitted_ % window_].reset();
        ++emitted_;
      }
      emit_(*result);
    }
  }

  void RunWorker() {
    for (;;) {
      std::pair<uint64_t, Task> item;
      {
        std::unique_lock<std::mutex> lock(mutex_);
        task_ready_.wait(lock, [&] { return stopping_ || !queue_.empty(); });
        if (queue_.empty()) return;
        item = std::move(queue_.front());
        queue_.pop_front();
      }
      std::optional<Result> result;
      std::exception_ptr error;
      try {
        result.emplace(work_(item.second));
      } catch (...) {
        error = std::current_exception();
      }
      {
        std::lock_guard<std::mutex> lock(mutex_);
        if (error && !error_) error_ = error;
        if (result) slots_[item.first % window_] = std::move(result);
      }
      result_ready_.notify_one();  // only the caller's thread waits for results
    }
  }

  void Stop() {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      stopping_ = true;
      queue_.clear();
    }
    task_ready_.notify_all();
    for (std::thread& worker : workers_) worker.join();
    workers_.clear();
  }

  const size_t window_;
  Work work_;
  Emit emit_;
  std::vector<std::thread> workers_;
  std::mutex mutex_;
  std::condition_variable task_ready_;
  std::condition_variable result_ready_;
  std::deque<std::pair<uint64_t, Task>> queue_;
  std::vector<std::optional<Result>> slots_;  // results by task number modulo the window
  uint64_t pushed_ = 0;                       // caller's thread only
  uint64_t emitted_ = 0;                      // caller's thread only (read under the lock by nobody else)
  bool stopping_ = false;
  std::exception_ptr error_;
};

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_ORDERED_PIPELINE_H
