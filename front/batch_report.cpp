#include "front/batch_report.h"

#include <new>

#include "front/error.h"

namespace ostra {
namespace {

NSError errorOf(const std::vector<std::exception_ptr>& failures) {
  try {
    return batchError(failures);
  } catch (const std::bad_alloc&) {
    return batchError({});  // shorter
  }
}

void tell(const std::string& title, const NSError& error) {
  try {
    showFailureAlert(title, error.localizedDescription());
  } catch (const std::bad_alloc&) {
    showFailureAlert(title, {});
  }
}

}  // namespace

void reportBatch(NSExtensionContext& context, const std::vector<std::exception_ptr>& failures,
                 const std::string& alertTitle) {
  if (failures.empty()) return context.completeRequestReturningItems({}, nullptr);
  const NSError error = errorOf(failures);
  tell(alertTitle, error);
  context.cancelRequestWithError(error);
}

}  // namespace ostra
