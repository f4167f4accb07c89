#include "front/batch_report.h"

#include "front/error.h"

namespace ostra {

void reportBatch(NSExtensionContext& context, const std::vector<std::exception_ptr>& failures,
                 const std::string& alertTitle) {
  if (failures.empty()) return context.completeRequestReturningItems({}, nullptr);
  const NSError error = batchError(failures);
  showFailureAlert(alertTitle, error.localizedDescription());
  context.cancelRequestWithError(error);
}

}  // namespace ostra
