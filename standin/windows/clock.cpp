#include "standin/windows/clock.h"

#include <chrono>
#include <mutex>
#include <thread>

#include "platform/windows_api.h"
#include "standin/windows/handle_table.h"

namespace standin {
namespace {

std::mutex sleepMutex;

std::function<void(unsigned)>& replacement() {
  static std::function<void(unsigned)> function;
  return function;
}

}  // namespace

std::function<void(unsigned)> setSleep(std::function<void(unsigned)> sleep) {
  const std::lock_guard lock(sleepMutex);
  return std::exchange(replacement(), std::move(sleep));
}

}  // namespace standin

extern "C" void Sleep(DWORD milliseconds) {
  standin::guarded(false, [&] {
    std::function<void(unsigned)> sleep;
    {
      const std::lock_guard lock(standin::sleepMutex);
      sleep = standin::replacement();
    }
    if (sleep) {
      sleep(milliseconds);
    } else {
      std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    }
    return true;
  });
}
