#include "platform/foundation/service.h"
#include "platform/foundation/url.h"

namespace ostra {
namespace {

/// A process on Linux holds its rights by user and group: there is nothing to grant, nor to give back.
class NoGrants : public ScopedAccess {
 public:
  bool start(const URL&) override { return false; }
  void stop(const URL&) override {}
};

}  // namespace

ScopedAccess& ScopedAccess::standard() {
  static NoGrants access;
  return access;
}

bool URL::startAccessingSecurityScopedResource() const {
  return Service<ScopedAccess>::current().start(*this);
}

void URL::stopAccessingSecurityScopedResource() const { Service<ScopedAccess>::current().stop(*this); }

}  // namespace ostra
