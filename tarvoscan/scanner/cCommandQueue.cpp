#include "tarvoscan/scanner/cCommandQueue.h"

#include <utility>

namespace tarvo {

void cCommand::finish(const cCommandResult& end) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (isFinished) return;
  isFinished = true;
  result = end;
  changed.notify_all();
}

cCommandResult cCommand::wait(std::chrono::milliseconds timeout) {
  std::unique_lock<std::mutex> lock(mutex);
  changed.wait_for(lock, timeout, [this] { return isFinished; });
  if (!isFinished) result.problem = "the sensor gave no answer in time";
  isFinished = true;
  return result;
}

void cCommandQueue::push(std::shared_ptr<cCommand> command) {
  const std::lock_guard<std::mutex> lock(mutex);
  commands.push_back(std::move(command));
}

std::shared_ptr<cCommand> cCommandQueue::take() {
  const std::lock_guard<std::mutex> lock(mutex);
  if (commands.empty()) return {};
  auto command = std::move(commands.front());
  commands.pop_front();
  return command;
}

void cCommandQueue::refuseAll(const std::string& reason) {
  while (const auto command = take()) command->finish({reason, {}});
}

}  // namespace tarvo
