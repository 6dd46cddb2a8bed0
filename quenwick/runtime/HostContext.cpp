#include "quenwick/runtime/HostContext.h"

#include <condition_variable>
#include <vector>

#include "quenwick/platform/Executor.h"

namespace quenwick::runtime {
namespace {

/// All contexts of the process.
struct Contexts {
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<std::weak_ptr<HostContext>> all;
  std::size_t held = 0;
  bool areClosed = false;

  static Contexts& shared() {
    static auto& instance = *new Contexts;
    return instance;
  }
};

/// One that a call on this thread uses, within the call of an outer one.
class Use {
 public:
  explicit Use(const void* pointer) : pointer_(pointer), outer_(innermost_) { innermost_ = this; }
  ~Use() { innermost_ = outer_; }
  Use(const Use&) = delete;
  Use& operator=(const Use&) = delete;

  /// How many contexts the calls on this thread use.
  static std::size_t count() {
    std::size_t count = 0;
    for (const auto* use = innermost_; use; use = use->outer_) count += use->isOutermost() ? 1 : 0;
    return count;
  }

 private:
  bool isOutermost() const {
    const auto* other = outer_;
    while (other && other->pointer_ != pointer_) other = other->outer_;
    return !other;
  }

  const void* pointer_;
  const Use* outer_;
  // A plain pointer, which the last code of a host at exit may still use.
  static thread_local const Use* innermost_;
};
thread_local const Use* Use::innermost_ = nullptr;

}  // namespace

/// The host's pointer, for as long as the library holds on to it.
class HostContext::Pointer {
 public:
  Pointer(void* pointer, Destroy destroy) : pointer_(pointer), destroy_(destroy) {
    std::lock_guard lock(Contexts::shared().mutex);
    ++Contexts::shared().held;
  }
  ~Pointer() {
    if (destroy_) {
      Use use(this);
      platform::runWork([this] { destroy_(pointer_); });
    }
    auto& contexts = Contexts::shared();
    std::lock_guard lock(contexts.mutex);
    --contexts.held;
    contexts.changed.notify_all();
  }
  Pointer(const Pointer&) = delete;
  Pointer& operator=(const Pointer&) = delete;

  void* get() const { return pointer_; }

 private:
  void* pointer_;
  Destroy destroy_;
};

std::shared_ptr<HostContext> HostContext::make(void* pointer, Destroy destroy) {
  std::shared_ptr<HostContext> context(
      new HostContext(std::make_shared<const Pointer>(pointer, destroy)));
  auto& contexts = Contexts::shared();
  bool areClosed = false;
  {
    std::lock_guard lock(contexts.mutex);
    areClosed = contexts.areClosed;
    std::erase_if(contexts.all, [](const auto& each) { return each.expired(); });
    contexts.all.push_back(context);
  }
  if (areClosed) context->release();
  return context;
}

bool HostContext::closeAll(std::chrono::nanoseconds atMost) {
  auto& contexts = Contexts::shared();
  std::vector<std::weak_ptr<HostContext>> all;
  {
    std::lock_guard lock(contexts.mutex);
    contexts.areClosed = true;
    all.swap(contexts.all);
  }
  for (const auto& each : all) {
    if (auto context = each.lock()) context->release();
  }
  std::unique_lock lock(contexts.mutex);
  return contexts.changed.wait_for(lock, atMost, [&] { return contexts.held <= Use::count(); });
}

void HostContext::use(const std::function<void(void* pointer)>& call) const {
  std::shared_ptr<const Pointer> pointer;
  {
    std::lock_guard lock(mutex_);
    pointer = pointer_;
  }
  if (!pointer) return;
  Use use(pointer.get());
  call(pointer->get());
}

void HostContext::release() {
  std::shared_ptr<const Pointer> pointer;
  std::lock_guard lock(mutex_);
  pointer.swap(pointer_);
}

}  // namespace quenwick::runtime
