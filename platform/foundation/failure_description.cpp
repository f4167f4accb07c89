#include <cerrno>
#include <cstdlib>
#include <memory>
#include <new>
#include <typeinfo>

#include <cxxabi.h>

#include "platform/foundation/error.h"
#include "platform/foundation/error_sentences.h"

namespace ostra {
namespace {

/// Every failure without a domain of its own gets its type's name for one, and this code.
constexpr std::int64_t kOnlyCode = 1;

std::string typeName(const std::type_info* type) {
  if (type == nullptr) return "unknown";
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> name(
      abi::__cxa_demangle(type->name(), nullptr, nullptr, &status), std::free);
  return name != nullptr ? name.get() : type->name();
}

std::string typeSentence(const std::type_info* type) {
  return genericSentence(typeName(type), kOnlyCode, std::nullopt);
}

}  // namespace

std::string localizedDescription(const std::exception_ptr& failure) {
  if (failure == nullptr) return "The operation couldn’t be completed.";
  try {
    std::rethrow_exception(failure);
  } catch (const LocalizedError& error) {
    return error.errorDescription().value_or(typeSentence(&typeid(error)));
  } catch (const NSError& error) {
    return error.localizedDescription();
  } catch (const std::bad_alloc&) {
    return NSError(std::string(NSPOSIXErrorDomain), ENOMEM).localizedDescription();
  } catch (const std::exception& error) {
    return typeSentence(&typeid(error));
  } catch (...) {
    return typeSentence(abi::__cxa_current_exception_type());
  }
}

}  // namespace ostra
