#include "engine/engine.h"
#include "engine/log.h"
#include "engine/related_item_presenter.h"
#include "front/error.h"
#include "front/main_thread.h"
#include "platform/appkit/application.h"
#include "platform/appkit/save_panel.h"
#include "platform/foundation/data.h"
#include "platform/foundation/file_coordinator.h"
#include "platform/foundation/file_manager.h"

namespace ostra {
namespace {

/// Runs `write` under coordination. What failed is given back: the coordinator's own error before that of
/// `write`.
std::exception_ptr coordinateWriting(std::shared_ptr<NSFilePresenter> presenter, const URL& url,
                                     const std::function<void(const URL& target)>& write) {
  std::exception_ptr failure;
  NSFileCoordinator coordinator(std::move(presenter));
  const std::optional<NSError> coordinationError = coordinator.coordinateWritingItemAtURL(
      url, NSFileCoordinatorWritingOptions::forReplacing, [&](const URL& target) {
        try {
          write(target);
        } catch (...) {
          failure = std::current_exception();
        }
      });
  return coordinationError ? std::make_exception_ptr(*coordinationError) : failure;
}

/// On failure the folder and what it holds stay: a finished picture that could not be put in place is not
/// thrown away.
void replaceThroughTemporaryCopy(const URL& target, ByteView data) {
  NSFileManager& files = NSFileManager::defaultManager();
  const URL folder = files.URLForDirectory(NSSearchPathDirectory::itemReplacement,
                                           NSSearchPathDomainMask::user, target, true);
  const URL copy = folder.appendingPathComponent(target.lastPathComponent());
  writeToURL(data, copy);
  files.replaceItemAtURL(target, copy, std::nullopt, NSFileManagerItemReplacementOptions::none);
  try {
    files.removeItemAtURL(folder);
  } catch (...) {  // the picture is in place; an empty folder is no failure of it
  }
}

void rewriteInPlace(const URL& sourceURL, ByteView data, const std::string& fileName) {
  const std::exception_ptr failure = coordinateWriting(
      nullptr, sourceURL, [&](const URL& target) { replaceThroughTemporaryCopy(target, data); });
  if (failure) {
    throw OstraQuickActionError(fileName, "could not rewrite the file: " + localizedDescription(failure));
  }
}

/// Throws the platform's own error, for its caller to classify.
void writeSibling(const URL& destination, const URL& sourceURL, ByteView data) {
  const std::exception_ptr failure =
      coordinateWriting(std::make_shared<OstraRelatedItemPresenter>(sourceURL, destination), destination,
                        [&](const URL& target) { writeToURL(data, target); });
  if (failure) std::rethrow_exception(failure);
}

/// Whether the user's rights end here; every other error is final.
bool isRefusal(const NSError& error) {
  constexpr std::int64_t operationNotPermitted = 1, permissionDenied = 13;
  const std::int64_t code = error.code();
  if (error.domain() == NSCocoaErrorDomain) {
    return code == NSFileWriteNoPermissionError || code == NSFileWriteVolumeReadOnlyError;
  }
  return error.domain() == NSPOSIXErrorDomain && (code == operationNotPermitted || code == permissionDenied);
}

OstraQuickActionError couldNotWrite(const URL& url, const std::string& fileName,
                                    const std::exception_ptr& failure) {
  return {fileName, "could not write " + url.lastPathComponent() + ": " + localizedDescription(failure)};
}

/// Main thread. Nothing when the user chose no place.
std::optional<URL> runSavePanel(const std::string& fileName, const URL& destination, const std::string& uti) {
  if (NSApplication* application = NSApplication::shared()) application->activateIgnoringOtherApps(true);
  NSSavePanel panel;
  panel.setTitle("Save Converted Image");
  panel.setMessage("Ostra is not allowed to write next to " + fileName +
                   ". Choose where to save the converted image.");
  panel.setNameFieldStringValue(destination.lastPathComponent());
  panel.setDirectoryURL(destination.deletingLastPathComponent());
  if (const std::optional<UTType> type = UTType::withIdentifier(uti)) panel.setAllowedContentTypes({*type});
  panel.setCanCreateDirectories(true);
  return panel.runModal() == NSModalResponseOK ? panel.url() : std::nullopt;
}

/// Atomic and uncoordinated, unlike the write beside the source: the user has named this very file.
void saveWithPanel(ByteView data, const OstraQuickActionEngine::Plan& plan, const std::string& fileName) {
  std::optional<URL> chosen;
  runOnMainThread([&] { chosen = runSavePanel(fileName, plan.destination, plan.uti); });
  if (!chosen) throw OstraQuickActionError(fileName, "save cancelled.");
  try {
    writeToURL(data, *chosen, NSDataWritingOptions::atomic);
  } catch (...) {
    throw couldNotWrite(*chosen, fileName, std::current_exception());
  }
}

/// The refusal of a write beside the source, or nothing when it was written. Throws for every other failure.
std::optional<NSError> refusalOfSibling(const OstraQuickActionEngine::Plan& plan, const URL& sourceURL,
                                        ByteView data, const std::string& fileName) {
  try {
    writeSibling(plan.destination, sourceURL, data);
    return std::nullopt;
  } catch (const NSError& error) {
    if (isRefusal(error)) return error;
    throw couldNotWrite(plan.destination, fileName, std::current_exception());
  } catch (...) {
    throw couldNotWrite(plan.destination, fileName, std::current_exception());
  }
}

}  // namespace

void OstraQuickActionEngine::writeResult(ByteView data, const Plan& plan, const URL& sourceURL,
                                         const std::string& fileName) const {
  if (plan.inPlace) return rewriteInPlace(sourceURL, data, fileName);
  const std::optional<NSError> refusal = refusalOfSibling(plan, sourceURL, data, fileName);
  if (!refusal) return;
  logRefusal(kind(), *refusal);
  saveWithPanel(data, plan, fileName);
}

}  // namespace ostra
