#include "quenwick/runtime/HostContext.h"

#include <algorithm>
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

/// Those that calls on this thread use, one within the other.
thread_local std::vector<const void*> usedHere;

struct Use {
  explicit Use(const void* pointer) { usedHere.push_back(pointer); }
  ~Use() { usedHere.pop_back(); }
  Use(const Use&) = delete;
  Use& operator=(const Use&) = delete;
};

std::size_t countUsedHere() {
  auto distinct = usedHere;
  std::ranges::sort(distinct);
  auto rest = std::ranges::unique(distinct);
  return distinct.size() - rest.size();
}

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
  return contexts.changed.wait_for(lock, atMost, [&] { return contexts.held <= countUsedHere(); });
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
