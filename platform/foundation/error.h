#pragma once
#include <cstdint>
#include <exception>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace ostra {

inline constexpr std::string_view NSCocoaErrorDomain = "NSCocoaErrorDomain";
inline constexpr std::string_view NSPOSIXErrorDomain = "NSPOSIXErrorDomain";
inline constexpr std::string_view NSItemProviderErrorDomain = "NSItemProviderErrorDomain";

inline constexpr std::string_view NSLocalizedDescriptionKey = "NSLocalizedDescription";
inline constexpr std::string_view NSUnderlyingErrorKey = "NSUnderlyingError";
inline constexpr std::string_view NSFilePathErrorKey = "NSFilePath";
/// The volume that is full or read only, by the name of its mount point; absent for the root.
inline constexpr std::string_view VolumeNameErrorKey = "OstraVolumeName";

/// Codes of `NSCocoaErrorDomain` that the system makes or looks at.
inline constexpr std::int64_t NSFileNoSuchFileError = 4;
inline constexpr std::int64_t NSFileReadUnknownError = 256;
inline constexpr std::int64_t NSFileReadNoPermissionError = 257;
inline constexpr std::int64_t NSFileReadInvalidFileNameError = 258;
inline constexpr std::int64_t NSFileReadCorruptFileError = 259;
inline constexpr std::int64_t NSFileReadNoSuchFileError = 260;
inline constexpr std::int64_t NSFileReadUnsupportedSchemeError = 262;
inline constexpr std::int64_t NSFileReadTooLargeError = 263;
inline constexpr std::int64_t NSFileWriteUnknownError = 512;
inline constexpr std::int64_t NSFileWriteNoPermissionError = 513;
inline constexpr std::int64_t NSFileWriteInvalidFileNameError = 514;
inline constexpr std::int64_t NSFileWriteFileExistsError = 516;
inline constexpr std::int64_t NSFileWriteUnsupportedSchemeError = 518;
inline constexpr std::int64_t NSFileWriteOutOfSpaceError = 640;
inline constexpr std::int64_t NSFileWriteVolumeReadOnlyError = 642;
inline constexpr std::int64_t NSUserCancelledError = 3072;
/// Code of `NSItemProviderErrorDomain`: the provider has no item of the type asked for.
inline constexpr std::int64_t NSItemProviderItemUnavailableError = -1000;

/// A failure that somebody must classify: a domain, a code in it, and what is known besides. Immutable;
/// copies share. Thrown as an exception or handed over as a value.
class NSError : public std::exception {
 public:
  using UserInfoValue = std::variant<std::string, std::shared_ptr<const NSError>>;
  using UserInfo = std::map<std::string, UserInfoValue, std::less<>>;

  NSError(std::string_view domain, std::int64_t code, UserInfo userInfo = {});

  const std::string& domain() const;
  std::int64_t code() const;
  const UserInfo& userInfo() const;
  /// The error under `NSUnderlyingErrorKey`, or null.
  std::shared_ptr<const NSError> underlyingError() const;

  /// One sentence for people: the description in the user information, else the sentence of the Cocoa code
  /// (naming the file under `NSFilePathErrorKey`), else a generic one with the reason or with domain and
  /// code.
  std::string localizedDescription() const;
  /// The form that logs show: Error Domain=… Code=… "…" UserInfo={…}.
  std::string debugDescription() const;
  const char* what() const noexcept override;

 private:
  struct Contents;
  std::shared_ptr<const Contents> contents_;
};

/// An error that can describe itself in a sentence; nothing when it cannot.
class LocalizedError : public std::exception {
 public:
  virtual std::optional<std::string> errorDescription() const = 0;
};

/// What a file call that failed was about to do; it decides which code an errno becomes.
enum class FileAccess { read, write };

/// The Cocoa error of a failed file call, with `path` under `NSFilePathErrorKey` and the errno, as an error
/// of `NSPOSIXErrorDomain`, underneath. The only place where an errno becomes an error.
NSError fileError(int errnoValue, FileAccess access, std::string_view path);

/// The description of any failure: that of a `LocalizedError`, of an `NSError`, else a generic sentence.
std::string localizedDescription(const std::exception_ptr& failure);

}  // namespace ostra
