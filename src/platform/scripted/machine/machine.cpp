#include "platform/scripted/machine/machine.h"

#include <atomic>
#include <utility>

#include "platform/portable/semaphore.h"
#include "platform/portable/thread_queue.h"

namespace vlm::platform::scripted {
namespace {

constinit std::atomic<Machine*> inForce = nullptr;

}  // namespace

Machine::Machine(Queues queues) : queues_(queues), previous_(inForce.exchange(this)) {
  services_ = makeQueue("scripted.services");
  if (queues_ == Queues::stepped) {
    main_ = stepper_.makeQueue("main", true);
  } else {
    main_ = makeQueue("main");
    main_->sync([this] { mainThread_ = std::this_thread::get_id(); });
  }
}

Machine::~Machine() {
  // Their threads run what was submitted before they end, and that acts on this machine.
  services_ = nullptr;
  main_ = nullptr;
  inForce = previous_;
}

Machine& Machine::current() {
  if (auto* machine = inForce.load()) return *machine;
  static auto* const empty = new Machine(Queues::threads);
  return *empty;
}

void Machine::refuse(std::string prefix, OSStatus status, int times, int passing) {
  Fault fault;
  fault.status = status;
  journal.script(std::move(prefix), std::move(fault), times, passing);
}

void Machine::refuse(std::string prefix, const char* error) {
  Fault fault;
  fault.error = error;
  journal.script(std::move(prefix), std::move(fault));
}

void Machine::answerNothing(std::string prefix) {
  Fault fault;
  fault.nothing = true;
  journal.script(std::move(prefix), std::move(fault));
}

void Machine::throwFrom(std::string prefix) {
  Fault fault;
  fault.throws = true;
  journal.script(std::move(prefix), std::move(fault));
}

std::vector<std::string> Machine::takeLog() {
  constexpr std::string_view kPrefix = "NSLog(";
  auto lines = journal.take(kPrefix);
  for (auto& line : lines) line = line.substr(kPrefix.size(), line.size() - kPrefix.size() - 1);
  return lines;
}

void Machine::run() {
  while (stepper_.step()) {
  }
}

void Machine::runLate() {
  run();
  if (stepper_.hurry()) run();
}

bool Machine::onMainThread() const {
  if (queues_ == Queues::stepped) return stepper_.onMainThread();
  return std::this_thread::get_id() == mainThread_;
}

std::shared_ptr<DispatchQueue> Machine::makeQueue(std::string label) {
  if (queues_ == Queues::stepped) return stepper_.makeQueue(std::move(label));
  return makeThreadQueue(std::move(label), DispatchQoS::standard);
}

std::shared_ptr<DispatchSemaphore> Machine::makeSemaphore(int count) {
  if (queues_ == Queues::stepped) return stepper_.makeSemaphore(count);
  return std::make_shared<ThreadSemaphore>(count);
}

}  // namespace vlm::platform::scripted
