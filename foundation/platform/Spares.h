// Objects that cost much to make and can be used again, by one user at a time.
#pragma once

#include <exception>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace kx::platform {

// Lends as many as are wanted at once; safe from any thread. An object for each thread would be simpler, but
// some run-time libraries for Windows free a thread's objects before they end them.
template <typename T>
class Spares {
public:
  class Loan {
  public:
    Loan(Spares& owner, std::unique_ptr<T> object) : owner_(&owner), object_(std::move(object)) {}
    Loan(Loan&&) noexcept = default;
    Loan& operator=(Loan&&) = delete;
    ~Loan() {
      if (object_) owner_->TakeBack(std::move(object_));
    }

    T& operator*() const { return *object_; }
    T* operator->() const { return object_.get(); }

  private:
    Spares* owner_;
    std::unique_ptr<T> object_;
  };

  Loan Lend() {
    const std::lock_guard lock(mutex_);
    if (spare_.empty()) return {*this, std::make_unique<T>()};
    auto object = std::move(spare_.back());
    spare_.pop_back();
    return {*this, std::move(object)};
  }

private:
  // Where there is no memory to keep it, it is gone.
  void TakeBack(std::unique_ptr<T> object) noexcept {
    try {
      const std::lock_guard lock(mutex_);
      spare_.push_back(std::move(object));
    } catch (const std::exception&) {
      object.reset();
    }
  }

  std::mutex mutex_;
  std::vector<std::unique_ptr<T>> spare_;
};

} // namespace kx::platform
