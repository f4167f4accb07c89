#include <condition_variable>
#include <deque>
#include <thread>

#include "platform/appkit/application.h"
#include "platform/dispatch/main_loop.h"
#include "platform/dispatch/semaphore.h"
#include "platform/extension/extension_item.h"
#include "platform/types/ut_type.h"
#include "tests/doubles/log_sink.h"
#include "tests/doubles/renderer.h"
#include "tests/replaceable/stand_in.h"

namespace ostra {

NSExtensionItem::NSExtensionItem(std::vector<std::shared_ptr<NSItemProvider>> attachments)
    : attachments_(std::move(attachments)) {}
const std::vector<std::shared_ptr<NSItemProvider>>& NSExtensionItem::attachments() const {
  return attachments_;
}

// Queues.

namespace {

const std::thread::id mainThread = std::this_thread::get_id();

struct MainQueue : DispatchQueue {
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<std::function<void()>> blocks;

  void async(std::function<void()> block) override {
    const std::lock_guard lock(mutex);
    blocks.push_back(std::move(block));
    changed.notify_one();
  }
  void sync(const std::function<void()>& block) override {
    DispatchSemaphore done(0);
    async([&] {
      block();
      done.signal();
    });
    done.wait();
  }
  std::function<void()> next() {
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return !blocks.empty(); });
    auto block = std::move(blocks.front());
    blocks.pop_front();
    return block;
  }
};

MainQueue& theMainQueue() {
  static MainQueue queue;
  return queue;
}

/// A thread a block; all of them are waited for at the end of the process.
struct GlobalQueue : DispatchQueue {
  std::mutex mutex;
  std::deque<std::thread> threads;

  ~GlobalQueue() override {
    for (std::thread& thread : threads) thread.join();
  }
  void async(std::function<void()> block) override {
    const std::lock_guard lock(mutex);
    threads.emplace_back(std::move(block));
  }
  void sync(const std::function<void()>& block) override { block(); }
};

}  // namespace

DispatchQueue& mainQueue() { return theMainQueue(); }
DispatchQueue& globalQueue(QualityOfService /*quality*/) {
  static GlobalQueue queue;
  return queue;
}
bool isMainThread() { return std::this_thread::get_id() == mainThread; }

void MainLoop::run() {
  while (auto block = theMainQueue().next()) block();
}
void MainLoop::stop() { theMainQueue().async(nullptr); }

void DispatchSemaphore::signal() {
  const std::lock_guard lock(mutex_);
  ++value_;
  raised_.notify_one();
}
void DispatchSemaphore::wait() {
  std::unique_lock lock(mutex_);
  raised_.wait(lock, [this] { return value_ > 0; });
  --value_;
}

// The log and the user interface.

Logger::Logger(std::string subsystem, std::string category)
    : subsystem_(std::move(subsystem)), category_(std::move(category)) {}
void Logger::log(LogLevel level, const std::function<LogMessage()>& message) const {
  test::standIn<test::RecordingLogSink>().write(subsystem_, category_, level, message());
}

NSApplication* NSApplication::shared() { return nullptr; }
void NSAlert::addButtonWithTitle(std::string title) { buttons.push_back(std::move(title)); }
void NSAlert::runModal() const { test::standIn<test::RecordingRenderer>().run(*this); }
void NSSavePanel::setTitle(std::string title) { title_ = std::move(title); }
void NSSavePanel::setMessage(std::string message) { message_ = std::move(message); }
void NSSavePanel::setNameFieldStringValue(std::string name) { name_ = std::move(name); }
void NSSavePanel::setDirectoryURL(URL directory) { directory_ = std::move(directory); }
void NSSavePanel::setAllowedContentTypes(std::vector<UTType> types) { types_ = std::move(types); }
void NSSavePanel::setCanCreateDirectories(bool allowed) { canCreateDirectories_ = allowed; }
NSModalResponse NSSavePanel::runModal() {
  return test::standIn<test::RecordingRenderer>().run(*this).response;
}

// Types: the five that the actions name.

namespace {
constexpr const char* typeIdentifiers[] = {"public.image", "public.png", "public.jpeg", "public.heic",
                                           "public.heif"};
}

UTType UTType::image() { return UTType(0); }
UTType UTType::png() { return UTType(1); }
UTType UTType::jpeg() { return UTType(2); }
UTType UTType::heic() { return UTType(3); }
UTType UTType::heif() { return UTType(4); }
std::string UTType::identifier() const { return typeIdentifiers[row_]; }
bool UTType::conformsTo(const UTType& other) const { return *this == other || other == image(); }
std::optional<UTType> UTType::withIdentifier(std::string_view identifier) {
  for (std::size_t row = 0; row < std::size(typeIdentifiers); ++row) {
    if (identifier == typeIdentifiers[row]) return UTType(row);
  }
  return std::nullopt;
}

}  // namespace ostra
