#include "host/extension_host.h"

#include <array>

#include "chooser/profile_view_controller.h"
#include "front/request_handler.h"
#include "host/file_item_provider.h"
#include "host/stop_signals.h"
#include "host/usage_error.h"
#include "platform/appkit/renderer.h"
#include "platform/dispatch/main_loop.h"
#include "platform/dispatch/queue.h"
#include "platform/extension/extension_item.h"
#include "platform/foundation/service.h"

namespace ostra {
namespace {

template <class Principal>
std::shared_ptr<NSExtensionRequestHandling> make() {
  return std::make_shared<Principal>();
}

constexpr std::array kPrincipalClasses{
    PrincipalClass{"OstraQuickActionRequestHandler", make<OstraQuickActionRequestHandler>},
    PrincipalClass{"OstraQuickActionProfileViewController", make<OstraQuickActionProfileViewController>},
};

/// One selection is one item with an attachment for each file.
NSExtensionContext::InputItems inputItems(const std::vector<std::string>& files,
                                          const std::shared_ptr<Work>& work) {
  std::vector<std::shared_ptr<NSItemProvider>> providers;
  providers.reserve(files.size());
  for (const std::string& file : files) {
    providers.push_back(std::make_shared<FileItemProvider>(file, providers.size(), work));
  }
  return {std::make_shared<NSExtensionItem>(std::move(providers))};
}

/// After a signal. While a panel is open no item asks whether to stop.
void closePanel(const std::shared_ptr<Work>& work) {
  Service<Renderer>::current().withdraw();
  mainQueue().async([work] { work->stopIfSignalled(); });
}

}  // namespace

std::span<const PrincipalClass> principalClasses() { return kPrincipalClasses; }

std::shared_ptr<NSExtensionRequestHandling> makePrincipalObject(const std::string& className,
                                                                std::span<const PrincipalClass> classes) {
  for (const PrincipalClass& known : classes) {
    if (known.name == className) return known.make();
  }
  throw UsageError("The bundle names no principal class that this program has (“" + className + "”).");
}

std::optional<RequestEnd> serveRequest(NSExtensionRequestHandling& principal,
                                       const std::vector<std::string>& files, Work::ItemBegan itemBegan,
                                       const std::function<void()>& openPanel) {
  const auto work = std::make_shared<Work>(std::move(itemBegan));
  mainQueue();  // made before work on a picture begins: from there on nothing may be wanting
  const auto context = std::make_shared<HostExtensionContext>(inputItems(files, work));
  principal.beginRequestWithExtensionContext(context);
  std::optional<StopListener> listener;
  if (openPanel) {
    listener.emplace([work] { closePanel(work); });
    openPanel();
  }
  MainLoop::run();
  return context->end();
}

}  // namespace ostra
